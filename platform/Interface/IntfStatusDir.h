#pragma once

#include "KernelNetInfo/Status.h"
#include "Kitnet/IntfId.h"

namespace Interface {

/// Interface names, each with the name of its kernel device.
class DHCPPLATFORM_EXPORT IntfStatusDir : public Kcore::Node {
public:
    using DeviceNames = Kcore::Directory<Kitnet::IntfId, Kcore::String>;  ///< device names by interface

    ~IntfStatusDir() override;

    /// All entries.
    const DeviceNames& deviceName() const { return deviceName_; }
    /// Null if the directory does not have the interface.
    const Kcore::String* deviceName(const Kitnet::IntfId& intf) const { return deviceName_.find(intf); }

protected:
    template <class Dir>
    static constexpr auto declarationOf(std::string_view className) {
        return Kcore::declare(
            className, Kcore::attribute(
                           "deviceName", [](const Dir& dir) -> const auto& { return dir.deviceName().entries(); }));
    }

    DeviceNames deviceName_;
};

/// All interfaces of the system under the names of their devices. Follows the kernel's devices. A device whose name is
/// not a valid interface name (`Kitnet::IntfId`) is left out; name it in the AllIntfStatusLocalDir.
class DHCPPLATFORM_EXPORT AllIntfStatusDir final : public IntfStatusDir {
public:
    using Ptr = Kcore::Ptr<AllIntfStatusDir>;

    /// Follows `kniStatus` from now on. Requires: it is not null.
    explicit AllIntfStatusDir(const Kcore::Ptr<const KernelNetInfo::Status>& kniStatus);
    ~AllIntfStatusDir() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() { return declarationOf<AllIntfStatusDir>("AllIntfStatusDir"); }

private:
    void handleDevice(const Kcore::String& deviceName);

    const Kcore::Ptr<const KernelNetInfo::Status> kniStatus_;
    const Kcore::Observers<const Kcore::String&>::Observation devices_;
};

/// Additional names that this machine gives to devices, such as "Ethernet1" for "et1". An entry here overrides one in
/// AllIntfStatusDir.
class DHCPPLATFORM_EXPORT AllIntfStatusLocalDir final : public IntfStatusDir {
public:
    using Ptr = Kcore::Ptr<AllIntfStatusLocalDir>;

    ~AllIntfStatusLocalDir() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() { return declarationOf<AllIntfStatusLocalDir>("AllIntfStatusLocalDir"); }

    /// The device need not exist.
    void deviceNameIs(const Kitnet::IntfId& intf, const Kcore::String& name) { deviceName_.entryIs(intf, name); }
    /// Removes an entry, if there is one.
    void deviceNameDel(const Kitnet::IntfId& intf) { deviceName_.entryDel(intf); }
};

}  // namespace Interface
