#include "DhcpLib/OptionParser/internal/RewritePlan.h"

#include "DhcpLib/internal/Trace.h"
#include "Kcore/Assert.h"

namespace DhcpLib {

namespace {

// A request without option 57 is sent as RFC 1542 lets a relay expect it; everything else as a BOOTP message.
constexpr U32 smallestRequest = 548, smallestMessage = 300;
constexpr U8 endCode = static_cast<U8>(DhcpOptionType::endOpt);

U32 smallestBytes(const RewriteArgs& args, bool hasMaxMsgSize) {
    return args.op == BootpOption::bootpRequest && !hasMaxMsgSize ? smallestRequest : smallestMessage;
}

}  // namespace

U32 normalisedBytes(const RewriteArgs& args, U32 endAt, bool hasMaxMsgSize) {
    return std::max(smallestBytes(args, hasMaxMsgSize), endAt + 1 - args.offset);
}

void normaliseSize(Kitnet::Pkt& pkt, const RewriteArgs& args, U32 endAt, bool hasMaxMsgSize) {
    const U32 smallest = smallestBytes(args, hasMaxMsgSize), now = pkt.bytes() - args.offset;
    if (now > smallest) {
        const U32 trimmed = std::min(now - smallest, pkt.bytes() - endAt - 1);
        Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "(final)deleting {} bytes from pkt({})", trimmed,
                       pkt.bytes());
        if (trimmed != 0) pkt.delSharedTailData(trimmed);
    } else {
        const U32 added = smallest - now;
        Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "(final)adding {} bytes to pkt({})", added, pkt.bytes());
        if (added != 0) pkt.newSharedTailData(added);
    }
    Wire::fill(pkt, endAt, pkt.bytes() - endAt, 0);
    Wire::store<U8>(pkt, endAt, endCode);
}

S32 currentPadding(const Kitnet::Pkt& pkt, U32 endAt, const char* signature) {
    const S32 padding = static_cast<S32>(pkt.bytes() - endAt - 1);
    if (padding < 0) Kcore::assertionFailed("currentPadding >= 0", signature, "DhcpLib/OptionParser");
    return padding;
}

void growTail(Kitnet::Pkt& pkt, U32 n) {
    Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "adding {} bytes to pkt({})", n, pkt.bytes());
    pkt.newSharedTailData(n);
}

void traceRewriteEntry(std::string_view function, const RewriteArgs& args) {
    Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {},
                   "{}op: {}, infoOpt: {}, circuitId: {}, remoteId: {}, vpnId: {}, serverId: {}, linkselectionId: {}, "
                   "offset: {}, vssControlDisable: {}, vendorSpecificSubOptIntfName: {}, "
                   "vendorSpecificSubOptSrcVtepIp: {}",
                   function, args.op, args.infoOpt, args.circuitId, args.remoteId, args.vpnId, args.serverId,
                   args.linkSelection, args.offset, args.vssControlDisable, args.intfName, args.srcVtep);
}

bool traceRefusal(std::string_view function, RelayRewriteVerdict refusal) {
    Tyk::DualTrace(traceHandle(), TraceLevel::failure, {}, "{} refused: {}", function, refusal);
    return false;
}

RelayRewriteForecast forecastOf(const RewriteStop& stop, const OptionIndex& index) {
    RelayRewriteForecast forecast;
    forecast.messageBytes = index.bytes().from(index.offset());
    // A refusal comes before an assertion.
    forecast.verdict = stop.refusal;
    if (stop.refusal == RelayRewriteVerdict::fine) {
        forecast.verdict = RelayRewriteVerdict::assertion;
        forecast.assertion = stop.assertion;
    }
    return forecast;
}

RelayRewriteForecast forecastOf(const RawOption& info, const RawOption& end, const OptionIndex& index,
                                U32 messageBytes) {
    RelayRewriteForecast forecast;
    forecast.messageBytes = messageBytes;
    if (!info && index.collected().info)
        forecast.verdict = RelayRewriteVerdict::infoOptionBehindEnd;
    else if (info && info.dataAt() + info.len() != end.at())
        forecast.verdict = RelayRewriteVerdict::infoOptionNotLast;
    return forecast;
}

RelayRewriteForecast relayRewriteCheck(const PktPtr& pkt, const RelayRewrite& rewrite, RelayGeneration generation) {
    const Wire::ByteView bytes(*pkt);
    const RewriteArgs args = RewriteArgs::of(rewrite);
    return generation == RelayGeneration::preparePacket ? forecastRewrite(bytes, args)
                                                        : forecastRewriteNew(bytes, args);
}

bool relayRewrite(const PktPtr& pkt, const RelayRewrite& rewrite, RelayGeneration generation) {
    const auto function = generation == RelayGeneration::preparePacket ? preparePacket : preparePacketNew;
    return function(pkt, rewrite.op, rewrite.infoOpt, rewrite.circuitId, rewrite.remoteId, rewrite.vpnId,
                    rewrite.serverId, rewrite.linkselectionId, rewrite.offset, rewrite.vssControlDisable,
                    rewrite.vendorSpecificSubOptIntfName, rewrite.vendorSpecificSubOptSrcVtepIp);
}

}  // namespace DhcpLib
