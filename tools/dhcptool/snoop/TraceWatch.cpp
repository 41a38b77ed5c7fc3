#include "snoop/TraceWatch.h"

#include <algorithm>

#include "common/Output.h"
#include "common/Printable.h"

namespace DhcpTool {

TraceWatch::TraceWatch(std::optional<int> level)
    : handle_(DhcpLib::traceHandle()), levelBefore_(handle_.level()), shown_(level.value_or(levelBefore_)) {
    handle_.levelIs(std::max(shown_, DhcpLib::TraceLevel::rejection));
    sinkBefore_ = Tyk::traceSinkIs([this](const Tyk::TraceLine& line) { take(line); });
}

TraceWatch::~TraceWatch() {
    Tyk::traceSinkIs(sinkBefore_);
    handle_.levelIs(levelBefore_);
}

void TraceWatch::frameIs(Kcore::U64 number) {
    frame_ = number;
    reason_.clear();
}

void TraceWatch::take(const Tyk::TraceLine& line) {
    if (line.level <= DhcpLib::TraceLevel::rejection) {
        const std::string_view text = line.text.substr(0, line.text.find(','));
        reason_ = harmless(text.substr(0, text.find_last_not_of("0123456789") + 1));
    }
    if (line.level <= shown_)
        complain("frame " + std::to_string(frame_) + ": trace " + std::to_string(line.level) + ": " +
                 harmless(line.text));
}

}  // namespace DhcpTool
