#pragma once

#include "Interface/Trace.h"
#include "KernelNetInfo/Status.h"
#include "Kitnet/IntfId.h"

namespace Interface {

/// The interfaces that currently have a kernel device, with its status. An interface status manager keeps it up to
/// date. Observe it to learn of interfaces that appear, disappear, or go down and up.
class DHCPPLATFORM_EXPORT DeviceIntfStatusDir final : public Kcore::Node {
public:
    using Ptr = Kcore::Ptr<DeviceIntfStatusDir>;
    using DeviceIntfStatus = Kcore::Directory<Kitnet::IntfId, KernelNetInfo::IntfStatus>;  ///< status by interface

    /// An empty directory.
    explicit DeviceIntfStatusDir(const Kcore::String& name) : name_(name), life_("DeviceIntfStatusDir", name) {}
    ~DeviceIntfStatusDir() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return Kcore::declare("DeviceIntfStatusDir", Kcore::attribute("name", &DeviceIntfStatusDir::name_),
                              Kcore::attribute(
                                  "deviceIntfStatus", [](const DeviceIntfStatusDir& dir) -> const auto& {
                                      return dir.deviceIntfStatus().entries();
                                  }));
    }

    /// The name given to the constructor, for trace lines.
    const Kcore::String& name() const { return name_; }
    /// All entries.
    const DeviceIntfStatus& deviceIntfStatus() const { return deviceIntfStatus_; }
    /// Null while the interface has no device.
    const KernelNetInfo::IntfStatus* deviceIntfStatus(const Kitnet::IntfId& intf) const {
        return deviceIntfStatus_.find(intf);
    }
    /// Adds or changes an entry. Calls the observers if it differs.
    void deviceIntfStatusIs(const Kitnet::IntfId& intf, const KernelNetInfo::IntfStatus& status) {
        deviceIntfStatus_.entryIs(intf, status);
    }
    /// Removes an entry, if there is one.
    void deviceIntfStatusDel(const Kitnet::IntfId& intf) { deviceIntfStatus_.entryDel(intf); }

private:
    const Kcore::String name_;
    DeviceIntfStatus deviceIntfStatus_;
    const LifeTrace life_;
};

}  // namespace Interface
