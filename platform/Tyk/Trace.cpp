#include "Tyk/Trace.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "Kcore/Encoding.h"
#include "Tyk/internal/TimeOfDay.h"

namespace Tyk {

namespace {

/// A sink and the number of its calls that are running.
struct SharedSink {
    const TraceSink call;
    int running = 0;
};

struct SinkInForce {
    std::mutex mutex;
    std::condition_variable callEnded;
    std::shared_ptr<SharedSink> sink;  // null means stderr
    int replacedRunning = 0;           // calls that are running, of sinks that are no longer in force
};

SinkInForce& sinkInForce() {
    static auto& it = *new SinkInForce;  // never destroyed, since destructors of static objects trace, too
    return it;
}

std::shared_ptr<SharedSink> presentSink() {
    const std::lock_guard lock(sinkInForce().mutex);
    return sinkInForce().sink;
}

thread_local constinit int sinkCalls = 0;  // calls of sinks that this thread is in

/// A call of the sink in force. traceSinkIs waits for its end.
class SinkCall {
public:
    SinkCall() {
        const std::lock_guard lock(sinkInForce().mutex);
        sink_ = sinkInForce().sink;
        if (!sink_) return;
        ++sink_->running;
        ++sinkCalls;
    }
    ~SinkCall() {
        if (!sink_) return;
        --sinkCalls;
        const std::lock_guard lock(sinkInForce().mutex);
        --sink_->running;
        if (sink_ != sinkInForce().sink && --sinkInForce().replacedRunning == 0) sinkInForce().callEnded.notify_all();
    }
    SinkCall(const SinkCall&) = delete;
    SinkCall& operator=(const SinkCall&) = delete;

    /// Whether there is a sink and it took the line.
    bool take(const TraceLine& line) const {
        if (sink_) sink_->call(line);
        return sink_ != nullptr;
    }

private:
    std::shared_ptr<SharedSink> sink_;
};

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
    const auto next = sink ? std::make_shared<SharedSink>(SharedSink{std::move(sink)}) : nullptr;
    for (;;) {
        // Copying and destroying a sink may trace, so the mutex is not held meanwhile.
        const std::shared_ptr<SharedSink> previous = presentSink();
        TraceSink copy = previous ? previous->call : TraceSink();
        std::unique_lock lock(sinkInForce().mutex);
        if (sinkInForce().sink != previous) continue;  // another thread has installed one
        sinkInForce().sink = next;
        if (previous) sinkInForce().replacedRunning += previous->running;
        // Calls of all replaced sinks: a sink may have replaced one that the caller has installed.
        if (sinkCalls == 0) sinkInForce().callEnded.wait(lock, [] { return sinkInForce().replacedRunning == 0; });
        return copy;
    }
}

void Detail::emitTrace(const TraceHandle& handle, int level, const TraceSite& site, std::string_view text) {
    const TraceLine line{handle.name(), level, site.file, site.line, site.function, text};
    try {
        if (SinkCall().take(line)) return;
    } catch (...) {
        // An exception of the sink must not stop the traced code; the line goes to stderr.
    }
    try {
        print(line, handle.timeStamped());
    } catch (const std::bad_alloc&) {
        // The line is dropped: what is traced, often a destructor, must not fail because of it.
    }
}

void Detail::trace(TraceTo to, const TraceHandle& handle, int level, const TraceSite& site, std::string_view text,
                   std::span<const TraceArg> args) {
    try {
        BorrowedText line;
        appendFilled(*line, text, args);
        if (to == TraceTo::textAndRing && RingTrace::wanted(level)) RingTrace::record(handle, level, *line);
        if (handle.wanted(level)) emitTrace(handle, level, site, *line);
    } catch (const std::bad_alloc&) {
        // The line is dropped.
    }
}

}  // namespace Tyk
