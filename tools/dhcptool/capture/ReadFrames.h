#pragma once

#include "capture/Source.h"

namespace DhcpTool {

/// Takes the frames that a command reads.
class FrameSink {
public:
    virtual ~FrameSink() = default;

    virtual void take(const Arrival& frame) = 0;
    /// Called before a wait for the next frame: shows what has been taken.
    virtual void flush() = 0;
    /// Called after the last frame: shows the rest and the counts.
    virtual void finish() = 0;
    virtual bool wantsMore() const = 0;
};

/// Gives `sink` the frames of `source` until one of them ends, with a progress bar for a large file. Throws
/// CaptureError, after the sink has finished, if frames are missing before the end.
void readFrames(Source& source, FrameSink& sink);

}  // namespace DhcpTool
