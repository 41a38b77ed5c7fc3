#include "KernelNetInfo/internal/LinkMessage.h"

#include <net/if.h>

#include <cstring>

namespace KernelNetInfo {

namespace {

std::string_view bytesOf(const rtattr& attribute) {
    return {static_cast<const char*>(RTA_DATA(&attribute)), RTA_PAYLOAD(&attribute)};
}

}  // namespace

std::optional<LinkMessage> LinkMessage::from(const nlmsghdr& header) {
    const bool removed = header.nlmsg_type == RTM_DELLINK;
    if ((header.nlmsg_type != RTM_NEWLINK && !removed) || header.nlmsg_len < NLMSG_LENGTH(sizeof(ifinfomsg)))
        return std::nullopt;
    const auto& info = *static_cast<const ifinfomsg*>(NLMSG_DATA(&header));
    if (info.ifi_family != AF_UNSPEC) return std::nullopt;

    Kcore::String name;
    Kitnet::EthAddr macAddr;
    U32 mtu = 0;
    auto size = static_cast<int>(IFLA_PAYLOAD(&header));
    for (const rtattr* at = IFLA_RTA(&info); RTA_OK(at, size); at = RTA_NEXT(at, size)) {
        const std::string_view bytes = bytesOf(*at);
        if (at->rta_type == IFLA_IFNAME)
            name = bytes.substr(0, bytes.find('\0'));
        else if (at->rta_type == IFLA_ADDRESS && bytes.size() == sizeof macAddr)
            macAddr = Kitnet::EthAddr::fromBytes(reinterpret_cast<const Kcore::U8*>(bytes.data()));
        else if (at->rta_type == IFLA_MTU && bytes.size() == sizeof mtu)
            std::memcpy(&mtu, bytes.data(), sizeof mtu);
    }
    if (name.empty()) return std::nullopt;
    const IntfStatus status(static_cast<U32>(info.ifi_index), macAddr, (info.ifi_flags & IFF_UP) != 0,
                            (info.ifi_flags & IFF_RUNNING) != 0, mtu);
    return LinkMessage{name, status, removed};
}

}  // namespace KernelNetInfo
