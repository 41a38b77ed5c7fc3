#include "DhcpLib/OptionParser/RelayRewrite.h"

#include "DhcpLib/OptionParser/internal/RewritePlan.h"

namespace DhcpLib {

bool preparePacket(const PktPtr& pkt, BootpOption op, bool infoOpt, Tyk::String circuitId, Tyk::String remoteId,
                   Tyk::String vpnId, Kitnet::IpAddr serverId, Kitnet::IpAddr linkselectionId, U32 offset,
                   bool vssControlDisable, Tyk::String vendorSpecificSubOptIntfName,
                   Kitnet::IpGenAddr vendorSpecificSubOptSrcVtepIp) {
    return rewriteInPlace(pkt.get(), {op, infoOpt, circuitId, remoteId, vpnId, serverId, linkselectionId, offset,
                                      vssControlDisable, vendorSpecificSubOptIntfName, vendorSpecificSubOptSrcVtepIp});
}

bool preparePacketNew(const PktPtr& pkt, BootpOption op, bool infoOpt, Tyk::String circuitId, Tyk::String remoteId,
                      Tyk::String vpnId, Kitnet::IpAddr serverId, Kitnet::IpAddr linkselectionId, U32 offset,
                      bool vssControlDisable, Tyk::String vendorSpecificSubOptIntfName,
                      Kitnet::IpGenAddr vendorSpecificSubOptSrcVtepIp) {
    return rewriteByRebuild(
        pkt.get(), {op, infoOpt, circuitId, remoteId, vpnId, serverId, linkselectionId, offset, vssControlDisable,
                    vendorSpecificSubOptIntfName, vendorSpecificSubOptSrcVtepIp});
}

bool relayRewrite(const PktPtr& pkt, const RelayRewrite& rewrite, RelayGeneration generation) {
    const auto function = generation == RelayGeneration::preparePacket ? rewriteInPlace : rewriteByRebuild;
    return function(pkt.get(), RewriteArgs::of(rewrite));
}

RelayRewriteForecast relayRewriteCheck(const PktPtr& pkt, const RelayRewrite& rewrite, RelayGeneration generation) {
    const auto function = generation == RelayGeneration::preparePacket ? checkInPlace : checkRebuild;
    return function(Wire::ByteView(pkt.get()), RewriteArgs::of(rewrite));
}

}  // namespace DhcpLib
