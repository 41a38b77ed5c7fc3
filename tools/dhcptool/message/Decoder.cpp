#include "message/Decoder.h"

#include "Kcore/Exception.h"
#include "message/Read4.h"
#include "message/Read6.h"

namespace DhcpTool {

using DhcpLib::FrameRejection;

namespace {

/// Empties what the last frame left, but keeps the memory.
void clear(Message& message) {
    message.fault.reset();
    message.isBootp = false;
    message.options.clear();
    message.header = {};
    message.headerBytes = 0;
    message.sname = message.file = {};
    message.relayInfo.clear();
    message.layers.clear();
    message.ias.clear();
    message.leases6.clear();
    message.status6.reset();
}

/// Whether a part of the datagram is missing.
std::optional<Fault> cutOf(const Message& message) {
    const U32 end = message.arrival.pkt->bytes();
    if (const U32 at = message.headers.laterFragmentAt; at != 0) return Fault{"a later IP fragment", at};
    if (message.headers.messageEnd <= end) return std::nullopt;
    if (message.isCutBySnapLength()) return Fault{"cut by the snap length of the capture", end};
    if (message.headers.firstFragment) return Fault{"the rest is in other IP fragments", end};
    return Fault{"frame ends before its UDP datagram", end};
}

}  // namespace

Decoder::Decoder(const Ports& ports, bool keepState) : keepState_(keepState) {
    for (const auto& [intf, port] : ports) {
        const auto config = config_->switchIntfConfigIs(intf);
        config->nativeVlanIs(Bridging::VlanId(port.nativeVlan));
        config->switchportModeIs(port.switchportMode);
    }
    message_.parser = DhcpLib::PacketParser(config_);
    message_.parser6 = DhcpLib::Dhcp6PacketParser(config_);
}

const Message& Decoder::decode(const Arrival& frame) {
    clear(message_);
    message_.arrival = frame;
    message_.headers = readHeaders(*frame.pkt);
    try {
        message_.isDhcp6() ? decode6() : decode4();
    } catch (const Kcore::RangeException&) {
        judge(FrameRejection::reservedVlan);
    }
    if (message_.verdict == Message::Verdict::other) return message_;
    message_.fault = cutOf(message_);
    message_.isDhcp6() ? readContents6(message_) : readContents4(message_);
    return message_;
}

void Decoder::decode4() {
    DhcpLib::PacketParser& parser = message_.parser;
    if (!keepState_) parser = DhcpLib::PacketParser(config_);
    parser.doParse(message_.arrival.pkt, message_.arrival.intf, false);
    judge(parser.rejection());
    message_.isBootp = message_.verdict == Message::Verdict::accepted && !parser.isDhcp();
}

/// The parser refuses relay messages; they count as accepted if their header is whole.
void Decoder::decode6() {
    DhcpLib::Dhcp6PacketParser& parser = message_.parser6;
    if (!keepState_) parser = DhcpLib::Dhcp6PacketParser(config_);
    parser.doParseDhcp6(message_.arrival.pkt, message_.arrival.intf);
    const DhcpLib::Wire::ByteView bytes(*message_.arrival.pkt);
    const bool relay = parser.rejection() == FrameRejection::relayMessage &&
                       bytes.has(message_.headers.messageAt, DhcpLib::Dhcp6Const::relayhdr_size);
    judge(relay ? FrameRejection::none : parser.rejection());
}

void Decoder::judge(FrameRejection rejection) {
    using enum Message::Verdict;
    message_.rejection = rejection;
    message_.verdict = rejection == FrameRejection::none ? accepted : message_.headers.toDhcpPort ? refused : other;
}

}  // namespace DhcpTool
