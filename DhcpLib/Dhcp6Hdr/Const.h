#pragma once

#include "DhcpLib/Constants.h"

namespace DhcpLib {

/// Offsets, sizes and numbers of DHCPv6. Offsets of option fields count from the option's first byte, its code.
class Dhcp6Const : public ConstantSet<Dhcp6Const> {
public:
    using ConstantSet::ConstantSet;

    // Message header (RFC 8415, sections 8 and 9), from the message's first byte
    static constexpr U8 msgtype_offset = 0;
    static constexpr U8 msgtype_size = 1;
    static constexpr U8 xid_offset = 1;
    static constexpr U8 xid_size = 3;
    static constexpr U8 hopcnt_offset = 1;
    static constexpr U8 hopcnt_size = 1;
    static constexpr U8 linkaddr_offset = 2;
    static constexpr U8 linkaddr_size = 16;
    static constexpr U8 peeraddr_offset = 18;
    static constexpr U8 peeraddr_size = 16;
    static constexpr U8 reghdr_size = 4;     ///< options start here
    static constexpr U8 relayhdr_size = 34;  ///< options start here

    // Option header (RFC 8415, section 21.1)
    static constexpr U8 opttype_offset = 0;
    static constexpr U8 opttype_size = 2;
    static constexpr U8 optlen_offset = 2;
    static constexpr U8 optlen_size = 2;
    static constexpr U8 optdata_offset = 4;

    // IA_NA (RFC 8415, section 21.4) and IA_PD (21.21)
    static constexpr U8 ianaiaid_offset = 4;
    static constexpr U8 ianat1_offset = 8;
    static constexpr U8 ianat2_offset = 12;
    static constexpr U8 ianadata_offset = 16;  ///< nested options
    static constexpr U8 ianaopt_minlen = 12;   ///< smallest option length
    static constexpr U8 iapdiaid_offset = 4;
    static constexpr U8 iapdt1_offset = 8;
    static constexpr U8 iapdt2_offset = 12;
    static constexpr U8 iapddata_offset = 16;  ///< nested options
    static constexpr U8 iapdopt_minlen = 12;   ///< smallest option length

    // IA prefix (RFC 8415, section 21.22)
    static constexpr U8 iapfxpreftime_offset = 4;
    static constexpr U8 iapfxvalidtime_offset = 8;
    static constexpr U8 iapfxlen_offset = 12;
    static constexpr U8 iapfxaddr_offset = 13;
    static constexpr U8 iapfxaddr_size = 16;
    static constexpr U8 iapfxopt_minlen = 25;  ///< smallest option length

    // IA address (RFC 8415, section 21.6)
    static constexpr U8 iaaddr_offset = 4;
    static constexpr U8 iaaddr_size = 16;
    static constexpr U8 iaaddr_preftime_offset = 20;
    static constexpr U8 iaaddr_validtime_offset = 24;
    static constexpr U8 iaaddropt_minlen = 24;  ///< smallest option length

    // Relay identification (RFC 8415, section 21.18; RFC 4649, 6607)
    static constexpr U8 intfId_offset = 4;
    static constexpr U8 vssType_offset = 4;
    static constexpr U8 vssType_size = 1;
    static constexpr U8 vrfName_offset = 5;  ///< the VPN identifier
    static constexpr U8 entno_offset = 4;    ///< of a remote-id and of a vendor option
    static constexpr U8 duid_offset = 8;     ///< in a remote-id, after the enterprise number
    static constexpr U8 hostAndIntfName_offset = 18;
    static constexpr U8 interfaceId_offset = 18;
    static constexpr U8 interfaceName_offset = 18;
    static constexpr U8 entno_size = 4;
    static constexpr U8 duidType_size = 2;
    static constexpr U8 duidTime_size = 4;
    static constexpr U8 hardwareType_size = 2;

    // Client link-layer address (RFC 6939)
    static constexpr U8 llAddrType_offset = 4;
    static constexpr U8 llAddrType_size = 2;
    static constexpr U8 llAddr_size = 6;  ///< a MAC address

    // DUID (RFC 8415, section 11)
    static constexpr U8 uuid_size = 16;
    static constexpr U8 duidll_size = 10;     ///< type, hardware type, MAC
    static constexpr U8 duidllt_size = 14;    ///< type, hardware type, time, MAC
    static constexpr U8 duiduuid_size = 18;   ///< type, UUID
    static constexpr U8 baseDuiden_size = 6;  ///< type, enterprise number; without the identifier

    // Remote-id of the interface-id layout
    static constexpr U8 interfaceId_size = 8;    ///< 64 bits
    static constexpr U8 baseRemoteId_size = 22;  ///< of the data: enterprise number, DUID-LL, interface id
    static constexpr U8 rIdSubOpt_offset = 26;   ///< the first sub-option
    static constexpr U8 rIdSubOptType_size = 1;
    static constexpr U8 rIdSubOptLen_size = 1;
    static constexpr U8 rIdSubOptTL_size = 2;     ///< type and length
    static constexpr U8 minRIdWSubOpt_size = 24;  ///< smallest data that carries a sub-option
    static constexpr U8 rIdSubOptIntfVlan = 1;    ///< the sub-option with the interface and VLAN text

    // DUID types (RFC 8415, section 11.1; RFC 6355)
    static constexpr U16 duidType_llt = 1;   ///< a DUID-LLT: link-layer address and time
    static constexpr U16 duidType_en = 2;    ///< a DUID-EN: number of an enterprise
    static constexpr U16 duidType_ll = 3;    ///< a DUID-LL: link-layer address
    static constexpr U16 duidType_uuid = 4;  ///< a DUID-UUID

    // Vendor-specific information (RFC 8415, section 21.17)
    static constexpr U8 ccapcore_size = 16;                ///< one CCAP core address
    static constexpr U32 entno = Constants::quorvaEntNum;  ///< the system's own
    static constexpr U32 cableLabs_entno = 4491;           ///< the number of CableLabs

    static constexpr auto declaration() {
        using Kcore::constant;
        return Kcore::declare(
            "Dhcp6Const", constant("msgtype_offset", msgtype_offset), constant("msgtype_size", msgtype_size),
            constant("xid_offset", xid_offset), constant("xid_size", xid_size),
            constant("hopcnt_offset", hopcnt_offset), constant("hopcnt_size", hopcnt_size),
            constant("linkaddr_offset", linkaddr_offset), constant("linkaddr_size", linkaddr_size),
            constant("peeraddr_offset", peeraddr_offset), constant("peeraddr_size", peeraddr_size),
            constant("reghdr_size", reghdr_size), constant("relayhdr_size", relayhdr_size),
            constant("opttype_offset", opttype_offset), constant("opttype_size", opttype_size),
            constant("optlen_offset", optlen_offset), constant("optlen_size", optlen_size),
            constant("optdata_offset", optdata_offset), constant("ianaiaid_offset", ianaiaid_offset),
            constant("ianat1_offset", ianat1_offset), constant("ianat2_offset", ianat2_offset),
            constant("ianadata_offset", ianadata_offset), constant("ianaopt_minlen", ianaopt_minlen),
            constant("iapdiaid_offset", iapdiaid_offset), constant("iapdt1_offset", iapdt1_offset),
            constant("iapdt2_offset", iapdt2_offset), constant("iapddata_offset", iapddata_offset),
            constant("iapdopt_minlen", iapdopt_minlen), constant("iapfxpreftime_offset", iapfxpreftime_offset),
            constant("iapfxvalidtime_offset", iapfxvalidtime_offset), constant("iapfxlen_offset", iapfxlen_offset),
            constant("iapfxaddr_offset", iapfxaddr_offset), constant("iapfxaddr_size", iapfxaddr_size),
            constant("iapfxopt_minlen", iapfxopt_minlen), constant("iaaddr_offset", iaaddr_offset),
            constant("iaaddr_size", iaaddr_size), constant("iaaddr_preftime_offset", iaaddr_preftime_offset),
            constant("iaaddr_validtime_offset", iaaddr_validtime_offset),
            constant("iaaddropt_minlen", iaaddropt_minlen), constant("intfId_offset", intfId_offset),
            constant("vssType_offset", vssType_offset), constant("vssType_size", vssType_size),
            constant("vrfName_offset", vrfName_offset), constant("entno_offset", entno_offset),
            constant("duid_offset", duid_offset), constant("hostAndIntfName_offset", hostAndIntfName_offset),
            constant("interfaceId_offset", interfaceId_offset), constant("interfaceName_offset", interfaceName_offset),
            constant("entno_size", entno_size), constant("duidType_size", duidType_size),
            constant("duidTime_size", duidTime_size), constant("hardwareType_size", hardwareType_size),
            constant("llAddrType_offset", llAddrType_offset), constant("llAddrType_size", llAddrType_size),
            constant("llAddr_size", llAddr_size), constant("uuid_size", uuid_size),
            constant("duidll_size", duidll_size), constant("duidllt_size", duidllt_size),
            constant("duiduuid_size", duiduuid_size), constant("baseDuiden_size", baseDuiden_size),
            constant("interfaceId_size", interfaceId_size), constant("baseRemoteId_size", baseRemoteId_size),
            constant("rIdSubOpt_offset", rIdSubOpt_offset), constant("rIdSubOptType_size", rIdSubOptType_size),
            constant("rIdSubOptLen_size", rIdSubOptLen_size), constant("rIdSubOptTL_size", rIdSubOptTL_size),
            constant("minRIdWSubOpt_size", minRIdWSubOpt_size), constant("rIdSubOptIntfVlan", rIdSubOptIntfVlan),
            constant("duidType_llt", duidType_llt), constant("duidType_en", duidType_en),
            constant("duidType_ll", duidType_ll), constant("duidType_uuid", duidType_uuid),
            constant("ccapcore_size", ccapcore_size), constant("entno", entno),
            constant("cableLabs_entno", cableLabs_entno));
    }
};

}  // namespace DhcpLib
