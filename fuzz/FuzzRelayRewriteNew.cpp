#include "RelayRewriteFuzz.h"

using namespace DhcpFuzz;

namespace {

/// Position of the end option after option 82 of `was` was replaced by one of `infoBytes` bytes, header included.
U32 endBehind(const Layout& was, const Octets& before, U32 infoBytes) {
    const U32 oldBytes = was.info != 0 ? 2u + before[was.info + 1] : 0;
    return was.end - oldBytes + infoBytes;
}

/// Expects that option 82 at `at` consists of whole sub-options with these codes, in this order.
void requireSubOptions(const Octets& packet, U32 at, std::string_view codes) {
    const U32 end = at + 2 + packet.at(at + 1);
    U32 subOption = at + 2;
    while (subOption < end) {
        const std::size_t place = codes.find(static_cast<char>(packet.at(subOption)));
        require(place != codes.npos, "only these sub-options, in this order");
        codes.remove_prefix(place + 1);
        subOption += 2u + packet.at(subOption + 1);
    }
    require(subOption == end, "option 82 ends with a sub-option");
}

/// Expects that everything but option 82 is unchanged.
U32 requireRest(const Octets& now, const Octets& before, const Layout& was, U32 infoBytes) {
    const U32 infoAt = was.info != 0 ? was.info : was.end;
    const U32 end = endBehind(was, before, infoBytes);
    const U32 restAt = infoAt + infoBytes, restWasAt = was.end - (end - restAt);
    require(slice(now, 0, infoAt) == slice(before, 0, infoAt), "bytes in front of option 82 are unchanged");
    require(slice(now, restAt, end + 1) == slice(before, restWasAt, was.end + 1),
            "bytes behind option 82 are moved unchanged");
    return end;
}

/// Expects that a whole option 82 of a request is rebuilt as a model does.
void requireModelled(const Octets& now, const std::vector<SubOption>& was, U32 at, const RelayRewrite& args) {
    Octets expected;
    const auto keepOr = [&](U8 code, std::span<const U8> otherwise) {
        const Octets* const existing = dataOf(was, code);
        if (existing != nullptr || !otherwise.empty())
            append(expected, code, existing != nullptr ? std::span<const U8>(*existing) : otherwise);
    };
    keepOr(1, DhcpFuzz::bytesOf(args.circuitId));
    keepOr(2, DhcpFuzz::bytesOf(args.remoteId));
    const Octets own = vendorBlock(args);
    const Octets* const vendor = dataOf(was, 9);
    if (vendor != nullptr && !own.empty() && !holdsVendorData(*vendor, false))
        append(expected, 9, *vendor + own);
    else
        keepOr(9, own);
    if (!args.linkselectionId.isAny()) append(expected, 5, DhcpFuzz::bytesOf(args.linkselectionId));
    if (!args.serverId.isAny()) append(expected, 11, DhcpFuzz::bytesOf(args.serverId));
    if (!args.vpnId.empty()) append(expected, 151, DhcpFuzz::bytesOf(args.vpnId));
    if (!args.vpnId.empty() && !args.vssControlDisable) append(expected, 152, {});
    require(slice(now, at + 2, at + 2 + now.at(at + 1)) == expected, "option 82 is rebuilt as a model does");
}

U32 requireInsertion(const Outcome& outcome, const Octets& before, const Layout& was, const RelayRewrite& args) {
    const Octets& now = outcome.packet;
    if (was.info == 0)
        requireThereAndBack(outcome, before, was, args, Generation::preparePacketNew,
                            createdInfo(args, vendorBlock(args), true, true));
    const U32 infoAt = was.info != 0 ? was.info : was.end;
    require(now.at(infoAt) == infoCode, "option 82 is where it is expected");
    requireSubOptions(now, infoAt, "\1\2\11\5\13\227\230");
    if (outcome.forecast.isRewritable()) requireWholeInfo(now, infoAt, args, true, was.info == 0);
    if (const auto before82 = wholeInfo(before, was.info); !before82.empty() && outcome.forecast.isRewritable())
        requireModelled(now, before82, infoAt, args);
    return requireRest(now, before, was, 2u + now.at(infoAt + 1));
}

U32 requireRemoval(const Octets& now, const Octets& before, const Layout& was, bool infoOpt) {
    if (was.info == 0) return requireRest(now, before, was, 0);
    // If option 82 was dropped, the next option is in its place. If that is another option 82, its size says nothing.
    for (const U32 infoBytes : {0u, now.at(was.info) == infoCode ? 2u + now.at(was.info + 1) : 0u}) {
        const U32 end = endBehind(was, before, infoBytes);
        const U32 restAt = was.info + infoBytes, oldRestAt = was.info + 2 + before[was.info + 1];
        if (end >= now.size() || slice(now, restAt, end + 1) != slice(before, oldRestAt, was.end + 1)) continue;
        if (infoBytes != 0) requireSubOptions(now, was.info, infoOpt ? "\11" : "\1\2\11");
        return requireRest(now, before, was, infoBytes);
    }
    require(false, "bytes behind option 82 are moved unchanged");
    return 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    const Case input(data, size);
    const RelayRewrite& args = input.args;
    const Layout was(input.packet, args.offset, false);
    const Outcome outcome = rewrittenEverywhere(input.packet, args, Generation::preparePacketNew);
    require(
        outcome.assertion.empty() || outcome.assertion == "!infoSubOptPresent( infoSubOpts, DhcpLib::vssControl() )",
        "no other assertion can be reached");
    if (!outcome.result) return 0;
    require(was.end != 0, "a message without end option is refused");
    require(Layout(outcome.packet, args.offset, false).end != 0, "an end option is found");
    U32 end = was.end;
    const bool request = args.op == BootpOption::bootpRequest;
    if (request && args.infoOpt)
        end = requireInsertion(outcome, input.packet, was, args);
    else if (args.op == BootpOption::bootpReply)
        end = requireRemoval(outcome.packet, input.packet, was, args.infoOpt);
    else
        require(slice(outcome.packet, 0, end + 1) == slice(input.packet, 0, end + 1), "the options are unchanged");
    // This generation finds option 57 after the end option, too.
    const DhcpLib::DhcpMsgOptions options(DhcpTest::packet(input.packet),
                                          static_cast<Kcore::U16>(args.offset + optionsAt));
    const bool small = !request || options.option().contains(DhcpLib::DhcpOptionType::maxMsgSize);
    requireSize(outcome.packet, args.offset, end, small ? 300 : 548);
    return 0;
}
