#include "exchange/ExchangeRun.h"

#include "capture/ReadFrames.h"
#include "capture/StopSignal.h"
#include "common/NumberOptions.h"
#include "common/Output.h"
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

/// Turns the frames of a source into messages and exchanges for the sink.
class Run final : public FrameSink {
public:
    Run(const ExchangeOptions& options, Source& source, ExchangeSink& sink)
        : options_(options),
          source_(source),
          sink_(sink),
          decoder_(options.ports.of(options.source.ports())),
          tracker_({.timeout = nanosecondsOf(options.timeout)}, [this](const Exchange& exchange) {
              if (exchange.selected) sink_.take(exchange, marksOf(exchange));
          }) {
        source_.wakeEvery(wakeInterval, [this] { return wake(); });
    }

    void take(const Arrival& frame) override {
        const Message& message = decoder_.decode(frame);
        counts_.add(message);
        Event* const event = reader_.read(message);
        if (event == nullptr) return;
        event->selected = options_.filter.isEmpty() || options_.filter.matches(message);
        if (event->selected) sink_.take(*event);
        tracker_.take(*event);
    }
    void flush() override { sink_.flush(); }
    void finish() override {
        tracker_.finish();
        sink_.finish();
        sink_.flush();
        if (!sink_.open()) return;
        complain(counts_.text(std::nullopt));
        source_.forEachCount(complain);
    }
    bool wantsMore() const override { return sink_.wantsMore(); }

private:
    /// Returns whether the sink wants more.
    bool wake() {
        tracker_.timeIs(std::chrono::system_clock::now().time_since_epoch());
        sink_.wake();
        sink_.flush();
        return sink_.wantsMore();
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
    addSeconds(command, "--timeout", options.timeout, 0.001, 86400,
               "End an unfinished exchange after SECONDS without a message")
        ->capture_default_str()
        ->group("Exchanges");
}

void runExchanges(const ExchangeOptions& options, ExchangeSink& sink) {
    const StopSignal stop;
    const auto source = options.source.open(stop);
    Run run(options, *source, sink);
    readFrames(*source, run);
}

}  // namespace DhcpTool
