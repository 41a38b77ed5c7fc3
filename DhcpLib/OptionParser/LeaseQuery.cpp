#include "DhcpLib/OptionParser/LeaseQuery.h"

#include "DhcpLib/DhcpHdr/Header.h"
#include "DhcpLib/OptionParser/internal/LeaseQueryReader.h"

namespace DhcpLib {

namespace {

constexpr U32 leaseQueryBytes = 300;
constexpr U8 dhcpLeaseQuery = 10;  // RFC 4388, section 6.1

/// The options after the magic cookie.
constexpr U8 leaseQueryOptions[] = {
    static_cast<U8>(DhcpOptionType::msgType),
    1,
    dhcpLeaseQuery,
    static_cast<U8>(DhcpOptionType::parareqOpt),
    3,
    static_cast<U8>(DhcpOptionType::leaseTimeOpt),
    static_cast<U8>(DhcpOptionType::lastTxTimeOpt),
    static_cast<U8>(DhcpOptionType::associatedIpOpt),
    static_cast<U8>(DhcpOptionType::endOpt),
};

}  // namespace

PktPtr buildDhcpLeaseQuery(bool queryByMAC, Kitnet::IpAddr giaddr, Kitnet::EthAddr chaddr, Kitnet::IpAddr ciaddr,
                           U32 xid) {
    DhcpHdr header;
    header.bootpOpIs(BootpOpType::bootpReq);
    header.xidU32Is(xid);
    header.giaddrIs(giaddr);
    if (queryByMAC) {
        header.htypeIs(static_cast<U8>(Constants::hardwareTypeEthernet));
        header.hlenIs(sizeof(Kitnet::EthAddr));
        header.chaddrIs(chaddr);
    } else {
        header.ciaddrIs(ciaddr);
    }
    PktPtr pkt = Kitnet::globalPktManager().newPkt();
    pkt->newSharedHeadData(leaseQueryBytes);  // new bytes are zero
    Wire::store(*pkt, 0, header);
    Wire::store<U32>(*pkt, Constants::bootpHdrSize, Kitnet::networkOrder(Constants::dhcpMagicCookie));
    Wire::store(*pkt, Constants::bootpHdrSize + sizeof(U32), std::span<const U8>(leaseQueryOptions));
    return pkt;
}

bool parseLeaseQueryOpts(const PktPtr& pkt, Kcore::Duration& leaseTime, Kcore::Duration& lastTransactionTime,
                         std::set<Kitnet::IpAddr>& associatedIps, Kitnet::IpAddr& serverId, bool& leaseTimePresent,
                         bool& lastTransactionTimePresent, bool& serverIdPresent, U32 offset) {
    const OptionIndex index(Wire::ByteView(pkt.get()), offset);
    traceAreaFailure(index.state());
    if (!index.wellFormed()) return false;
    const LeaseQueryOptions options(index);
    std::set<Kitnet::IpAddr> ips;
    options.forEachAssociatedIp([&](const Kitnet::IpAddr& ip) { ips.insert(ip); });
    associatedIps.merge(ips);  // only the insertions above may throw
    leaseTimePresent = static_cast<bool>(options.leaseTime);
    leaseTime = LeaseQueryOptions::seconds(options.leaseTime);
    lastTransactionTimePresent = static_cast<bool>(options.lastTransactionTime);
    lastTransactionTime = LeaseQueryOptions::seconds(options.lastTransactionTime);
    serverIdPresent = static_cast<bool>(options.serverId);
    serverId = options.serverId.valueOr(serverId);
    return true;
}

}  // namespace DhcpLib
