// Lists options of the DHCP messages in captures, whatever their bytes are: options FILE...

#include <iostream>
#include <string>
#include <string_view>

#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/Dhcp6Parser.h"
#include "DhcpLib/DhcpParser.h"
#include "DhcpLib/OptionParser.h"
#include "Frames.h"

namespace {

using namespace DhcpLib;

/// Text from the network may contain anything, escape sequences of the terminal included.
std::string quoted(std::string_view bytes) {
    std::string out;
    Kcore::appendQuoted(out, bytes);
    return out;
}

// [find]
/// The host name and the sub-options of option 82 in the message whose BOOTP header is at `offset`.
void showOptions(const PktPtr& pkt, U32 offset) {
    if (const AreaState state = optionsAreaState(pkt, offset); state != AreaState::wellFormed) {
        std::cout << "malformed: " << state << '\n';
        return;
    }
    if (const FoundOption name = findOption(pkt, offset, DhcpOptionType::hostName))
        std::cout << "host name " << quoted(name.data()) << '\n';
    for (const FoundOption& each : subOptions(findOption(pkt, offset, DhcpOptionType::infoOpt))) {
        std::cout << "sub-option " << +each.code() << ' ' << quoted(each.data());
        std::cout << (each.isWhole() ? "\n" : " cut\n");
    }
}
// [/find]

// [number]
/// The lease time: 4 bytes, big-endian. Any other length is malformed.
void showLeaseTime(const PktPtr& pkt, U32 offset) {
    const FoundOption option = findOption(pkt, offset, DhcpOptionType::leaseTimeOpt);
    if (option && option.isWhole() && option.len() == sizeof(U32))
        std::cout << "lease time " << Wire::load<U32>(*pkt, option.dataOffset()) << " s\n";
}
// [/number]

// [nested]
/// The addresses that a DHCPv6 message gives to a client: options nested in options.
void showAddresses(const PktPtr& pkt, const Dhcp6MessagePlace& message) {
    for (const auto& option : dhcp6MessageOptions(pkt, message)) {
        if (option->optType() != Dhcp6OptionType::iana || option->len() < Dhcp6Const::ianaopt_minlen) continue;
        for (const auto& nested : dhcp6NestedOptions(*dhcp6IanaFactory(option))) {
            if (nested->optType() != Dhcp6OptionType::iaAddress || nested->len() < Dhcp6Const::iaaddropt_minlen)
                continue;
            const auto address = dhcp6IaAddrFactory(nested);
            std::cout << address->pfxAddr() << " valid for " << address->validLifetime() << " s\n";
        }
    }
}
// [/nested]

void show(const PktPtr& frame) {
    PacketParser parser(nullptr);
    if (accepted([&] { return parser.doParse(frame, {}, false); }) || parser.isDhcp()) {
        showOptions(frame, parser.offset());
        showLeaseTime(frame, parser.offset());
        return;
    }
    Dhcp6PacketParser parser6(nullptr);
    if (accepted([&] { return parser6.doParseDhcp6(frame, {}); })) {
        const U16 at = static_cast<U16>(parser6.dhcp6OptionsOffset() - Dhcp6Const::reghdr_size);
        showAddresses(frame, {at, frame->bytes()});
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return std::cerr << "usage: options FILE...\n", 2;
    for (int i = 1; i < argc; ++i) {
        U32 number = 0;
        for (const PktPtr& frame : framesOf(argv[i])) {
            std::cout << "frame " << ++number << '\n';
            show(frame);
        }
    }
}
