#pragma once

#include "Bytes.h"
#include "DhcpLib/OptionParser.h"

namespace DhcpTest {

/// Outputs of parseInfoOpt and parseInfoOptNew. One that a reader does not set keeps its value here.
struct RelayInfo {
    bool ok = false;
    Kcore::String circuitId = "-", remoteId = "-", vpnId = "-";
    bool vssControl = false;
    Kitnet::IpAddr serverIdOverride, linkSelection;
    Kcore::String intfName = "-";
    Kitnet::IpGenAddr srcVtepIp;
    friend bool operator==(const RelayInfo&, const RelayInfo&) = default;
};

inline RelayInfo readInfo(decltype(&DhcpLib::parseInfoOpt) reader, const PktPtr& pkt, U32 offset) {
    RelayInfo r;
    r.ok = reader(pkt, r.circuitId, r.remoteId, r.vpnId, r.vssControl, r.serverIdOverride, r.linkSelection, r.intfName,
                  r.srcVtepIp, offset);
    return r;
}

}  // namespace DhcpTest
