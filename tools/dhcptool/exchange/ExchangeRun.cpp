#include "exchange/ExchangeRun.h"

#include <CLI/CLI.hpp>
#include <exception>

#include "capture/StopSignal.h"
#include "common/Output.h"
#include "common/Progress.h"
#include "exchange/EventReader.h"
#include "exchange/ExchangeTracker.h"
#include "filter/FilterOptions.h"
#include "message/Decoder.h"
#include "snoop/SnoopCounts.h"

namespace DhcpTool {

namespace {

Nanoseconds nanosecondsOf(double seconds) {
    return std::chrono::duration_cast<Nanoseconds>(std::chrono::duration<double>(seconds));
}

/// The frames of a source on their way to the sink.
class Run {
public:
    Run(const ExchangeOptions& options, Source& source, ExchangeSink& sink)
        : options_(options),
          source_(source),
          sink_(sink),
          decoder_(options.ports.of(options.source.ports())),
          tracker_({.timeout = nanosecondsOf(options.timeout)}, [this](const Exchange& exchange) {
              if (exchange.selected) sink_.take(exchange, marksOf(exchange));
          }) {}

    void readAll() {
        constexpr U64 framesPerStep = 1024;  // asking for the position takes a system call
        Progress progress(source_.size());
        source_.wakeEvery(wakeInterval, [this] { wake(); });
        while (sink_.wantsMore()) {
            if (source_.mayWait()) sink_.flush();
            const auto frame = source_.next();
            if (!frame) return;
            take(*frame);
            if (frame->number % framesPerStep == 0) progress.at(source_.position());
        }
    }

    void finish() {
        tracker_.finish();
        sink_.finish();
        sink_.flush();
        if (!sink_.wantsMore()) return;
        complain(counts_.text(std::nullopt));
        source_.forEachCount(complain);
    }

private:
    void take(const Arrival& frame) {
        const Message& message = decoder_.decode(frame);
        counts_.add(message);
        Event* const event = reader_.read(message);
        if (event == nullptr) return;
        event->selected = options_.filter.isEmpty() || options_.filter.matches(message);
        if (event->selected) sink_.take(*event);
        tracker_.take(*event);
    }

    void wake() {
        tracker_.timeIs(std::chrono::system_clock::now().time_since_epoch());
        sink_.wake();
        sink_.flush();
    }

    const ExchangeOptions& options_;
    Source& source_;
    ExchangeSink& sink_;
    Decoder decoder_;
    EventReader reader_;
    ExchangeTracker tracker_;
    SnoopCounts counts_;
};

}  // namespace

void addExchangeOptions(CLI::App& command, ExchangeOptions& options) {
    addSourceOptions(command, options.source);
    addFilterOptions(command, options.filter);
    addPortOptions(command, options.ports);
    command.add_option("--timeout", options.timeout, "End an unfinished exchange after SECONDS without a message")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.001, 86400.0))
        ->capture_default_str()
        ->group("Exchanges");
}

void runExchanges(const ExchangeOptions& options, ExchangeSink& sink) {
    const StopSignal stop;
    const auto source = options.source.open(stop);
    Run run(options, *source, sink);
    std::exception_ptr cutShort;
    try {
        run.readAll();
    } catch (const CaptureError&) {
        cutShort = std::current_exception();
    }
    run.finish();
    if (cutShort) std::rethrow_exception(cutShort);
}

}  // namespace DhcpTool
