#include "relay/Relay.h"

#include "Kcore/Text.h"
#include "Kitnet/Pkt.h"
#include "Kitnet/UdpMend.h"

namespace DhcpTool {

namespace {

using DhcpLib::BootpOption;
using Kitnet::Pkt;
using PktPtr = Kcore::Ptr<Pkt>;

constexpr U32 longestDatagram = 65535;

PktPtr packetOf(std::span<const U8> bytes) { return Kitnet::globalPktManager().newPkt(bytes); }

/// "44 bytes" for option 82 with that much data, or "none".
std::string infoText(const PktPtr& message) {
    const DhcpLib::FoundOption info = findOption(message, 0, DhcpLib::DhcpOptionType::infoOpt);
    return info ? std::to_string(info.len()) + " bytes" : "none";
}

/// The message type, or the direction if the message has no type.
std::string messageText(const PktPtr& message, BootpOption op) {
    const Kcore::String type = DhcpLib::getDhcpMsgType(message, 0);
    return type.empty() ? Kcore::textOf(op) : type.str();
}

std::string lineStart(const Frame& frame) { return "frame " + std::to_string(frame.number) + ": "; }

/// The frame's headers followed by `message`. Bytes after the old datagram are dropped.
PktPtr frameOf(std::span<const U8> headers, const Pkt& message, U32 ipAt) {
    PktPtr frame = packetOf(headers);
    const U32 at = frame->bytes();
    frame->newSharedTailData(message.bytes());
    DhcpLib::Wire::store(*frame, at, std::span<const U8>(message.data(), message.bytes()));
    Kitnet::mendUdp(*frame, ipAt);
    return frame;
}

}  // namespace

std::string RelayCounts::text() const {
    std::string out = "frames " + std::to_string(frames) + ", requests rewritten " + std::to_string(requests) +
                      ", replies rewritten " + std::to_string(replies) + ", messages copied " + std::to_string(copied);
    for (const auto& [why, count] : copiedFor) out += "\n  " + std::to_string(count) + "  " + why;
    return out;
}

Relayer::Result Relayer::take(const Frame& frame) {
    ++counts_.frames;
    const UdpFrame place = udpFrameOf({frame.bytes.data(), static_cast<U32>(frame.bytes.size())});
    if (place.kind == UdpFrame::Kind::other) return {};
    if (place.kind == UdpFrame::Kind::unfit) return copy(frame, place.why);
    return relay(frame, place);
}

Relayer::Result Relayer::relay(const Frame& frame, const UdpFrame& place) {
    const PktPtr message = packetOf(frame.bytes.subspan(place.payloadAt, place.payloadBytes));
    DhcpLib::RelayRewrite rewrite = settings_.rewrite;
    rewrite.op = BootpOption{DhcpLib::Wire::load<U8>(*message, 0)};
    const bool request = rewrite.op == BootpOption::bootpRequest;
    if (!request && rewrite.op != BootpOption::bootpReply) return copy(frame, "neither request nor reply");

    const auto forecast = relayRewriteCheck(message, rewrite, settings_.generation);
    if (forecast.verdict == DhcpLib::RelayRewriteVerdict::assertion)
        return copy(frame, "assertion: " + std::string(forecast.assertion));
    if (!forecast.isRewritable()) return copy(frame, Kcore::textOf(forecast.verdict));
    if (place.payloadAt - place.ipAt + forecast.messageBytes > longestDatagram)
        return copy(frame, "too large for an IPv4 datagram");

    const std::string infoBefore = infoText(message);
    if (!relayRewrite(message, rewrite, settings_.generation)) return copy(frame, "not rewritten");
    std::string line = lineStart(frame) + messageText(message, rewrite.op) + ", option 82 " + infoBefore + " -> " +
                       infoText(message) + ", message " + std::to_string(place.payloadBytes) + " -> " +
                       std::to_string(message->bytes()) + " bytes";
    const DhcpLib::FoundOption serverId = findOption(message, 0, DhcpLib::DhcpOptionType::serverIdOpt);
    if (!request && settings_.serverId && serverId) {
        // The address would overwrite bytes after a shorter option.
        if (serverId.len() != sizeof(Kitnet::IpAddr)) return copy(frame, "server identifier is not 4 bytes long");
        DhcpLib::setServerId(message, *settings_.serverId);
        line += ", server identifier " + Kcore::textOf(*settings_.serverId);
    }
    ++(request ? counts_.requests : counts_.replies);
    return {frameOf(frame.bytes.first(place.payloadAt), *message, place.ipAt), std::move(line)};
}

Relayer::Result Relayer::copy(const Frame& frame, const std::string& why) {
    ++counts_.copied;
    ++counts_.copiedFor[why];
    return {nullptr, lineStart(frame) + "copied, " + why};
}

}  // namespace DhcpTool
