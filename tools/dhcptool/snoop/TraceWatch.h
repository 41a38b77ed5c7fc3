#pragma once

#include <optional>
#include <string>

#include "DhcpLib/internal/Trace.h"
#include "Kcore/Types.h"
#include "Tyk/Trace.h"

namespace DhcpTool {

/// Receives the library's trace lines while it lives: shows those that were asked for on stderr, each with its frame,
/// and learns from them why a frame was rejected.
class TraceWatch {
public:
    /// Shows lines up to `level`; without one, up to the level that the environment gave.
    explicit TraceWatch(std::optional<int> level);
    ~TraceWatch();
    TraceWatch(const TraceWatch&) = delete;
    TraceWatch& operator=(const TraceWatch&) = delete;

    /// The frame that the lines are about from now on.
    void frameIs(Kcore::U64 number);
    /// Why this frame was rejected: the last line at or above the level of rejections, without the frame's own numbers
    /// that follow its first comma or end it. So there are few more reasons than texts.
    const std::string& reason() const { return reason_; }

private:
    void take(const Tyk::TraceLine& line);

    Tyk::TraceHandle handle_;
    int levelBefore_;
    int shown_;
    Tyk::TraceSink sinkBefore_;
    Kcore::U64 frame_ = 0;
    std::string reason_;
};

/// While it lives the library traces nothing: for what is parsed besides the frames.
class TraceSilence {
public:
    TraceSilence() { handle_.levelIs(0); }
    ~TraceSilence() { handle_.levelIs(levelBefore_); }
    TraceSilence(const TraceSilence&) = delete;
    TraceSilence& operator=(const TraceSilence&) = delete;

private:
    Tyk::TraceHandle handle_ = DhcpLib::traceHandle();
    const int levelBefore_ = handle_.level();
};

}  // namespace DhcpTool
