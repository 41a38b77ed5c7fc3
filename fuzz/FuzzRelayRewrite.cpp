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
