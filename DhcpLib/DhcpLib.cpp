#include "DhcpLib/DhcpLib.h"

namespace DhcpLib {

namespace {

const Kcore::ModuleTypes<BootpOption, Constants, LeaseQueryHelperWrapper> registration{"DhcpLib/DhcpLib"};

}  // namespace

LeaseQueryHelperWrapper::Ptr leaseQueryHelperWrapperFactory() { return Kcore::makeNode<LeaseQueryHelperWrapper>(); }
const Kcore::TypeData& LeaseQueryHelperWrapper::typeData() const {
    return Kcore::typeDataOf<LeaseQueryHelperWrapper>();
}
LeaseQueryHelperWrapper::Ptr LeaseQueryHelperWrapper::LeaseQueryHelperWrapperIs() {
    return leaseQueryHelperWrapperFactory();
}

PktPtr LeaseQueryHelperWrapper::buildDhcpLeaseQueryWrapper(bool queryByMAC, Kitnet::IpAddr giaddr,
                                                           const Kitnet::EthAddr& chaddr, Kitnet::IpAddr ciaddr,
                                                           U32 xid) const {
    return buildDhcpLeaseQuery(queryByMAC, giaddr, chaddr, ciaddr, xid);
}

}  // namespace DhcpLib
