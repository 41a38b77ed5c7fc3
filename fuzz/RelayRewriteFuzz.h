#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Bytes.h"
#include "DhcpLib/OptionParser.h"
#include "Kcore/Assert.h"
#include "Recorders.h"
#include "Steps.h"

/// Properties that hold for every rewrite of every packet, in both generations and both directions.
namespace DhcpFuzz {

using DhcpLib::BootpOption;
using DhcpLib::RelayRewrite;
using DhcpLib::RelayRewriteForecast;
using DhcpTest::hex;
using DhcpTest::Octets;
using DhcpTest::PktPtr;
using DhcpTest::operator+;
using Generation = DhcpLib::RelayGeneration;
using Verdict = DhcpLib::RelayRewriteVerdict;
using Kcore::U32;
using Kcore::U8;

inline constexpr U32 optionsAt = 240;
inline constexpr U8 endCode = 255, infoCode = 82;

inline void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

inline Octets slice(const Octets& bytes, std::size_t from, std::size_t to) {
    return {bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.begin() + static_cast<std::ptrdiff_t>(to)};
}

/// A packet and the arguments of its rewrite, made from the first bytes of a fuzz input.
struct Case {
    Case(const U8* data, std::size_t size) {
        DhcpTest::Fuzz::Steps input(data, size);
        // Up to 254 bytes of the input, or 256 made-up bytes for a length byte of 255.
        const auto text = [&](bool present) -> Tyk::String {
            const U8 n = present ? input.u8() : U8{0};
            if (n == 255) return std::string(256, 'x');
            const auto bytes = input.take(n);
            return std::string(bytes.begin(), bytes.end());
        };
        const U8 first = input.u8(), second = input.u8();
        args.op = BootpOption{first % 4u};
        args.infoOpt = (first & 0x04) == 0;
        args.vssControlDisable = (first & 0x08) != 0;
        args.circuitId = text((first & 0x10) != 0);
        args.remoteId = text((first & 0x20) != 0);
        args.vpnId = text((first & 0x40) != 0);
        args.vendorSpecificSubOptIntfName = text((first & 0x80) != 0);
        if ((second & 0x01) != 0) args.serverId = input.address<Kitnet::IpAddr>();
        if ((second & 0x02) != 0) args.linkselectionId = input.address<Kitnet::IpAddr>();
        if ((second & 0x0c) == 0x04) args.vendorSpecificSubOptSrcVtepIp = input.address<Kitnet::IpAddr>();
        if ((second & 0x0c) == 0x08) args.vendorSpecificSubOptSrcVtepIp = input.address<Kitnet::Ip6Addr>();
        args.offset = (second & 0x10) != 0 ? input.u8() : 0;
        // Most packets get a valid header and cookie, so that the rewrite reaches their options.
        if ((second & 0x60) != 0) packet = Octets(args.offset, DhcpTest::scratch) + DhcpTest::message(Octets{});
        const auto rest = input.take(size);
        packet.insert(packet.end(), rest.begin(), rest.end());
    }

    RelayRewrite args;
    Octets packet;
};

/// Positions in a message, found by a plain walk to the first end option.
struct Layout {
    U32 info = 0;  ///< the last option 82, or the first one; 0 if there is none
    U32 end = 0;   ///< 0 if there is no end option or no cookie
    bool hasMaxMsgSize = false;

    Layout(const Octets& bytes, U32 offset, bool lastInfo) {
        const Octets cookie = hex("63 82 53 63");
        U32 at = offset + optionsAt;
        if (bytes.size() < at || slice(bytes, at - 4, at) != cookie) return;
        for (; at < bytes.size() && bytes[at] != endCode;) {
            if (bytes[at] == infoCode && (lastInfo || info == 0)) info = at;
            hasMaxMsgSize |= bytes[at] == 57;
            if (bytes[at] == 0)
                ++at;
            else
                at += 2u + (at + 1 < bytes.size() ? bytes[at + 1] : 0u);
        }
        if (at < bytes.size()) end = at;
    }
};

/// Result of one rewrite.
struct Outcome {
    bool result = false;
    std::string assertion;  ///< text of the assertion that failed, if the handler threw
    Octets packet;
    RelayRewriteForecast forecast;
};

inline std::string& failedAssertion() {
    static std::string text;
    return text;
}

/// Calls the function of the generation itself.
inline bool prepare(const PktPtr& pkt, const RelayRewrite& a, Generation generation) {
    const auto function = generation == Generation::preparePacket ? DhcpLib::preparePacket : DhcpLib::preparePacketNew;
    return function(pkt, a.op, a.infoOpt, a.circuitId, a.remoteId, a.vpnId, a.serverId, a.linkselectionId, a.offset,
                    a.vssControlDisable, a.vendorSpecificSubOptIntfName, a.vendorSpecificSubOptSrcVtepIp);
}

inline Outcome rewritten(const PktPtr& pkt, const RelayRewrite& args, Generation generation,
                         bool (*rewrite)(const PktPtr&, const RelayRewrite&, Generation) = DhcpLib::relayRewrite) {
    static const auto throwing = [](const Kcore::Assertion& a) {
        failedAssertion() = a.expression;
        throw Kcore::AssertionError(a);
    };
    Kcore::assertionHandlerIs(throwing);
    Outcome outcome;
    const Octets before = DhcpTest::bytesOf(*pkt);
    outcome.forecast = relayRewriteCheck(pkt, args, generation);
    require(DhcpTest::bytesOf(*pkt) == before, "relayRewriteCheck changes no byte");
    try {
        outcome.result = rewrite(pkt, args, generation);
    } catch (const Kcore::AssertionError& error) {
        outcome.assertion = error.expression();
    }
    outcome.packet = DhcpTest::bytesOf(*pkt);
    return outcome;
}

inline void requireForecast(const Outcome& outcome, const Octets& before, U32 offset) {
    const RelayRewriteForecast& forecast = outcome.forecast;
    require((forecast.isRewritable() || forecast.verdict == Verdict::infoOptionWouldBreak) == outcome.result,
            "the forecast result is right");
    require((forecast.verdict == Verdict::assertion) == !outcome.assertion.empty() &&
                forecast.assertion == outcome.assertion,
            "the forecast assertion is right");
    if (!outcome.result) require(outcome.packet == before, "a refused packet is unchanged");
    const std::size_t bytes = outcome.packet.size() > offset ? outcome.packet.size() - offset : 0;
    require(forecast.messageBytes == bytes, "the forecast size is right");
}

/// Expects `smallest` bytes, or more if nothing follows the end option, and only zeros after the end option.
inline void requireSize(const Octets& packet, U32 offset, U32 end, U32 smallest) {
    const std::size_t bytes = packet.size() - offset;
    require(bytes == smallest || (bytes > smallest && end + 1 == packet.size()), "the size rule holds");
    require(std::all_of(packet.begin() + end + 1, packet.end(), [](U8 byte) { return byte == 0; }),
            "zeros follow the end option");
}

/// Rewrites the packet in each kind of storage, with different bytes after it, and through both forms of the function,
/// and expects the same result each time. The last time the rewrite is traced. Checks the properties that hold for
/// every rewrite.
inline Outcome rewrittenEverywhere(const Octets& packet, const RelayRewrite& args, Generation generation) {
    const std::vector<PktPtr> everywhere = DhcpTest::packets(packet);
    Outcome outcome = rewritten(everywhere[0], args, generation);
    for (const PktPtr& pkt : std::span(everywhere).subspan(1)) {
        std::optional<DhcpTest::TraceRecorder> trace;
        if (&pkt == &everywhere.back()) trace.emplace(9);
        const Outcome other = rewritten(pkt, args, generation, prepare);
        require(other.result == outcome.result && other.assertion == outcome.assertion &&
                    other.packet == outcome.packet && other.forecast.verdict == outcome.forecast.verdict &&
                    other.forecast.messageBytes == outcome.forecast.messageBytes,
                "neither storage, bytes behind the packet, the form of the call nor tracing change the result");
    }
    requireForecast(outcome, packet, args.offset);
    return outcome;
}

inline void append(Octets& to, U8 code, std::span<const U8> data) {
    to.push_back(code);
    to.push_back(static_cast<U8>(data.size()));
    to.insert(to.end(), data.begin(), data.end());
}
inline std::span<const U8> bytesOf(const Tyk::String& text) {
    return {reinterpret_cast<const U8*>(text.data()), text.size()};
}
template <class Address>
std::span<const U8> bytesOf(const Address& address) {
    return {address.bytes(), sizeof address};
}

/// Whether the data of sub-option 9 holds the system's block, whole, or as text its enterprise number.
inline bool holdsVendorData(const Octets& data, bool asText) {
    const Octets number = hex(asText ? "'32473'" : "00 00 7E D9");
    if (asText) return std::search(data.begin(), data.end(), number.begin(), number.end()) != data.end();
    for (std::size_t at = 0; at + 5 <= data.size(); at += 5u + data[at + 4])
        if (slice(data, at, at + 4) == number) return at + 5 + data[at + 4] <= data.size();
    return false;
}

/// The sub-options that a rewrite has to leave in option 82. `created`: the message had none.
inline std::map<U8, Octets> subOptionsAskedFor(const RelayRewrite& args, bool rebuilds, bool created) {
    std::map<U8, Octets> asked;
    const auto ask = [&](bool wanted, U8 code, std::span<const U8> data) {
        if (wanted) asked.emplace(code, Octets(data.begin(), data.end()));
    };
    const bool ids = rebuilds || created, selects = !args.linkselectionId.isAny(), reaches = rebuilds || selects;
    ask(ids && !args.circuitId.empty(), 1, bytesOf(args.circuitId));
    ask(ids && !args.remoteId.empty(), 2, bytesOf(args.remoteId));
    ask(!args.vendorSpecificSubOptIntfName.empty() || args.vendorSpecificSubOptSrcVtepIp.isUsable(), 9, {});
    ask(selects, 5, bytesOf(args.linkselectionId));
    ask(reaches && !args.serverId.isAny(), 11, bytesOf(args.serverId));
    ask(reaches && !args.vpnId.empty(), 151, bytesOf(args.vpnId));
    ask(reaches && !args.vpnId.empty() && !args.vssControlDisable, 152, {});
    return asked;
}

/// Expects that option 82 at `at` consists of whole sub-options, with those that were asked for among them.
inline void requireWholeInfo(const Octets& packet, U32 at, const RelayRewrite& args, bool rebuilds, bool created,
                             bool asText = false) {
    std::map<U8, Octets> missing = subOptionsAskedFor(args, rebuilds, created);
    U32 subOption = at + 2;
    const U32 end = subOption + packet.at(at + 1);
    while (subOption < end) {
        const U8 code = packet.at(subOption);
        const U32 next = subOption + 2u + packet.at(subOption + 1);
        require(next <= end, "option 82 ends with a sub-option");
        const Octets data = slice(packet, subOption + 2, next);
        subOption = next;
        if (!missing.contains(code)) continue;
        const bool keepsOwn = code == 152 || (!created && code <= 2);  // the packet's ids win
        const bool staysAsSame = code == 151 && !rebuilds && data.size() == missing[code].size();
        const bool found = code == 9 ? holdsVendorData(data, asText) : data == missing[code];
        if (keepsOwn || staysAsSame || found) missing.erase(code);
    }
    require(missing.empty(), "option 82 holds what was asked for");
}

using SubOption = std::pair<U8, Octets>;

inline const Octets* dataOf(const std::vector<SubOption>& subOptions, U8 code) {
    for (const auto& [itsCode, data] : subOptions)
        if (itsCode == code) return &data;
    return nullptr;
}

/// The sub-options of the option 82 at `at`, in order. Empty if there is no option, if the last one is cut, or if a
/// code occurs twice: then the result of a rewrite is not modelled.
inline std::vector<SubOption> wholeInfo(const Octets& packet, U32 at) {
    if (at == 0 || at + 2 > packet.size() || at + 2u + packet[at + 1] > packet.size()) return {};
    std::vector<SubOption> found;
    const U32 end = at + 2 + packet[at + 1];
    for (U32 next, subOption = at + 2; subOption < end; subOption = next) {
        next = subOption + 1 < end ? subOption + 2 + packet[subOption + 1] : end + 1;
        if (next > end || dataOf(found, packet[subOption]) != nullptr) return {};
        found.emplace_back(packet[subOption], slice(packet, subOption + 2, next));
    }
    return found;
}

/// The data of an option 82 that is created from these arguments. `vendor` is the data of sub-option 9, which is left
/// out if it is empty.
inline Octets createdInfo(const RelayRewrite& args, const Octets& vendor, bool server, bool vpn) {
    Octets info;
    if (!args.circuitId.empty()) append(info, 1, bytesOf(args.circuitId));
    if (!args.remoteId.empty()) append(info, 2, bytesOf(args.remoteId));
    if (!vendor.empty()) append(info, 9, vendor);
    if (!args.linkselectionId.isAny()) append(info, 5, bytesOf(args.linkselectionId));
    if (server && !args.serverId.isAny()) append(info, 11, bytesOf(args.serverId));
    if (vpn && !args.vpnId.empty()) append(info, 151, bytesOf(args.vpnId));
    if (vpn && !args.vpnId.empty() && !args.vssControlDisable) append(info, 152, {});
    return info;
}

/// The own vendor block: enterprise number, length, interface name, tunnel address. Empty if there is neither name nor
/// address.
inline Octets vendorBlock(const RelayRewrite& args) {
    Octets items;
    if (!args.vendorSpecificSubOptIntfName.empty()) append(items, 1, bytesOf(args.vendorSpecificSubOptIntfName));
    const Kitnet::IpGenAddr& vtep = args.vendorSpecificSubOptSrcVtepIp;
    if (vtep.isUsable())
        vtep.isV4() ? append(items, 2, bytesOf(vtep.v4Addr())) : append(items, 2, bytesOf(vtep.v6Addr()));
    if (items.empty()) return {};
    return hex("00 00 7E D9") + Octets{static_cast<U8>(items.size())} + items;
}

/// Expects that adding option 82 to a packet without one adds just that, and that removing it restores the other
/// options.
inline void requireThereAndBack(const Outcome& there, const Octets& before, const Layout& layout,
                                const RelayRewrite& args, Generation generation, const Octets& info) {
    Octets expected = slice(before, 0, layout.end);
    append(expected, infoCode, info);
    expected.push_back(endCode);
    require(there.packet.size() >= expected.size() && slice(there.packet, 0, expected.size()) == expected,
            "option 82 is where the end option was");
    if (info.empty()) return;
    RelayRewrite away = args;
    away.op = BootpOption::bootpReply;
    const Outcome back = rewrittenEverywhere(there.packet, away, generation);
    require(back.result && slice(back.packet, 0, layout.end + 1) == slice(before, 0, layout.end + 1),
            "removing option 82 restores the other options");
    requireSize(back.packet, args.offset, layout.end, 300);
}

}  // namespace DhcpFuzz
