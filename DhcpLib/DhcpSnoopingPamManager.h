#pragma once

#include "DhcpLib/Export.h"
#include "Interface/EthDevPamManager.h"
#include "Interface/IntfStatusManager.h"
#include "KitSlab/Slab.h"

namespace DhcpLib {

/// Gives a snooping agent the DHCP frames of its interfaces. Creates the platform's objects for interface status and
/// packet access, connects them, and installs a socket filter that accepts DHCP only. An agent creates one manager per
/// protocol. A manager with the name "Dhcp6PamMan" accepts DHCPv6: UDP destination port 547 or 546 directly after the
/// fixed IPv6 header. Any other name accepts DHCPv4: UDP destination port 67 or 68, except in later fragments. Both
/// filters look past one VLAN tag in the frame, of TPID 0x8100, 0x88a8 or 0x9100.
///
/// The agent lists the interfaces it wants in `pamDesiredIntfDir`. Its event loop polls the descriptor of
/// `KernelNetInfo::Status` and of each member of `ethDevPamCollection`. It calls `handleReadable` on the former and
/// reads frames from the latter with `Interface::EthDevPam::readPkt`.
class DHCPLIB_EXPORT PamManager final : public Kcore::Node, public KitSlab::SlabObject {
public:
    using Ptr = Kcore::Ptr<PamManager>;
    /// Pointer to the directory of all interfaces.
    using AllIntfStatusDirPtr = Kcore::Ptr<const Interface::AllIntfStatusDir>;
    /// Pointer to the names that this machine gives to devices.
    using AllIntfStatusLocalDirPtr = Kcore::Ptr<const Interface::AllIntfStatusLocalDir>;
    using KniStatusPtr = Kcore::Ptr<const KernelNetInfo::Status>;  ///< pointer to the kernel's devices
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    /// Calls handleInitialized(), so the manager is ready for use. Requires: no pointer is null.
    PamManager(const Kcore::String& name, const AllIntfStatusDirPtr& allIntfStatusDir,
               const AllIntfStatusLocalDirPtr& allIntfStatusLocalDir, const KniStatusPtr& kniStatus);
    static Ptr PamManagerIs(const Kcore::String& name, const AllIntfStatusDirPtr& allIntfStatusDir,
                            const AllIntfStatusLocalDirPtr& allIntfStatusLocalDir, const KniStatusPtr& kniStatus);

    /// Creates and connects the platform's objects and enables packet access. Later calls do nothing.
    void handleInitialized();

    /// The name given to the constructor, which selects the protocol.
    const Kcore::String& name() const { return name_; }
    /// The directory of all interfaces given to the constructor.
    const AllIntfStatusDirPtr& allIntfStatusDir() const { return allIntfStatusDir_; }
    /// The names given to the constructor.
    const AllIntfStatusLocalDirPtr& allIntfStatusLocalDir() const { return allIntfStatusLocalDir_; }
    /// The kernel's devices given to the constructor.
    const KniStatusPtr& kniStatus() const { return kniStatus_; }
    bool initialized() const { return initialized_; }

    /// The objects that handleInitialized() creates. A `...Is` function replaces the object with a new one and returns
    /// it; other objects stay connected to the old one. A `...Del` function drops the reference.
    const Interface::DeviceIntfStatusDir::Ptr& deviceIntfStatusDir() const { return deviceIntfStatusDir_; }
    Interface::DeviceIntfStatusDir::Ptr deviceIntfStatusDirIs(const Kcore::String& name);
    void deviceIntfStatusDirDel() { deviceIntfStatusDir_ = nullptr; }
    /// The interfaces whose frames the agent wants; empty at first.
    const Interface::PamDesiredIntfDir::Ptr& pamDesiredIntfDir() const { return pamDesiredIntfDir_; }
    Interface::PamDesiredIntfDir::Ptr pamDesiredIntfDirIs(const Kcore::String& name);
    void pamDesiredIntfDirDel() { pamDesiredIntfDir_ = nullptr; }
    /// Packet access of those interfaces, which the agent polls and reads.
    const Interface::EthDevPamCollection::Ptr& ethDevPamCollection() const { return ethDevPamCollection_; }
    Interface::EthDevPamCollection::Ptr ethDevPamCollectionIs(const Kcore::String& name);
    void ethDevPamCollectionDel() { ethDevPamCollection_ = nullptr; }
    /// Keeps `deviceIntfStatusDir` up to date.
    const Interface::LagLocalDeviceIntfStatusManager::Ptr& intfStatusManager() const { return intfStatusManager_; }
    Interface::LagLocalDeviceIntfStatusManager::Ptr intfStatusManagerIs(
        const AllIntfStatusDirPtr& allIntfStatusDir, const AllIntfStatusLocalDirPtr& allIntfStatusLocalDir,
        const Interface::DeviceIntfStatusDir::Ptr& deviceIntfStatusDir, const KniStatusPtr& kniStatus);
    void intfStatusManagerDel() { intfStatusManager_ = nullptr; }
    /// Keeps `ethDevPamCollection` up to date.
    const Interface::EthDevPamManager::Ptr& ethDevPamManager() const { return ethDevPamManager_; }
    Interface::EthDevPamManager::Ptr ethDevPamManagerIs(const Interface::PamDesiredIntfDir::Ptr& pamDesiredIntfDir,
                                                        const Interface::EthDevPamCollection::Ptr& ethDevPamCollection,
                                                        const Interface::DeviceIntfStatusDir::Ptr& deviceIntfStatusDir);
    void ethDevPamManagerDel() { ethDevPamManager_ = nullptr; }

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using M = PamManager;
        return Kcore::declare(
            "PamManager", attribute("name", &M::name_), attribute("allIntfStatusDir", &M::allIntfStatusDir_),
            attribute("allIntfStatusLocalDir", &M::allIntfStatusLocalDir_), attribute("kniStatus", &M::kniStatus_),
            attribute("deviceIntfStatusDir", &M::deviceIntfStatusDir_),
            attribute("pamDesiredIntfDir", &M::pamDesiredIntfDir_),
            attribute("ethDevPamCollection", &M::ethDevPamCollection_),
            attribute("intfStatusManager", &M::intfStatusManager_),
            attribute("ethDevPamManager", &M::ethDevPamManager_), attribute("initialized", &M::initialized_));
    }

private:
    // In the order of creation, so that they are destroyed in reverse order.
    const Kcore::String name_;
    const AllIntfStatusDirPtr allIntfStatusDir_;
    const AllIntfStatusLocalDirPtr allIntfStatusLocalDir_;
    const KniStatusPtr kniStatus_;
    Interface::DeviceIntfStatusDir::Ptr deviceIntfStatusDir_;
    Interface::PamDesiredIntfDir::Ptr pamDesiredIntfDir_;
    Interface::EthDevPamCollection::Ptr ethDevPamCollection_;
    Interface::LagLocalDeviceIntfStatusManager::Ptr intfStatusManager_;
    Interface::EthDevPamManager::Ptr ethDevPamManager_;
    bool initialized_ = false;
    [[no_unique_address]] KitSlab::Tracked<PamManager> tracked_;
};

DHCPLIB_EXPORT PamManager::Ptr pamManagerFactory(const Kcore::String& name,
                                                 const PamManager::AllIntfStatusDirPtr& allIntfStatusDir,
                                                 const PamManager::AllIntfStatusLocalDirPtr& allIntfStatusLocalDir,
                                                 const PamManager::KniStatusPtr& kniStatus);

}  // namespace DhcpLib
