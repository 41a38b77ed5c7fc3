#include "capture/ReadFrames.h"

#include <exception>

#include "common/Progress.h"

namespace DhcpTool {

namespace {

void readAll(Source& source, FrameSink& sink) {
    constexpr U64 framesPerStep = 1024;  // asking for the position takes a system call
    Progress progress(source.size());
    while (sink.wantsMore()) {
        if (source.mayWait()) sink.flush();
        const auto frame = source.next();
        if (!frame) return;
        sink.take(*frame);
        if (frame->number % framesPerStep == 0) progress.at(source.position());
    }
}

}  // namespace

void readFrames(Source& source, FrameSink& sink) {
    std::exception_ptr cutShort;
    try {
        readAll(source, sink);
    } catch (const CaptureError&) {
        cutShort = std::current_exception();
    }
    sink.finish();
    if (cutShort) std::rethrow_exception(cutShort);
}

}  // namespace DhcpTool
