#pragma once

#include "Interface/DeviceIntfStatusDir.h"
#include "Interface/IntfStatusDir.h"

namespace Interface {

/// Keeps a DeviceIntfStatusDir up to date for the kernel-only interfaces. Destroying the manager removes the entries
/// that it added.
class DHCPPLATFORM_EXPORT KniIntfStatusManager : public Kcore::Node {
public:
    using Ptr = Kcore::Ptr<KniIntfStatusManager>;

    /// Fills the directory and keeps it up to date from now on. Requires: no pointer is null.
    KniIntfStatusManager(const DeviceIntfStatusDir::Ptr& deviceIntfStatusDir,
                         const Kcore::Ptr<const KernelNetInfo::Status>& kniStatus);
    ~KniIntfStatusManager() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return Kcore::declare("KniIntfStatusManager",
                              Kcore::attribute("kernelOnlyInterface", &KniIntfStatusManager::kernelOnlyInterface));
    }

    /// Interfaces that are in no directory, with the names of their devices.
    const Kcore::FlatMap<Kitnet::IntfId, Kcore::String>& kernelOnlyInterface() const { return kernelOnlyInterface_; }
    /// Adds an interface whose device is `deviceName`, which need not exist.
    void kernelOnlyInterfaceIs(const Kitnet::IntfId& intf, const Kcore::String& deviceName);
    /// Removes an interface that kernelOnlyInterfaceIs() added.
    void kernelOnlyInterfaceDel(Kitnet::IntfId intf);

protected:
    /// The name of the interface's device; null for an unknown interface.
    virtual const Kcore::String* deviceName(const Kitnet::IntfId& intf) const;
    /// Updates the directory's entry of `intf`.
    void handleIntf(const Kitnet::IntfId& intf);

private:
    void handleDevice(const Kcore::String& deviceName);

    const DeviceIntfStatusDir::Ptr deviceIntfStatusDir_;
    const Kcore::Ptr<const KernelNetInfo::Status> kniStatus_;
    Kcore::FlatMap<Kitnet::IntfId, Kcore::String> kernelOnlyInterface_;
    Kcore::FlatMap<Kitnet::IntfId, Kcore::String> deviceOfIntf_;  // of all interfaces that are known at present
    const Kcore::Observers<const Kcore::String&>::Observation devices_;
};

/// Keeps a DeviceIntfStatusDir up to date for all interfaces of this machine, bundled ones included. If several sources
/// name an interface, the local directory wins over AllIntfStatusDir, and that over a kernel-only interface.
class DHCPPLATFORM_EXPORT LagLocalDeviceIntfStatusManager final : public KniIntfStatusManager {
public:
    using Ptr = Kcore::Ptr<LagLocalDeviceIntfStatusManager>;

    /// Fills the directory and keeps it up to date from now on. Requires: no pointer is null.
    LagLocalDeviceIntfStatusManager(const Kcore::Ptr<const AllIntfStatusDir>& allIntfStatusDir,
                                    const Kcore::Ptr<const AllIntfStatusLocalDir>& allIntfStatusLocalDir,
                                    const DeviceIntfStatusDir::Ptr& deviceIntfStatusDir,
                                    const Kcore::Ptr<const KernelNetInfo::Status>& kniStatus);
    ~LagLocalDeviceIntfStatusManager() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return Kcore::declare(
            "LagLocalDeviceIntfStatusManager",
            Kcore::attribute("kernelOnlyInterface", &LagLocalDeviceIntfStatusManager::kernelOnlyInterface));
    }

private:
    using Observation = Kcore::Observers<const Kitnet::IntfId&>::Observation;

    const Kcore::String* deviceName(const Kitnet::IntfId& intf) const override;
    Observation observe(const IntfStatusDir& dir);

    const Kcore::Ptr<const AllIntfStatusDir> allIntfStatusDir_;
    const Kcore::Ptr<const AllIntfStatusLocalDir> allIntfStatusLocalDir_;
    const LifeTrace life_;
    const Observation all_;
    const Observation local_;
};

}  // namespace Interface
