#pragma once

#include "DhcpLib/Constants.h"
#include "DhcpLib/OptionParser/LeaseQuery.h"

namespace DhcpLib {

/// Makes buildDhcpLeaseQuery available as an operation of an object. It has no state.
class DHCPLIB_EXPORT LeaseQueryHelperWrapper final : public Kcore::Node, public KitSlab::SlabObject {
public:
    using Ptr = Kcore::Ptr<LeaseQueryHelperWrapper>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    LeaseQueryHelperWrapper() = default;
    static Ptr LeaseQueryHelperWrapperIs();

    /// As buildDhcpLeaseQuery.
    PktPtr buildDhcpLeaseQueryWrapper(bool queryByMAC, Kitnet::IpAddr giaddr, const Kitnet::EthAddr& chaddr,
                                      Kitnet::IpAddr ciaddr, U32 xid) const;

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        constexpr std::string_view parameters = "(queryByMAC, giaddr, chaddr, ciaddr, xid)";
        return Kcore::declare("LeaseQueryHelperWrapper", Kcore::constant("buildDhcpLeaseQueryWrapper", parameters));
    }

private:
    [[no_unique_address]] KitSlab::Tracked<LeaseQueryHelperWrapper> tracked_;
};

DHCPLIB_EXPORT LeaseQueryHelperWrapper::Ptr leaseQueryHelperWrapperFactory();

}  // namespace DhcpLib
