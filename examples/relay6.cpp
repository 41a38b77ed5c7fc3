// Wraps the DHCPv6 messages of clients as a relay agent does, and unwraps the replies for them: relay6 FILE...

#include <iostream>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/Dhcp6MessageBuilder.h"
#include "DhcpLib/Dhcp6Parser.h"
#include "DhcpLib/OptionParser.h"
#include "Frames.h"

namespace {

using namespace DhcpLib;

/// What the relay agent knows of the link on which a message arrived.
struct Link {
    std::string name;         // goes into the interface-id, which the server returns
    Kitnet::Ip6Addr address;  // a global address of the relay agent on the link
};

std::span<const U8> bytesOf(std::string_view text) { return {reinterpret_cast<const U8*>(text.data()), text.size()}; }

bool isLinkLocal(const Kitnet::Ip6Addr& address) { return address.byte(0) == 0xfe && (address.byte(1) & 0xc0) == 0x80; }

bool isFromServer(Dhcp6MsgType type) {
    using enum Dhcp6MsgType;
    return type == advertise || type == reply || type == reconfigure || type == relayReply;
}

// [forward]
/// The relay-forward for a message that came from `peer`; null if it must not be relayed.
PktPtr relayForward(const PktPtr& message, const Kitnet::Ip6Addr& peer, const Link& link) {
    if (!dhcp6OptionBasicCheck(message, 0)) return nullptr;  // no message, or options that do not end where it ends
    const auto type = dhcp6RegHdrFactory(message, 0)->msgType();
    if (isFromServer(type)) return nullptr;
    U8 hops = 0;
    Kitnet::Ip6Addr linkAddress = link.address;
    if (type == Dhcp6MsgType::relayForward) {  // from another relay agent (RFC 8415, section 19.1.2)
        hops = dhcp6RelayHdrFactory(message, 0)->hopCount();
        if (hops >= Constants::dhcp6HopCountLimit) return nullptr;
        ++hops;
        if (!isLinkLocal(peer)) linkAddress = {};
    }
    Dhcp6MessageBuilder out(Dhcp6MsgType::relayForward, hops, linkAddress, peer);
    const bool fits = out.add(Dhcp6OptionType::interfaceId, bytesOf(link.name)) &&
                      out.addMessage({message->data(), message->bytes()});
    return fits ? out.pkt() : nullptr;
}
// [/forward]

// [reply]
/// A message for a client or for another relay agent on a link.
struct Delivery {
    std::string_view message;  // in the packet of the relay-reply
    std::string_view link;     // the interface-id, in the same packet
    Kitnet::Ip6Addr peer;
};

/// Unwraps one level of the relay-reply in `pkt`. The server may send anything: check before you read.
std::optional<Delivery> relayReply(const PktPtr& pkt) {
    if (!dhcp6OptionBasicCheck(pkt, 0)) return std::nullopt;
    const auto header = dhcp6RelayHdrFactory(pkt, 0);
    if (header->msgType() != Dhcp6MsgType::relayReply) return std::nullopt;
    const auto options = dhcp6OptionsFactory(pkt, Dhcp6Const::relayhdr_size);
    const auto inner = options->option(Dhcp6OptionType::relayMsg);
    const auto link = options->option(Dhcp6OptionType::interfaceId);
    if (!inner || !link) return std::nullopt;
    return Delivery{inner->dataText(), link->dataText(), header->peerAddr()};
}
// [/reply]

/// The DHCPv6 message in a frame, as an agent receives it from a UDP socket, and its sender; null for other frames.
std::pair<PktPtr, Kitnet::Ip6Addr> received(const PktPtr& frame) {
    Dhcp6PacketParser parser(nullptr);
    // Refuses relay messages, but has read their header.
    if (!accepted([&] { return parser.doParseDhcp6(frame, {}); }) && parser.rejection() != FrameRejection::relayMessage)
        return {};
    const U32 at = parser.etherHdrLen() + parser.ip6HdrLen() + udpHeaderBytes;
    return {Kitnet::globalPktManager().newPkt(std::span(frame->data(), frame->bytes()).subspan(at)), parser.srcIp6()};
}

void show(const PktPtr& relayed) {
    for (const Dhcp6MessagePlace& place : dhcp6RelayChain(relayed, {0, relayed->bytes()}))
        std::cout << ' ' << dhcp6RegHdrFactory(relayed, place.offset)->msgType() << " of " << place.end - place.offset
                  << " bytes";
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return std::cerr << "usage: relay6 FILE...\n", 2;
    const Link link{"Ethernet1", Kitnet::Ip6Addr::fromText("2001:db8:20::1")};
    for (int i = 1; i < argc; ++i) {
        for (const PktPtr& frame : framesOf(argv[i])) {
            const auto [message, sender] = received(frame);
            if (const PktPtr forward = relayForward(message, sender, link)) {
                std::cout << "to the server:";
                show(forward);
                std::cout << '\n';
            } else if (const auto delivery = relayReply(message)) {
                std::cout << "to " << delivery->peer << ": " << delivery->message.size() << " bytes\n";
            }
        }
    }
}
