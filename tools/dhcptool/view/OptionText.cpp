#include "view/OptionText.h"

#include "DhcpLib/Dhcp6Hdr/RelayIdentification.h"
#include "DhcpLib/Dhcp6Identifiers.h"
#include "common/Printable.h"
#include "message/TypeNames.h"
#include "view/DuidText.h"
#include "view/Line.h"
#include "view/TimeText.h"

namespace DhcpTool {

namespace {

using DhcpLib::Dhcp6Const;
using DhcpLib::Wire::ByteView;

constexpr U32 option6HeaderBytes = Dhcp6Const::optdata_offset;

void appendRawHex(std::string& out, std::string_view data) { appendHex(out.append("0x"), data); }

/// Appends `appendOne(at)` for every `unit` bytes, with commas between.
template <class AppendOne>
void appendList(std::string& out, const Item& item, U32 unit, AppendOne appendOne) {
    for (U32 at = 0; at + unit <= item.data.size(); at += unit) {
        if (at != 0) out.push_back(',');
        appendOne(at);
    }
}

template <class T>
void appendValues(std::string& out, const Item& item) {
    appendList(out, item, sizeof(T), [&](U32 at) { Kcore::appendText(out, item.load<T>(at)); });
}

void appendClientId(std::string& out, const Item& item) {
    constexpr U8 ethernet = 1, duid = 255;
    constexpr U32 typeBytes = 1, iaidBytes = 4;
    const U8 type = item.load<U8>();
    if (type == ethernet && item.data.size() == typeBytes + sizeof(Kitnet::EthAddr))
        return item.load<Kitnet::EthAddr>(typeBytes).appendText(out);
    if (type == duid && item.data.size() > typeBytes + iaidBytes) {  // RFC 4361
        appendRawHex(out.append("IAID "), item.data.substr(typeBytes, iaidBytes));
        out.append(" DUID ");
        return appendDuid(out, item.data.substr(typeBytes + iaidBytes));
    }
    if (type == 0) return appendTextOrHex(out, item.data.substr(typeBytes));
    appendTextOrHex(out, item.data);
}

void appendFqdn4(std::string& out, const Item& item) {
    constexpr U32 nameAt = 3;
    constexpr U8 encoded = 4;  // RFC 4702, section 2.1
    const std::string_view name = item.data.substr(nameAt);
    if ((item.load<U8>() & encoded) != 0)
        appendDomains(out, name);
    else
        appendQuotedText(out, name);
}

void appendVss(std::string& out, const Item& item) {
    constexpr U8 name = 0, vpnId = 1, global = 255;  // RFC 6607, section 3.5
    const U8 type = item.load<U8>();
    const std::string_view rest = item.data.substr(1);
    if (type == name) return appendTextOrHex(out, rest);
    if (type == vpnId) return appendRawHex(out.append("vpn-id "), rest);
    if (type == global && rest.empty()) {
        out.append("global");
        return;
    }
    appendRawHex(out, item.data);
}

void appendAddress6(std::string& out, const Item& item, U32 at) { item.load<Kitnet::Ip6Addr>(at).appendText(out); }

void appendTimes(std::string& out, const Item& item, U32 at) {
    appendLifetime(out.append(" preferred "), item.load<U32>(at));
    appendLifetime(out.append(" valid "), item.load<U32>(at + U32{sizeof(U32)}));
}

/// The nested options that matter: status codes, and in an association (`leases`) addresses and prefixes.
void appendNested(std::string& out, const Item& item, U32 first, bool leases, const Message& message) {
    const auto* const frame = message.arrival.pkt->data();
    const U32 end = item.dataOffset + static_cast<U32>(item.data.size());
    forEachItem<DhcpLib::Option6Shape>(ByteView(frame, end), item.dataOffset + first, [&](const Item& nested) {
        const OptionInfo* const info = optionInfo6(nested.code);
        if (!nested.isWhole() || info == nullptr) return nested.isWhole() && nested.code != 0;
        const bool isLease = info->layout == Layout::leaseAddress || info->layout == Layout::leasePrefix;
        if (info->layout != Layout::status && !(isLease && leases)) return true;
        out.push_back(' ');
        if (!isLease) out.append(info->name).push_back(' ');
        appendValue(out, info, nested, message);
        return true;
    });
}

void appendAssociation(std::string& out, const Item& item, const Message& message) {
    constexpr U32 t1At = Dhcp6Const::ianat1_offset - option6HeaderBytes,
                  t2At = Dhcp6Const::ianat2_offset - option6HeaderBytes;
    appendRawHex(out, item.data.substr(0, sizeof(U32)));
    if (const U32 t1 = item.load<U32>(t1At); t1 != 0) appendLifetime(out.append(" T1 "), t1);
    if (const U32 t2 = item.load<U32>(t2At); t2 != 0) appendLifetime(out.append(" T2 "), t2);
    appendNested(out, item, Dhcp6Const::ianaopt_minlen, true, message);
}

void appendLease(std::string& out, const Item& item, const Message& message) {
    appendAddress6(out, item, Dhcp6Const::iaaddr_offset - option6HeaderBytes);
    appendTimes(out, item, Dhcp6Const::iaaddr_preftime_offset - option6HeaderBytes);
    appendNested(out, item, Dhcp6Const::iaaddropt_minlen, false, message);
}

void appendPrefix(std::string& out, const Item& item, const Message& message) {
    appendAddress6(out, item, Dhcp6Const::iapfxaddr_offset - option6HeaderBytes);
    out.push_back('/');
    Kcore::appendText(out, item.load<U8>(Dhcp6Const::iapfxlen_offset - option6HeaderBytes));
    appendTimes(out, item, Dhcp6Const::iapfxpreftime_offset - option6HeaderBytes);
    appendNested(out, item, Dhcp6Const::iapfxopt_minlen, false, message);
}

void appendInterfaceId(std::string& out, const Item& item) {
    const DhcpLib::InterfaceIdFields fields = DhcpLib::decodeInterfaceId(item.data);
    if (fields.intfName.empty()) return appendTextOrHex(out, item.data);
    appendTextOrHex(out, fields.intfName);
    if (!fields.vrfName.empty()) appendTextOrHex(out.append(" vrf "), fields.vrfName);
    if (fields.srcVtepIp.isUsable()) fields.srcVtepIp.appendText(out.append(" vtep "));
    if (!fields.srcVtepMac.isZero()) fields.srcVtepMac.appendText(out.append(" vtep-mac "));
}

void appendRemoteId(std::string& out, const Item& item, const Message& message) {
    Kcore::appendText(out.append("enterprise "), item.load<U32>());
    const DhcpLib::Dhcp6RemoteIdentifier fields =
        DhcpLib::dhcp6RemoteIdentifier(DhcpLib::dhcp6OptionFactory(message.arrival.pkt, static_cast<U16>(item.offset)));
    if (!fields.l2PortInfoValid()) {
        out.push_back(' ');
        return appendTextOrHex(out, item.data.substr(Dhcp6Const::entno_size));
    }
    out.push_back(' ');
    fields.duidllAddr.appendText(out);
    Kcore::appendText(out.append(" l3-interface "), fields.l3IntfId);
    Kcore::appendText(out.append(" interface "), fields.l2IntfId);
    Kcore::appendText(out.append(" vlan "), fields.vlanId);
}

/// Items of two bytes length and data, from `at` on.
void appendClasses(std::string& out, const Item& item, U32 at) {
    constexpr U32 lengthBytes = sizeof(U16);
    for (bool first = at == 0; at < item.data.size(); first = false) {
        const U16 length = item.load<U16>(at);
        if (!first) out.push_back(' ');
        if (at + lengthBytes + length > item.data.size()) return appendRawHex(out, item.data.substr(at));
        appendTextOrHex(out, item.data.substr(at + lengthBytes, length));
        at += lengthBytes + length;
    }
}

void appendEnterprise(std::string& out, const Item& item) {
    Kcore::appendText(out.append("enterprise "), item.load<U32>());
}

void appendVendorOptions(std::string& out, const Item& item) {
    appendEnterprise(out, item);
    forEachItem<DhcpLib::Option6Shape>(item.bytes(), sizeof(U32), [&](const Item& option) {
        out.push_back(' ');
        Kcore::appendText(out, option.code);
        out.push_back(' ');
        appendTextOrHex(out, option.data);
        return option.isWhole();
    });
}

void appendLinkLayer(std::string& out, const Item& item) {
    constexpr U32 typeBytes = Dhcp6Const::llAddrType_size;
    const bool mac = item.load<U16>() == DhcpLib::Constants::hardwareTypeEthernet &&
                     item.data.size() == typeBytes + sizeof(Kitnet::EthAddr);
    if (mac)
        item.load<Kitnet::EthAddr>(typeBytes).appendText(out);
    else
        appendRawHex(out, item.data);
}

void appendCentiseconds(std::string& out, U16 time) {
    Kcore::appendText(out, time / 100);
    out.append({'.', static_cast<char>('0' + time / 10 % 10), static_cast<char>('0' + time % 10), 's'});
}

void appendRelayInfo(std::string& out, const Message& message) {
    for (const Item& option : message.relayInfo) {
        if (out.back() != ' ') out.push_back(' ');
        const OptionInfo* const info = relayOptionInfo(option.code);
        appendOptionName(out, info, option.code);
        if (option.length == 0) continue;
        out.push_back(' ');
        appendValue(out, info, option, message);
    }
}

void appendDomainName(std::string& out, const Item& item, U32 first) { appendDomains(out, item.data.substr(first)); }

}  // namespace

void appendStatus(std::string& out, const Status6& status) {
    if (const std::string_view name = statusName(status.code); !name.empty())
        out.append(name);
    else
        Kcore::appendText(out, status.code);
    if (status.text.empty()) return;
    out.push_back(' ');
    appendQuotedText(out, status.text);
}

void appendFault(std::string& out, const Fault& fault) {
    if (!fault.kind.empty()) {
        out.append(fault.kind).push_back(' ');
        Kcore::appendText(out, fault.code);
        out.push_back(' ');
    }
    Kcore::appendText(out.append(fault.what).append(" at byte "), fault.offset);
}

void appendOptionName(std::string& out, const OptionInfo* info, U16 code) {
    if (info != nullptr)
        out.append(info->name);
    else
        Kcore::appendText(out.append("option "), code);
}

void appendValue(std::string& out, const OptionInfo* info, const Item& item, const Message& message) {
    const Layout layout = info != nullptr ? info->layout : Layout::textOrHex;
    if (!item.isWhole() || !fits(layout, item.length)) return appendRawHex(out, item.data);
    switch (layout) {
        case Layout::hex:
            return appendRawHex(out, item.data);
        case Layout::text:
            return appendQuotedText(out, item.data);
        case Layout::textOrHex:
            return appendTextOrHex(out, item.data);
        case Layout::empty:
            return;
        case Layout::flag:
        case Layout::number8:
        case Layout::codes8:
            return appendValues<U8>(out, item);
        case Layout::number16:
        case Layout::codes16:
            return appendValues<U16>(out, item);
        case Layout::number32:
            return appendValues<U32>(out, item);
        case Layout::seconds:
            return appendLifetime(out, item.load<U32>());
        case Layout::centiseconds:
            return appendCentiseconds(out, item.load<U16>());
        case Layout::address:
        case Layout::addresses:
        case Layout::addressPairs:
            return appendValues<Kitnet::IpAddr>(out, item);
        case Layout::address6:
        case Layout::addresses6:
            return appendValues<Kitnet::Ip6Addr>(out, item);
        case Layout::messageType:
            out.append(typeName4(item.load<U8>()));
            return;
        case Layout::messageType6:
            out.append(typeName6(item.load<U8>()));
            return;
        case Layout::clientId:
            return appendClientId(out, item);
        case Layout::fqdn:
            return appendFqdn4(out, item);
        case Layout::fqdn6:
            return appendDomainName(out, item, 1);
        case Layout::domains:
            return appendDomainName(out, item, 0);
        case Layout::relayInfo:
            return appendRelayInfo(out, message);
        case Layout::vss:
            return appendVss(out, item);
        case Layout::duid:
            return appendDuid(out, item.data);
        case Layout::association:
            return appendAssociation(out, item, message);
        case Layout::associationTa:
            appendRawHex(out, item.data.substr(0, sizeof(U32)));
            return appendNested(out, item, sizeof(U32), true, message);
        case Layout::leaseAddress:
            return appendLease(out, item, message);
        case Layout::leasePrefix:
            return appendPrefix(out, item, message);
        case Layout::status:
            return appendStatus(out, {item.load<U16>(), item.data.substr(sizeof(U16)), item.offset});
        case Layout::relayMessage:
            out.append(typeName6(item.load<U8>()));
            return;
        case Layout::interfaceId:
            return appendInterfaceId(out, item);
        case Layout::remoteId:
            return appendRemoteId(out, item, message);
        case Layout::userClass:
            return appendClasses(out, item, 0);
        case Layout::vendorClass:
            appendEnterprise(out, item);
            return appendClasses(out, item, sizeof(U32));
        case Layout::vendorOptions:
            return appendVendorOptions(out, item);
        case Layout::linkLayer:
            return appendLinkLayer(out, item);
    }
}

}  // namespace DhcpTool
