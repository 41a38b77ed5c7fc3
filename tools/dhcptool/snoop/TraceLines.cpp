#include "snoop/TraceLines.h"

#include "common/Output.h"
#include "common/Printable.h"

namespace DhcpTool {

TraceLines::TraceLines(std::optional<int> level) : levelBefore_(handle_.level()) {
    if (level) handle_.levelIs(*level);
    sinkBefore_ = Tyk::traceSinkIs([this](const Tyk::TraceLine& line) {
        complain("frame " + std::to_string(frame_) + ": trace " + std::to_string(line.level) + ": " +
                 harmless(line.text));
    });
}

TraceLines::~TraceLines() {
    Tyk::traceSinkIs(sinkBefore_);
    handle_.levelIs(levelBefore_);
}

}  // namespace DhcpTool
