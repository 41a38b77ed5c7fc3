#include "capture/FileSource.h"

namespace DhcpTool {

std::optional<Arrival> FileSource::next() {
    const std::optional<Frame> frame = files_.next();
    if (!frame) return std::nullopt;
    Arrival arrival;
    arrival.number = frame->number;
    arrival.time = frame->time;
    arrival.pkt = Kitnet::globalPktManager().newPkt(frame->bytes);
    arrival.sentBytes = frame->sentBytes;
    arrival.intf = port_;
    arrival.ifIndex = frame->ifIndex;
    arrival.outgoing = frame->outgoing;
    return arrival;
}

}  // namespace DhcpTool
