#pragma once

#include "capture/SourceOptions.h"
#include "common/PortOptions.h"
#include "exchange/Marks.h"
#include "filter/Filter.h"

namespace DhcpTool {

/// What the commands that follow exchanges have in common.
struct ExchangeOptions {
    SourceOptions source;
    PortOptions ports;
    Filter filter;
    double timeout = 30;  ///< s; TrackerSettings::timeout
};

/// Adds the options to a command. `options` has to live as long as the command.
void addExchangeOptions(CLI::App& command, ExchangeOptions& options);

/// Takes the messages and exchanges that a command reads. An exchange passes the filter if one of its messages does.
class ExchangeSink {
public:
    virtual ~ExchangeSink() = default;

    virtual void take(const Event&) {}
    virtual void take(const Exchange& exchange, const std::vector<Mark>& marks) = 0;
    /// Called about every `wakeInterval` of a live capture, whether messages arrive or not.
    virtual void wake() {}
    /// Called before a wait for the next frame: shows what has been taken.
    virtual void flush() = 0;
    /// Called after the last exchange.
    virtual void finish() {}
    /// Whether its output can be written: nobody has closed the pipe.
    virtual bool open() const = 0;
    /// False if the output is not open, or has as much as the user wants.
    virtual bool wantsMore() const = 0;
};

inline constexpr std::chrono::milliseconds wakeInterval(250);

/// Reads the source to its end, or until a signal or the sink ends it, and gives the sink all exchanges. Prints
/// counters on stderr then. Throws CaptureError if the source could not be read to its end.
void runExchanges(const ExchangeOptions& options, ExchangeSink& sink);

}  // namespace DhcpTool
