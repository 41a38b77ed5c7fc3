#include "Tyk/Trace.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <mutex>
#include <utility>

#include "Kcore/Encoding.h"
#include "Tyk/internal/TimeOfDay.h"

namespace Tyk {

namespace {

struct SinkInForce {
    std::mutex mutex;
    std::shared_ptr<const TraceSink> sink;  // null means stderr
};

SinkInForce& sinkInForce() {
    static auto& it = *new SinkInForce;  // never destroyed, since destructors of static objects trace, too
    return it;
}

std::shared_ptr<const TraceSink> currentSink() {
    const std::lock_guard lock(sinkInForce().mutex);
    return sinkInForce().sink;
}

/// Prints with one write, so that lines of several threads do not mix.
void print(const TraceLine& line, bool timeStamped) {
    std::string out;
    if (timeStamped) {
        Detail::appendTimeOfDay(out, std::chrono::system_clock::now());
        out.push_back(' ');
    }
    out.append(line.handle).append(" ").append(std::to_string(line.level)).append(" ").append(line.file);
    out.append(":").append(std::to_string(line.line)).append(" ").append(line.function).append(": ");
    Kcore::appendQuoted(out, line.text);
    out.push_back('\n');
    std::fwrite(out.data(), 1, out.size(), stderr);
}

thread_local constinit bool threadTextGone = false;  // readable after the thread's other objects are destroyed
thread_local struct ThreadText {
    std::string text;
    ~ThreadText() { threadTextGone = true; }
} threadText;

/// The thread's text buffer, so that a thread allocates only for its first lines. If formatting an argument traces as
/// well, that line uses a buffer of its own.
class BorrowedText {
public:
    BorrowedText() {
        swapWithThread();
        text_.clear();
        text_.reserve(2 * RingTrace::textCapacity);
    }
    ~BorrowedText() { swapWithThread(); }
    BorrowedText(const BorrowedText&) = delete;
    BorrowedText& operator=(const BorrowedText&) = delete;
    std::string& operator*() { return text_; }

private:
    void swapWithThread() {
        if (!threadTextGone) text_.swap(threadText.text);
    }
    std::string text_;
};

void appendFilled(std::string& out, std::string_view text, std::span<const Detail::TraceArg> args) {
    for (const Detail::TraceArg& arg : args) {
        const auto at = text.find("{}");
        out.append(text.substr(0, at));
        arg.append(out, arg.value);
        text.remove_prefix(at + 2);
    }
    out.append(text);
}

}  // namespace

TraceSink traceSinkIs(TraceSink sink) {
    auto next = sink ? std::make_shared<const TraceSink>(std::move(sink)) : nullptr;
    {
        const std::lock_guard lock(sinkInForce().mutex);
        sinkInForce().sink.swap(next);
    }
    return next ? *next : TraceSink{};
}

void Detail::emitTrace(const TraceHandle& handle, int level, const TraceSite& site, std::string_view text) {
    const TraceLine line{handle.name(), level, site.file, site.line, site.function, text};
    try {
        if (const auto sink = currentSink()) return (*sink)(line);
    } catch (...) {
        // An exception of the sink must not stop the traced code; the line goes to stderr.
    }
    print(line, handle.timeStamped());
}

void Detail::trace(TraceTo to, const TraceHandle& handle, int level, const TraceSite& site, std::string_view text,
                   std::span<const TraceArg> args) {
    BorrowedText line;
    appendFilled(*line, text, args);
    if (to == TraceTo::textAndRing && RingTrace::wanted(level)) RingTrace::record(handle, level, *line);
    if (handle.wanted(level)) emitTrace(handle, level, site, *line);
}

}  // namespace Tyk
