#pragma once

#include "DhcpLib/Dhcp6Hdr/RemoteId.h"
#include "DhcpLib/Dhcp6Identifiers.h"

namespace DhcpLib {

/// The part of the text "<interface>:<VLAN>" before the first colon. Requires: a colon.
inline std::string_view intfTextOf(std::string_view text) { return text.substr(0, text.find(':')); }
/// The part after the first colon, as a trace argument: looked for only when the line is wanted.
struct VlanText {
    std::string_view text;
    void appendText(std::string& out) const { out.append(text.substr(text.find(':') + 1)); }
};

/// Decodes "<interface>:<VLAN>". Sets both outputs or neither.
Dhcp6PortInfo decodeIntfVlan(std::string_view text, Kitnet::IntfId& intf, Bridging::VlanId& vlanId);

/// Reads the client identifier at `id.option` into the other fields. Fields that it does not have keep their values.
/// Inline, like the next function: a call would slow the parser down.
inline void readClientIdentifier(Wire::ByteView bytes, Dhcp6ClientIdentifier& id) {
    const DuidFields duid = decodeDuid(bytes, packetPosition(id.option.offset), Dhcp6Const::optdata_offset);
    const U16 len = id.option.len;
    const bool isEn = duid.duidType == Dhcp6Const::duidType_en;
    if (!isEn && len != Dhcp6Const::duidll_size && len != Dhcp6Const::duidllt_size && len != Dhcp6Const::duiduuid_size)
        return;
    id.duidType = duid.duidType;
    id.duidHwType = duid.hardwareType;
    if (DuidFields::hasLinkLayer(duid.duidType)) id.duidllAddr = duid.llAddr;
    if (duid.duidType == Dhcp6Const::duidType_uuid) id.duidUuid = duid.uuid;
    if (isEn) {
        id.duidEntno = duid.entno;
        id.duidEntId = duid.entId;
    }
}

/// Likewise for the remote-id. Returns the decoded fields, for tracing.
inline RemoteIdFields readRemoteIdentifier(Wire::ByteView bytes, Dhcp6RemoteIdentifier& id) {
    const U16 option = packetPosition(id.option.offset);
    const DuidFields duid = decodeDuid(bytes, option, Dhcp6Const::duid_offset);
    const RemoteIdFields remoteId = decodeRemoteId(bytes, option, id.option.len);
    id.entno = remoteId.entno;
    id.duidType = duid.duidType;
    id.duidHwType = duid.hardwareType;
    id.duidllAddr = duid.llAddr;
    id.l3IntfId = remoteId.interfaceId;
    id.portInfo = remoteId.subOptType == Dhcp6Const::rIdSubOptIntfVlan
                      ? decodeIntfVlan(remoteId.subOptValue, id.l2IntfId, id.vlanId)
                      : Dhcp6PortInfo::noPortText;
    return remoteId;
}

}  // namespace DhcpLib
