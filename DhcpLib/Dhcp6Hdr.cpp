#include "DhcpLib/Dhcp6Hdr.h"

namespace DhcpLib {

namespace {

const Kcore::ModuleTypes<
    Dhcp6MsgType, Dhcp6OptionType, Dhcp6InterfaceIdCode, Dhcp6RemoteIdFormat, CableLabsSubOptionType, Dhcp6Const,
    Dhcp6Xid, Dhcp6HdrBase, Dhcp6RegHdr, Dhcp6RelayHdr, Dhcp6Option, Dhcp6Options, Dhcp6OptionNrc, Dhcp6UserClassOption,
    Dhcp6VendorSpecificInformationOption, Dhcp6Iana, Dhcp6Iapd, Dhcp6IaAddr, Dhcp6IaPfx, Dhcp6Duid, Dhcp6InterfaceId,
    Dhcp6RemoteId, Dhcp6RemoteIdIntfName, Dhcp6RemoteIdHostAndIntfName, Dhcp6VirtualSubnetSelection, DhcpLinkLayerAddr,
    Dhcp6VSI, CableLabsSubOption, CableLabsSubOptions, Dhcp6MessagePlace>
    registration{"DhcpLib/Dhcp6Hdr"};

}  // namespace

}  // namespace DhcpLib
