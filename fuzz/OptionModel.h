#pragma once

#include <map>
#include <set>
#include <string>
#include <tuple>

#include "Bytes.h"
#include "DhcpLib/DhcpHdr.h"
#include "DhcpLib/OptionParser.h"
#include "RelayInfoReader.h"

/// Independent models of the readers of the options area. Each walks the bytes on its own, step by step, while the
/// library walks once for all readers. Bytes past the end read as 0.
namespace DhcpTest::Model {

using DhcpTest::readInfo;
using DhcpTest::RelayInfo;
using Kcore::Duration;
using Kcore::String;
using Kitnet::IpAddr;

inline U8 at(const Octets& bytes, std::size_t pos) { return pos < bytes.size() ? bytes[pos] : U8{0}; }
inline U32 number(const Octets& bytes, std::size_t pos) {
    return U32{at(bytes, pos)} << 24 | U32{at(bytes, pos + 1)} << 16 | U32{at(bytes, pos + 2)} << 8 |
           at(bytes, pos + 3);
}
inline IpAddr address(const Octets& bytes, std::size_t pos) {
    const U8 four[] = {at(bytes, pos), at(bytes, pos + 1), at(bytes, pos + 2), at(bytes, pos + 3)};
    return IpAddr::fromBytes(four);
}
inline String text(const Octets& bytes, std::size_t pos, std::size_t n) {
    std::string out;
    for (std::size_t i = pos; i < std::min(pos + n, bytes.size()); ++i) out.push_back(static_cast<char>(bytes[i]));
    return out;
}

/// Result of a checked walk: empty or the reason of its failure, and the last position of each code.
struct Area {
    std::string failure;
    std::map<U8, U32> last;
};

inline Area walk(const Octets& bytes, U32 offset) {
    const auto size = static_cast<U32>(bytes.size());
    if (static_cast<std::int32_t>(size - offset - 236) < 1) return {"DHCP packet has no space for option fields", {}};
    if (number(bytes, offset + 236) != 0x63825363) return {"DHCP packet missing magic cookie", {}};
    Area area;
    for (U32 p = offset + 240; p < size;) {
        area.last[bytes[p]] = p;
        if (bytes[p] == 255) return area;
        p += bytes[p] == 0 ? 1 : at(bytes, p + 1) + 2u;
    }
    area.failure = " DHCP packet missing end option";
    return area;
}

inline std::pair<String, int> messageType(const Octets& bytes, U32 offset) {
    const Area area = walk(bytes, offset);
    if (area.failure == "DHCP packet missing magic cookie") return {"BOOTP", -1};
    if (!area.failure.empty()) return {"INVALID DHCP", -1};
    static const char* const names[] = {
        "",        "DISCOVER", "OFFER",      "REQUEST",    "DECLINE",         "ACK",          "NAK",
        "RELEASE", "INFORM",   "FORCERENEW", "LEASEQUERY", "LEASEUNASSIGNED", "LEASEUNKNOWN", "LEASEACTIVE"};
    const auto option = area.last.find(53);
    const U8 type = option == area.last.end() ? U8{0} : at(bytes, option->second + 2);
    if (type < 1 || type > 13) return {"", -1};
    return {std::string("DHCP") + names[type], type};
}

/// Return value, lease time, last transaction time, addresses, server identifier, and the three flags. Outputs that are
/// not written keep the values of `LeaseReply()`.
struct LeaseReply {
    bool ok = false;
    Duration leaseTime{-1}, lastTransactionTime{-1};
    std::set<IpAddr> ips;
    IpAddr serverId = IpAddr::fromText("9.9.9.9");
    bool leaseTimePresent = false, lastTransactionTimePresent = false, serverIdPresent = false;
    friend bool operator==(const LeaseReply&, const LeaseReply&) = default;
};

/// `r` is the result before the call.
inline LeaseReply readLeaseQuery(const PktPtr& pkt, U32 offset, LeaseReply r = {}) {
    r.ok = DhcpLib::parseLeaseQueryOpts(pkt, r.leaseTime, r.lastTransactionTime, r.ips, r.serverId, r.leaseTimePresent,
                                        r.lastTransactionTimePresent, r.serverIdPresent, offset);
    return r;
}

inline LeaseReply leaseQuery(const Octets& bytes, U32 offset) {
    const Area area = walk(bytes, offset);
    LeaseReply r;
    if (!area.failure.empty()) return r;
    r.ok = true;
    const auto time = [&](U8 code, bool& present) {
        const auto option = area.last.find(code);
        present = option != area.last.end();
        const bool good = present && at(bytes, option->second + 1) == 4;
        return Duration(good ? number(bytes, option->second + 2) : 0);
    };
    r.leaseTime = time(51, r.leaseTimePresent);
    r.lastTransactionTime = time(91, r.lastTransactionTimePresent);
    if (const auto option = area.last.find(92); option != area.last.end()) {
        const U8 len = at(bytes, option->second + 1);
        for (U32 i = 0; len % 4 == 0 && i < len; i += 4) r.ips.insert(address(bytes, option->second + 2 + i));
    }
    if (const auto option = area.last.find(54); option != area.last.end()) {
        r.serverIdPresent = true;
        if (at(bytes, option->second + 1) == 4) r.serverId = address(bytes, option->second + 2);
    }
    return r;
}

/// Return value, host name, parameter request list and vendor class; the texts were "-" before the call.
using Profile = std::tuple<bool, String, String, String>;

inline Profile readProfile(const PktPtr& pkt, U32 offset) {
    Profile p{false, "-", "-", "-"};
    std::get<0>(p) = DhcpLib::parseDot1xProfilingOpts(pkt, std::get<1>(p), std::get<2>(p), std::get<3>(p), offset);
    return p;
}

inline Profile profile(const Octets& bytes, U32 offset) {
    const Area area = walk(bytes, offset);
    if (!area.failure.empty()) return {false, "-", "-", "-"};
    const auto data = [&](U8 code) {
        const auto option = area.last.find(code);
        return option == area.last.end() ? String() : text(bytes, option->second + 2, at(bytes, option->second + 1));
    };
    std::string list;
    for (const char code : data(55))
        list.append(list.empty() ? "-" : ",").append(std::to_string(static_cast<U8>(code)));
    return {true, data(12), list, data(60)};
}

/// Codes and positions of the options in a keyed collection.
using Places = std::map<U8, U16>;

template <class Collection>
Places placesIn(const Collection& collection) {
    Places places;
    for (const auto& [type, view] : collection.option()) places[view->opt()] = view->offset();
    return places;
}

inline Places optionsOf(const Octets& bytes, U16 offset) {
    Places places;
    const std::size_t end = std::min<std::size_t>(bytes.size(), 65536);
    for (U16 cursor = 0; offset + std::size_t{cursor} < end;) {
        const auto pos = static_cast<U16>(offset + cursor);
        const U8 code = bytes[pos];
        const auto next = static_cast<U16>(cursor + (code == 0 ? 1 : at(bytes, static_cast<U16>(pos + 1)) + 2));
        if (next > bytes.size()) break;
        if (code != 0) places.emplace(code, pos);
        if (next <= cursor) break;
        cursor = next;
    }
    return places;
}

/// Handles a sub-option of option 82.
inline void takeSubOption(const Octets& bytes, U8 code, U8 len, U32 data, RelayInfo& r) {
    if (code == 1) r.circuitId = text(bytes, data, len);
    if (code == 2) r.remoteId = text(bytes, data, len);
    if (code == 151) r.vpnId = text(bytes, data, len);
    if (code == 152) r.vssControl = true;
    if (code == 11) r.serverIdOverride = address(bytes, data);
    if (code == 5) r.linkSelection = address(bytes, data);
}
/// Handles a data item of the own vendor block.
inline void takeVendorItem(const Octets& bytes, U8 code, U8 len, U32 data, RelayInfo& r) {
    if (code == 1) r.intfName = text(bytes, data, len);
    if (code == 2 && len == 4) r.srcVtepIp = address(bytes, data);
    if (code != 2 || len != 16) return;
    U8 sixteen[16];
    for (U32 i = 0; i < 16; ++i) sixteen[i] = at(bytes, data + i);
    r.srcVtepIp = Kitnet::Ip6Addr::fromBytes(sixteen);
}

/// Model of parseInfoOptNew that uses the public views.
inline RelayInfo infoNew(const PktPtr& pkt, U32 offset) {
    RelayInfo r;
    const Octets bytes = bytesOf(*pkt);
    DhcpLib::DhcpMsgOptions::Ptr options;
    DhcpLib::DhcpMsgOption::Ptr end, info;
    DhcpLib::DhcpInformationSubOptions::Ptr subOptions;
    r.ok =
        DhcpLib::parseDhcpOptions(pkt, offset, options, end) && DhcpLib::parseInfoSubOptions(options, info, subOptions);
    if (!r.ok || !subOptions) return r;
    for (const auto& [type, view] : subOptions->option())
        takeSubOption(bytes, view->opt(), view->len(), static_cast<U16>(view->offset() + 2), r);
    using enum DhcpLib::DhcpInformationSubOptionType;
    if (!DhcpLib::infoSubOptPresent(subOptions, vendorSpecificSubOption)) return r;
    const auto block =
        DhcpLib::dhcpVendorSpecificSubOptFactory(subOptions->option(vendorSpecificSubOption))->quorvaSpecificOpt();
    if (!block) return r;
    for (const auto& [type, view] : block->option())
        takeVendorItem(bytes, view->opt(), view->len(), static_cast<U16>(view->offset() + 2), r);
    return r;
}

/// Finds the own block in the sub-option 9 at `pos`, and the last item of each code in it.
inline void takeVendorBlock(const Octets& bytes, U32 pos, RelayInfo& r) {
    const U32 total = at(bytes, pos + 1);
    U32 block = pos + 2, passed = 0;
    while (block + 5 <= bytes.size() && number(bytes, block) != DhcpLib::Constants::quorvaEntNum) {
        const U32 step = bytes[block + 4] + 5u;
        block += step;
        passed += step;
        if (passed >= total) return;
    }
    if (block + 5 > bytes.size()) return;
    std::map<U8, U32> items;
    U32 walked = 0;
    for (U32 p = block + 5; p < bytes.size();) {
        items[bytes[p]] = p;
        walked += at(bytes, p + 1) + 2u;
        p += bytes[p] == 0 ? 1 : at(bytes, p + 1) + 2u;
        if (walked >= bytes[block + 4]) break;
    }
    for (const auto& [code, place] : items) takeVendorItem(bytes, code, at(bytes, place + 1), place + 2, r);
}

/// Model of parseInfoOpt: reads all items from the last option 82's data up to the end option.
inline RelayInfo info(const Octets& bytes, U32 offset) {
    RelayInfo r;
    const Area area = walk(bytes, offset);
    r.ok = area.failure.empty();
    const auto option = area.last.find(82);
    if (!r.ok || option == area.last.end() || at(bytes, option->second + 1) == 0) return r;
    for (U32 p = option->second + 2; p < area.last.at(255); p += at(bytes, p + 1) + 2u) {
        if (bytes[p] == 9)
            takeVendorBlock(bytes, p, r);
        else
            takeSubOption(bytes, bytes[p], at(bytes, p + 1), p + 2, r);
    }
    return r;
}

}  // namespace DhcpTest::Model
