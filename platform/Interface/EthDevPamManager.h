#pragma once

#include "Interface/DeviceIntfStatusDir.h"
#include "Interface/EthDevPamCollection.h"
#include "Interface/PamDesiredIntfDir.h"

namespace Interface {

/// Base of the packet access managers.
class DHCPPLATFORM_EXPORT PamManagerBase : public Kcore::Node {
public:
    ~PamManagerBase() override;

    /// Whether the manager keeps the collection up to date; false at first.
    bool enabled() const { return enabled_; }
    void enabledIs(bool enabled);

protected:
    /// Called after `enabled` or a setting has changed.
    virtual void handleSettings() = 0;

private:
    bool enabled_ = false;
};

/// Base of the managers that use packet sockets. Changing a setting while enabled creates new sockets, and frames that
/// wait in the old ones are lost: set first, then enable.
class DHCPPLATFORM_EXPORT EthDevPamManagerBase : public PamManagerBase {
public:
    ~EthDevPamManagerBase() override;

    /// The protocol as in packet(7), but in host order: an EtherType, 3 for every protocol (needed to see outgoing
    /// frames), 0 for none.
    U16 protocol() const { return settings_.protocol; }
    void protocolIs(U16 protocol);
    /// The filter of the sockets. Without a program an agent receives every frame. The instructions must stay valid.
    const Kitnet::SockFilterProgram& filterProgram() const { return settings_.filterProgram; }
    void filterProgramIs(const Kitnet::SockFilterProgram& program);
    /// Receive buffer of each socket, in bytes of frames; 0 for the system's default. The kernel doubles it for its own
    /// use and limits it to net.core.rmem_max.
    U32 receiveBuffer() const { return settings_.receiveBuffer; }
    void receiveBufferIs(U32 bytes);

protected:
    const PacketSocketSettings& settings() const { return settings_; }

private:
    PacketSocketSettings settings_;
};

/// Keeps an EthDevPamCollection up to date. While enabled, it has a member for each desired interface. The member has a
/// socket while the interface has a device, even while the link is down. A member without a socket gives the reason
/// (`error`); the manager tries again when the interface changes. Destroying the manager removes all members.
class DHCPPLATFORM_EXPORT EthDevPamManager final : public EthDevPamManagerBase {
public:
    using Ptr = Kcore::Ptr<EthDevPamManager>;

    /// A manager that is not enabled. Requires: no pointer is null.
    EthDevPamManager(const Kcore::Ptr<const PamDesiredIntfDir>& pamDesiredIntfDir,
                     const EthDevPamCollection::Ptr& ethDevPamCollection,
                     const Kcore::Ptr<const DeviceIntfStatusDir>& deviceIntfStatusDir);
    ~EthDevPamManager() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using M = EthDevPamManager;
        return Kcore::declare("EthDevPamManager", attribute("protocol", &M::protocol),
                              attribute("receiveBuffer", &M::receiveBuffer), attribute("enabled", &M::enabled));
    }

private:
    using Observation = Kcore::Observers<const Kitnet::IntfId&>::Observation;

    void handleSettings() override;
    void handleIntf(const Kitnet::IntfId& intf);
    void pamDel(const Kitnet::IntfId& intf);

    const Kcore::Ptr<const PamDesiredIntfDir> pamDesiredIntfDir_;
    const EthDevPamCollection::Ptr ethDevPamCollection_;
    const Kcore::Ptr<const DeviceIntfStatusDir> deviceIntfStatusDir_;
    const LifeTrace life_;
    const Observation desired_;
    const Observation devices_;
};

}  // namespace Interface
