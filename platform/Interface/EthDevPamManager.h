#pragma once

#include "Interface/DeviceIntfStatusDir.h"
#include "Interface/EthDevPamCollection.h"
#include "Interface/PamDesiredIntfDir.h"

namespace Interface {

/// Gives an agent the packets of its interfaces, once it is enabled.
class DHCPPLATFORM_EXPORT PamManagerBase : public Kcore::Node {
public:
    ~PamManagerBase() override;

    bool enabled() const { return enabled_; }
    void enabledIs(bool enabled);

protected:
    /// `enabled` or a setting changed.
    virtual void handleSettings() = 0;

private:
    bool enabled_ = false;
};

/// As its base, by packet sockets. A setting that changes while it is enabled renews them, and the frames that wait
/// in them are lost: set first, then enable.
class DHCPPLATFORM_EXPORT EthDevPamManagerBase : public PamManagerBase {
public:
    ~EthDevPamManagerBase() override;

    /// Of the kind that packet(7) takes, but in host order: an EtherType, 3 for every protocol (the sockets see
    /// outgoing frames only then), 0 for none.
    U16 protocol() const { return settings_.protocol; }
    void protocolIs(U16 protocol);
    /// What the kernel gives the agent of each frame; without a program every frame, whole. The instructions must stay
    /// where they are.
    const Kitnet::SockFilterProgram& filterProgram() const { return settings_.filterProgram; }
    void filterProgramIs(const Kitnet::SockFilterProgram& program);
    /// Of each socket, in bytes of frames (the kernel doubles it for its own needs, and has a limit for it,
    /// net.core.rmem_max); 0 for the system's default.
    U32 receiveBuffer() const { return settings_.receiveBuffer; }
    void receiveBufferIs(U32 bytes);

protected:
    const PacketSocketSettings& settings() const { return settings_; }

private:
    PacketSocketSettings settings_;
};

/// Keeps a collection of packet access: one member for each desired interface while it is enabled, with a socket while
/// the interface has a device. A socket lasts while the link is down. A member without a socket says why (`error`);
/// opening it is tried again whenever its interface changes. All members leave with the manager.
class DHCPPLATFORM_EXPORT EthDevPamManager final : public EthDevPamManagerBase {
public:
    using Ptr = Kcore::Ptr<EthDevPamManager>;

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
