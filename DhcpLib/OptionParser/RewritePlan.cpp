#include "DhcpLib/OptionParser/internal/RewritePlan.h"

#include "DhcpLib/internal/Trace.h"
#include "Kcore/Assert.h"

namespace DhcpLib {

namespace {

/// Number of bytes by which the packet has to grow before the insertion.
U32 growthFor(const Kitnet::Pkt& pkt, const RewritePlan& plan) {
    const S32 padding = static_cast<S32>(pkt.bytes() - plan.endAt - 1);
    return static_cast<U32>(std::max(plan.neededPadding - padding, 0));
}

/// Traces the final change of size, relative to the size after the insertion's growth.
[[gnu::cold, gnu::noinline]] void traceNormalisation(const Kitnet::Pkt& pkt, const RewritePlan& plan,
                                                     Kcore::SourceSite caller) {
    const U32 now = pkt.bytes() + growthFor(pkt, plan), later = plan.newBytes();
    if (now - plan.offset > plan.smallestMessage)
        Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {nullptr, caller}, "(final)deleting {} bytes from pkt({})",
                       now - later, now);
    else
        Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {nullptr, caller}, "(final)adding {} bytes to pkt({})",
                       later - now, now);
}

void writeInfo(Kitnet::Pkt& pkt, const RewritePlan& plan) {
    Wire::store<U8>(pkt, plan.infoAt, static_cast<U8>(DhcpOptionType::infoOpt));
    Wire::store<U8>(pkt, plan.infoAt + DhcpConst::optlen_offset, static_cast<U8>(plan.infoData.size()));
    Wire::store(pkt, plan.infoAt + DhcpConst::optdata_offset, plan.infoData.span());
}

/// Whether there are only pads between option 82 and the end option.
bool isInfoLast(Wire::ByteView bytes, const RewritePlan& plan) {
    const U32 behind = plan.endAt - plan.infoEnd;
    return bytes.zeroRun(plan.infoEnd, behind) == behind;
}

RelayRewriteVerdict verdictOf(Wire::ByteView bytes, const RewritePlan& plan) {
    using enum RelayRewriteVerdict;
    if (plan.breaksInfo) return infoOptionWouldBreak;
    if (plan.hadInfo) return isInfoLast(bytes, plan) ? fine : infoOptionNotLast;
    return OptionIndex(bytes, plan.offset).collected().info ? infoOptionBehindEnd : fine;
}

}  // namespace

void apply(Kitnet::Pkt& pkt, const RewritePlan& plan, Kcore::SourceSite caller) {
    if (isTraced(TraceLevel::verbose)) traceNormalisation(pkt, plan, caller);
    const U32 was = pkt.bytes(), later = plan.newBytes(), endAt = plan.newEndAt();
    // Growth may throw; nothing after it does.
    if (later > was) pkt.newSharedTailData(later - was);
    if (plan.keptEnd != plan.keptAt)
        Wire::move(pkt, plan.infoAt + plan.infoBytes(), plan.keptAt, plan.keptEnd - plan.keptAt);
    if (plan.writesInfo) writeInfo(pkt, plan);
    Wire::fill(pkt, endAt, later - endAt, 0);
    Wire::store<U8>(pkt, endAt, static_cast<U8>(DhcpOptionType::endOpt));
    if (later < was) pkt.delSharedTailData(was - later);
}

RelayRewriteForecast describe(Wire::ByteView bytes, const RewritePlan& plan) {
    RelayRewriteForecast forecast;
    forecast.verdict = plan.stop.refusal;
    if (!plan.stop) {
        forecast.verdict = verdictOf(bytes, plan);
        forecast.messageBytes = plan.newBytes() - plan.offset;
        return forecast;
    }
    forecast.messageBytes = bytes.from(plan.offset);
    if (plan.stop.assertion == nullptr) return forecast;
    forecast.verdict = RelayRewriteVerdict::assertion;
    forecast.assertion = plan.stop.assertion;
    return forecast;
}

void assertNotStopped(const RewritePlan& plan, const char* signature) {
    if (plan.stop.assertion != nullptr) Kcore::assertionFailed(plan.stop.assertion, signature, "DhcpLib/OptionParser");
}

void traceGrowth(const Kitnet::Pkt& pkt, const RewritePlan& plan, Kcore::SourceSite caller) {
    if (const U32 growth = growthFor(pkt, plan); growth != 0)
        Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {nullptr, caller}, "adding {} bytes to pkt({})", growth,
                       pkt.bytes());
}

void traceRewriteEntry(std::string_view function, const RewriteArgs& args, Kcore::SourceSite caller) {
    Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {nullptr, caller},
                   "{}op: {}, infoOpt: {}, circuitId: {}, remoteId: {}, vpnId: {}, serverId: {}, linkselectionId: {}, "
                   "offset: {}, vssControlDisable: {}, vendorSpecificSubOptIntfName: {}, "
                   "vendorSpecificSubOptSrcVtepIp: {}",
                   function, args.op, args.infoOpt, args.circuitId, args.remoteId, args.vpnId, args.serverId,
                   args.linkSelection, args.offset, args.vssControlDisable, args.intfName, args.srcVtep);
}

RewriteStop refused(std::string_view function, RelayRewriteVerdict refusal, Kcore::SourceSite caller) {
    Tyk::DualTrace(traceHandle(), TraceLevel::failure, {nullptr, caller}, "{} refused: {}", function, refusal);
    return {refusal};
}

}  // namespace DhcpLib
