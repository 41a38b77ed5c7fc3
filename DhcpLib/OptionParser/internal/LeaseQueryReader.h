#pragma once

#include "DhcpLib/OptionParser/internal/OptionIndex.h"
#include "Kcore/Duration.h"

namespace DhcpLib {

/// The options of a lease query reply.
struct LeaseQueryOptions {
    explicit LeaseQueryOptions(const OptionIndex& index)
        : leaseTime(index.last(DhcpOptionType::leaseTimeOpt)),
          lastTransactionTime(index.last(DhcpOptionType::lastTxTimeOpt)),
          associatedIps(index.last(DhcpOptionType::associatedIpOpt)),
          serverId(index.last(DhcpOptionType::serverIdOpt)) {}

    static Kcore::Duration seconds(const RawOption& option) { return Kcore::Duration(option.valueOr<U32>(0)); }

    /// Calls `take(address)` for each associated address, in wire order.
    template <class Take>
    void forEachAssociatedIp(Take take) const {
        constexpr U32 size = sizeof(Kitnet::IpAddr);
        if (!associatedIps || associatedIps.len() % size != 0) return;
        for (U32 at = 0; at < associatedIps.len(); at += size)
            take(associatedIps.bytes().load<Kitnet::IpAddr>(associatedIps.dataAt() + at));
    }

    RawOption leaseTime;
    RawOption lastTransactionTime;
    RawOption associatedIps;
    RawOption serverId;
};

}  // namespace DhcpLib
