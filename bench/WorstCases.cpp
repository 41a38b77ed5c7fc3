#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/DhcpParser.h"
#include "DhcpLib/OptionParser.h"
#include "Kitnet/BigEndian.h"
#include "Measure.h"
#include "Message.h"

namespace DhcpBench {

namespace {

using DhcpLib::Dhcp6Options;

constexpr std::size_t size = 65535;

/// A packet of 64 KiB: `front`, then all `items` over and over again as long as they fit, then zeros.
Case worst(const char* name, Octets front, const std::vector<Octets>& items) {
    for (std::size_t i = 0; front.size() + items[i].size() <= size; i = (i + 1) % items.size()) append(front, items[i]);
    front.resize(size);
    auto pkt = Kitnet::globalPktManager().newPkt(front);
    Case made{name, {}};
    made.inputs.push_back({std::move(front), std::move(pkt), 0});
    return made;
}

Octets item6(U32 code, U32 bytes) {
    Octets item;
    appendOption6(item, static_cast<U16>(code), Octets(bytes));
    return item;
}

/// `count` empty DHCPv6 options. Code number i is i * `step`, modulo 65521.
std::vector<Octets> codes6(U32 count, U32 step) {
    std::vector<Octets> items;
    for (U32 i = 1; i <= count; ++i) items.push_back(item6(i * step % 65521, 0));
    return items;
}

/// Relay messages, each in the relay message option of the one around it, as deep as 64 KiB allow.
Octets relayChain() {
    Octets bytes;
    for (std::size_t left = size; left >= 42;) {
        bytes.push_back(12);
        bytes.resize(bytes.size() + 33);
        left -= 38;
        append(bytes, item6(9, 0));
        Kitnet::storeBigEndian(bytes.data() + bytes.size() - 2, static_cast<U16>(left));
    }
    bytes.resize(size);
    return bytes;
}

/// Header and magic cookie.
Octets bootpHeader(Op op) {
    Octets bytes = Message(op).finished(0);
    bytes.pop_back();  // the end option
    return bytes;
}

template <class Operation>
void measureWorst(Case made, Operation operation) {
    static std::vector<std::unique_ptr<Case>> kept;
    kept.push_back(std::make_unique<Case>(std::move(made)));
    measure("worst", *kept.back(), library, operation);
}

/// Deletes every option of a collection that has codes from 0 to 65535.
template <class Options>
std::size_t deleteAll(const typename Options::Ptr& options) {
    std::size_t deleted = 0;
    for (U32 code = 0; code <= 65535; ++code)
        deleted += options->optionDel(static_cast<typename Options::Type>(code)) ? 1 : 0;
    return deleted;
}

}  // namespace

void registerWorstCases() {
    const auto options4 = [](const Input& input) {
        return DhcpLib::dhcpMsgOptionsFactory(input.pkt, DhcpLib::Constants::bootpHdrSize + 4);
    };
    const auto options6 = [](const Input& input) { return DhcpLib::dhcp6OptionsFactory(input.pkt, 0); };
    const auto deleted6 = [options6](const Input& input) { return deleteAll<Dhcp6Options>(options6(input)); };

    const std::vector<Octets> empty4{{7, 0}, {8, 0}}, many6 = codes6(16383, 1);
    measureWorst(worst("DhcpMsgOptions of 32,000 options", bootpHeader(Op::request), empty4), options4);
    measureWorst(worst("Dhcp6Options of 16,000 codes, all deleted", {}, many6), deleted6);
    // 4,096 codes that are equal modulo 16: they share few chains of an index.
    measureWorst(worst("Dhcp6Options of colliding codes, all deleted", {}, codes6(4095, 16)), deleted6);
    measureWorst(worst("all message options", {1, 0, 0, 0}, many6), [](const Input& input) {
        return DhcpLib::dhcp6MessageOptions(input.pkt, {0, size});
    });
    measureWorst(worst("relay chain", relayChain(), {{0}}), [](const Input& input) {
        return DhcpLib::dhcp6RelayChain(input.pkt, {0, size});
    });

    const auto userClass = [](const Input& input, bool backwards) {
        constexpr U32 items = (size - 4) / 2;
        const DhcpLib::Dhcp6UserClassOption option(input.pkt, 0);
        std::size_t bytes = 0;
        for (U32 i = 0; i < items; ++i)
            bytes += option.userClassData(static_cast<U16>(backwards ? items - 1 - i : i)).size();
        return bytes;
    };
    const Octets userClassHead = item6(15, 0xfffb - 4);
    const auto headOnly = [](Octets bytes) { return bytes.resize(4), bytes; };
    measureWorst(worst("32,000 user classes", headOnly(userClassHead), {{0, 0}}),
                 [userClass](const Input& input) { return userClass(input, false); });
    measureWorst(worst("32,000 user classes backwards", headOnly(userClassHead), {{0, 0}}),
                 [userClass](const Input& input) { return userClass(input, true); });
    Octets vendor = headOnly(item6(17, 0xfffb - 4));
    vendor.resize(8);
    measureWorst(worst("16,000 vendor options backwards", vendor, many6), [](const Input& input) {
        const DhcpLib::Dhcp6VendorSpecificInformationOption option(input.pkt, 0);
        std::size_t bytes = 0;
        for (U32 code = 16383; code > 0; --code) bytes += option.vendorOptionData(static_cast<U16>(code)).size();
        return bytes;
    });

    measureWorst(worst("doParse of 32,000 options", bootpHeader(Op::request), empty4), [](const Input& input) {
        DhcpLib::PacketParser parser(nullptr);
        parser.doParse(input.pkt, {}, true);
        return parser;
    });
    using DhcpLib::preparePacket, DhcpLib::preparePacketNew;
    for (const bool isNew : {false, true})
        measureWorst(
            worst(isNew ? "preparePacketNew" : "preparePacket", bootpHeader(Op::reply), {{82, 2, 9, 0}, {7, 0}}),
            [function = isNew ? preparePacketNew : preparePacket](const Input& input) {
                auto pkt = Kitnet::globalPktManager().newPkt(input.frame);
                pkt->data()[size - 1] = 255;
                function(pkt, DhcpLib::BootpOption::bootpReply, true, "", "", "", {}, {}, 0, true, "", {});
                return pkt;
            });
}

}  // namespace DhcpBench
