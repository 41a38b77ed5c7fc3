#include "RelayRewriteFuzz.h"

using namespace DhcpFuzz;

namespace {

// Built twice: with the vendor data in blocks, and as text with the feature toggle off.
#ifdef DHCPLIB_VENDOR_TEXT
constexpr bool vendorAsText = true;
[[maybe_unused]] const int toggleIsOff = setenv("DHCPLIB_TOGGLE_DIR", DHCPLIB_TEST_DATA "/toggles-off", 1);

Octets vendorData(const RelayRewrite& args) {
    if (vendorBlock(args).empty()) return {};
    const Tyk::String& name = args.vendorSpecificSubOptIntfName;
    const auto text = DhcpFuzz::bytesOf(name);
    return hex("'32473'") + Octets{static_cast<U8>(name.size())} + Octets(text.begin(), text.end());
}
#else
constexpr bool vendorAsText = false;
Octets vendorData(const RelayRewrite& args) { return vendorBlock(args); }
#endif

/// Expects that a whole option 82 of a request, the last option, is edited as a model does.
void requireModelled(const Octets& now, const std::vector<SubOption>& was, U32 at, const RelayRewrite& args) {
    const bool selects = !args.linkselectionId.isAny(), vss = !args.vpnId.empty() && !args.vssControlDisable;
    if (!selects && dataOf(was, 5) != nullptr) return;  // option 82 is cut
    const Octets vendor = vendorData(args);
    Octets expected;
    for (const auto& [code, data] : was) {
        if (code == 9 && !vendor.empty() && !holdsVendorData(data, vendorAsText))
            append(expected, 9, data + vendor);
        else if (!selects || (code != 5 && code != 11 && code != 151 && code != 152))
            append(expected, code, data);
        else if (code == 5)
            append(expected, 5, DhcpFuzz::bytesOf(args.linkselectionId));
        else if (code == 11 && !args.serverId.isAny())
            append(expected, 11, DhcpFuzz::bytesOf(args.serverId));
        else if (code == 151 && !args.vpnId.empty())  // one of the same size stays as it is
            append(expected, 151, data.size() == args.vpnId.size() ? std::span(data) : DhcpFuzz::bytesOf(args.vpnId));
        else if (code == 152 && vss)
            append(expected, 152, data);
    }
    const auto add = [&](U8 code, bool wanted, std::span<const U8> data) {
        if (wanted && dataOf(was, code) == nullptr) append(expected, code, data);
    };
    add(9, !vendor.empty(), vendor);
    add(5, selects, DhcpFuzz::bytesOf(args.linkselectionId));
    add(11, selects && !args.serverId.isAny(), DhcpFuzz::bytesOf(args.serverId));
    add(151, selects && !args.vpnId.empty(), DhcpFuzz::bytesOf(args.vpnId));
    add(152, selects && vss, {});
    require(slice(now, at + 2, at + 2 + now.at(at + 1)) == expected, "option 82 is edited as a model does");
}

void requireInsertion(const Outcome& outcome, const Octets& before, const Layout& was, const RelayRewrite& args) {
    const Octets& now = outcome.packet;
    const bool created = was.info == 0;
    if (outcome.forecast.isRewritable())
        requireWholeInfo(now, created ? was.end : was.info, args, false, created, vendorAsText);
    if (created) {
        const bool reachBack = !args.linkselectionId.isAny();
        const Octets info = createdInfo(args, vendorData(args), reachBack, reachBack);
        requireThereAndBack(outcome, before, was, args, Generation::preparePacket, info);
        requireSize(now, args.offset, was.end + 2 + static_cast<U32>(info.size()), was.hasMaxMsgSize ? 300 : 548);
        return;
    }
    require(slice(now, 0, was.info + 1) == slice(before, 0, was.info + 1), "bytes in front of option 82 are unchanged");
    const auto before82 = wholeInfo(before, was.info);
    const bool isLast = was.info + 2u + before.at(was.info + 1) == was.end;
    if (!before82.empty() && isLast && outcome.forecast.isRewritable()) requireModelled(now, before82, was.info, args);
    const U32 end = was.info + 2 + now.at(was.info + 1);
    require(now.at(end) == endCode, "option 82 is the last one");
    requireSize(now, args.offset, end, was.hasMaxMsgSize ? 300 : 548);
}

void requireRemoval(const Octets& now, const Octets& before, const Layout& was, U32 offset) {
    Octets expected = slice(before, 0, was.end + 1);
    if (was.info != 0)
        expected.erase(expected.begin() + was.info, expected.begin() + was.info + 2 + before[was.info + 1]);
    require(slice(now, 0, expected.size()) == expected, "only option 82 is removed");
    requireSize(now, offset, static_cast<U32>(expected.size()) - 1, 300);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    const Case input(data, size);
    const RelayRewrite& args = input.args;
    const Layout was(input.packet, args.offset, true);
    const Outcome outcome = rewrittenEverywhere(input.packet, args, Generation::preparePacket);
    require(outcome.assertion.empty() || outcome.assertion == "!vssControlOpt" ||
                outcome.assertion == "tempInfoOpt->length > oldSubOptLen",
            "no other assertion can be reached");
    if (!outcome.result) return 0;
    require(was.end != 0, "a message without end option is refused");
    const Layout is(outcome.packet, args.offset, true);
    require(is.end != 0, "an end option is found");
    if (args.op == BootpOption::bootpRequest && args.infoOpt) {
        requireInsertion(outcome, input.packet, was, args);
    } else if (args.op == BootpOption::bootpReply && args.infoOpt) {
        requireRemoval(outcome.packet, input.packet, was, args.offset);
    } else {
        require(slice(outcome.packet, 0, was.end + 1) == slice(input.packet, 0, was.end + 1),
                "the options are unchanged");
        const bool small = args.op != BootpOption::bootpRequest || was.hasMaxMsgSize;
        requireSize(outcome.packet, args.offset, was.end, small ? 300 : 548);
    }
    return 0;
}
