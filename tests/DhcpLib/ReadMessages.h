#pragma once

#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/Dhcp6Identifiers.h"
#include "DhcpLib/Dhcp6Parser.h"
#include "DhcpLib/DhcpHdr.h"
#include "DhcpLib/DhcpParser.h"
#include "ParserRows.h"
#include "RelayInfoReader.h"

/// Each append to `out` what all readers of the library find in a frame whose message is at position `message`. The
/// text starts with '+' if the snooping parser accepts the frame.
namespace DhcpTest {

inline void appendView(std::string& out, const Kcore::Node& view) {
    for (const auto& attribute : view.typeData().attributes()) attribute.appendText(out, &view);
}
template <class Options>
void appendOptions(std::string& out, const Options& options) {
    for (const auto& [type, view] : options.option()) appendView(out, *view);
}
template <class Parser>
void appendParser(std::string& out, const Parser& parser, bool accepted) {
    out += accepted ? '+' : '-';
    Kcore::forEachAttribute(parser, [&](std::string_view, const auto& value) { Kcore::appendText(out, value); });
}

inline void readV4(std::string& out, const PktPtr& pkt, U32 message) {
    using namespace DhcpLib;
    PacketParser parser(config());
    const bool accepted = parser.doParse(pkt, accessPort, false);
    appendParser(out, PacketParser(parser), accepted);
    out += std::to_string(dhcpOptionBasicCheck(pkt, message));
    const auto options = dhcpMsgOptionsFactory(pkt, static_cast<U16>(message + 240));
    appendOptions(out, *options);
    if (const auto info = options->option(DhcpOptionType::infoOpt)) {
        const auto subOptions = dhcpInformationSubOptionsFactory(info);
        appendOptions(out, *subOptions);
        for (const auto& [type, view] : subOptions->option())
            if (const auto block = dhcpVendorSpecificSubOptFactory(view)->quorvaSpecificOpt())
                appendOptions(out, *block);
    }
    for (const auto reader : {parseInfoOpt, parseInfoOptNew}) {
        const RelayInfo info = readInfo(reader, pkt, message);
        out.append(info.circuitId.view()).append(info.remoteId.view()).append(info.intfName.view());
    }
    for (const FoundOption& found : subOptions(findOption(pkt, message, 82))) out += found.data();
}

inline void readV6(std::string& out, const PktPtr& pkt, U32 message) {
    using namespace DhcpLib;
    Dhcp6PacketParser parser(config());
    const bool accepted = parser.doParseDhcp6(pkt, accessPort);
    appendParser(out, parser, accepted);
    out += std::to_string(dhcp6OptionBasicCheck(pkt, message));
    for (const auto& place : dhcp6RelayChain(pkt, {static_cast<U16>(message), pkt->bytes()})) {
        out += std::to_string(dhcp6RelayHdrFactory(pkt, place.offset)->hopCount());
        const Dhcp6Identifiers ids = dhcp6Identifiers(pkt, place);
        out.append(ids.clientId.duidUuid.view()).append(ids.clientId.duidEntId.view());
        for (const auto& option : dhcp6MessageOptions(pkt, place)) {
            appendView(out, *option);
            appendView(out, *dhcp6IanaFactory(option));
            appendView(out, *dhcp6IaAddrFactory(option));
            appendView(out, *dhcp6IaPfxFactory(option));
            appendView(out, *dhcp6RemoteIdFactory(option));
            appendView(out, *dhcp6RemoteIdIntfNameFactory(option));
            appendView(out, *dhcp6DuidFactory(option, 4));
            appendView(out, *dhcpLinkLayerAddrFactory(option));
            if (option->optType() == Dhcp6OptionType::interfaceId) appendView(out, *dhcp6InterfaceIdFactory(option));
            for (const auto& nested : dhcp6NestedOptions(*dhcp6IanaFactory(option))) appendView(out, *nested);
        }
    }
    const Dhcp6Options options(pkt, static_cast<U16>(message + 4));
    appendOptions(out, options);
    if (const auto userClass = options.userClassOption()) out += userClass->userClassData(0).view();
    if (const auto vendor = options.vendorSpecificInformationOption())
        for (int i = 0; i < 3; ++i) out += vendor->vendorOptionData(1).view();
    appendOptions(out, *cableLabsSubOptionsFactory(pkt, static_cast<U16>(message + 4)));
}

}  // namespace DhcpTest
