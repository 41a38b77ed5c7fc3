#include "DhcpLib/OptionParser/RelayRewrite.h"

#include "DhcpLib/DhcpHdr/VendorBlock.h"
#include "DhcpLib/OptionParser/internal/InfoInsertion.h"
#include "DhcpLib/OptionParser/internal/SubOptionWalk.h"
#include "DhcpLib/internal/Trace.h"
#include "Kcore/Assert.h"

namespace DhcpLib {

namespace {

constexpr std::string_view caller = "preparePacket";
constexpr char signature[] =
    "bool DhcpLib::preparePacket(const Ptr&, DhcpLib::BootpOption, bool, Tyk::String, Tyk::String, Tyk::String, "
    "Kitnet::IpAddr, Kitnet::IpAddr, U32, bool, Tyk::String, Kitnet::IpGenAddr)";

[[noreturn]] void fail(const char* assertion) { Kcore::assertionFailed(assertion, signature, "DhcpLib/OptionParser"); }

/// What the packet says before anything is changed.
struct MessageScan {
    AreaState state;
    RawOption info;
    RawOption end;
    bool hasMaxMsgSize = false;
};

MessageScan scanMessage(Wire::ByteView bytes, U32 offset) {
    MessageScan scan{};
    scan.state = walkOptionsArea(bytes, offset, [&](const auto& head) {
        switch (static_cast<DhcpOptionType>(head.code)) {
            case DhcpOptionType::infoOpt:
                scan.info = RawOption(bytes, head.at);
                break;
            case DhcpOptionType::maxMsgSize:
                scan.hasMaxMsgSize = true;
                break;
            case DhcpOptionType::endOpt:
                scan.end = RawOption(bytes, head.at);
                break;
            default:
                break;
        }
    });
    return scan;
}

/// Makes room for the insertion, once; everything after it works on positions.
void growForInsertion(Kitnet::Pkt& pkt, const InfoInsertion& plan, U32 endAt) {
    const S32 padding = currentPadding(pkt, endAt, signature);
    Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "{}added opt len {} currentPadding{}", caller, plan.needed,
                   padding);
    const S32 written = static_cast<S32>(plan.infoAt + SubOptionShape::headerBytes + 1 - pkt.bytes()) + plan.widest;
    if (const S32 missing = std::max(plan.needed - padding, written); missing > 0)
        growTail(pkt, static_cast<U32>(missing));
}

/// Takes option 82 out and moves the options behind it down; the end option's place follows.
bool removeInfoOption(Kitnet::Pkt& pkt, const RawOption& info, U32& endAt) {
    const U32 size = SubOptionShape::headerBytes + info.len();
    Wire::move(pkt, info.at(), info.at() + size, endAt + 1 - (info.at() + size));
    endAt -= size;
    const bool landed = Wire::load<U8>(pkt, endAt) == static_cast<U8>(DhcpOptionType::endOpt);
    if (landed)
        Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "{} Deleted Option 82 information", caller);
    else
        Tyk::DualTrace(traceHandle(), TraceLevel::failure, {}, "{}Illegal Info Option - wrong length", caller);
    return landed;
}

bool rewrite(Kitnet::Pkt& pkt, const RewriteArgs& args) {
    traceRewriteEntry(caller, args);
    const Wire::ByteView bytes(pkt);
    const MessageScan scan = scanMessage(bytes, args.offset);
    traceAreaFailure(scan.state);
    if (scan.state != AreaState::wellFormed) return false;
    if (scan.info && scan.info.len() == 0) {
        Tyk::DualTrace(traceHandle(), TraceLevel::failure, {}, "{}{}", caller, emptyInfoText);
        return false;
    }
    bool result = true;
    U32 endAt = scan.end.at();
    if (scan.info && !args.isInsertion()) traceOwnVendorData(bytes, scan.info, endAt);
    if (args.isInsertion()) {
        const InfoInsertion plan(bytes, args, scan.info, endAt);
        if (plan.stop.refusal != RelayRewriteVerdict::fine) return traceRefusal(caller, plan.stop.refusal);
        if (plan.stop.assertion != nullptr) fail(plan.stop.assertion);
        growForInsertion(pkt, plan, endAt);
        if (!plan.write(pkt)) fail("tempInfoOpt");
        endAt = plan.endAt();
    } else if (args.isReply() && args.infoOpt && scan.info) {
        result = removeInfoOption(pkt, scan.info, endAt);
    }
    normaliseSize(pkt, args, endAt, scan.hasMaxMsgSize);
    return result;
}

}  // namespace

bool preparePacket(const PktPtr& pkt, BootpOption op, bool infoOpt, Tyk::String circuitId, Tyk::String remoteId,
                   Tyk::String vpnId, Kitnet::IpAddr serverId, Kitnet::IpAddr linkselectionId, U32 offset,
                   bool vssControlDisable, Tyk::String vendorSpecificSubOptIntfName,
                   Kitnet::IpGenAddr vendorSpecificSubOptSrcVtepIp) {
    return rewrite(*pkt, {op, infoOpt, circuitId, remoteId, vpnId, serverId, linkselectionId, offset, vssControlDisable,
                          vendorSpecificSubOptIntfName, vendorSpecificSubOptSrcVtepIp});
}

RelayRewriteForecast forecastRewrite(Wire::ByteView bytes, const RewriteArgs& args) {
    const OptionIndex index(bytes, args.offset);
    if (!index.wellFormed()) return forecastOf({RelayRewriteVerdict::notDhcp}, index);
    const RawOption info = index.last(DhcpOptionType::infoOpt);
    if (info && info.len() == 0) return forecastOf({RelayRewriteVerdict::infoOptionEmpty}, index);
    const RawOption end = index.last(DhcpOptionType::endOpt);
    U32 endAt = end.at();
    if (args.isInsertion()) {
        const InfoInsertion plan(bytes, args, info, endAt);
        if (plan.stop) return forecastOf(plan.stop, index);
        endAt = plan.endAt();
    } else if (args.isReply() && args.infoOpt && info) {
        endAt -= SubOptionShape::headerBytes + info.len();
    }
    const bool hasMaxMsgSize = static_cast<bool>(index.last(DhcpOptionType::maxMsgSize));
    return forecastOf(info, end, index, normalisedBytes(args, endAt, hasMaxMsgSize));
}

}  // namespace DhcpLib
