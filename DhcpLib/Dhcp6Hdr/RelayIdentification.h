#pragma once

/// Options by which a relay agent identifies where a client's message came from. The server returns them in its reply.
#include "DhcpLib/Dhcp6Hdr/InterfaceId.h"
#include "DhcpLib/Dhcp6Hdr/RemoteId.h"

namespace DhcpLib {

/// View of a virtual subnet selection option (option 68, RFC 6607):
///    option offset  4  type (1)     5  VRF name, to the option's end
/// Reading a name of more than 100 bytes throws Kcore::RangeException.
class DHCPLIB_EXPORT Dhcp6VirtualSubnetSelection final : public Dhcp6OptionView {
public:
    using Ptr = Kcore::Ptr<Dhcp6VirtualSubnetSelection>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    explicit Dhcp6VirtualSubnetSelection(const Dhcp6OptionPtr& opt) : Dhcp6OptionView(opt) { handleInitialized(); }
    static Ptr Dhcp6VirtualSubnetSelectionIs(const Dhcp6OptionPtr& opt);
    /// Reads the option; later calls do nothing. The length of the name is computed in 8 bits: in an option of length 0
    /// it is 255, cut at the packet's end (docs/compatibility.md#text-lengths-in-8-bits).
    void handleInitialized();

    /// The format of the information; the name is text whatever it is.
    U8 vssType() const { return vssType_.value; }
    void vssTypeIs(U8 type) { write(vssType_, type); }
    /// The VRF name, at most 100 bytes.
    const L3::VrfName& vrfName() const { return vrfName_; }
    void vrfNameIs(const L3::VrfName& name);

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using V = Dhcp6VirtualSubnetSelection;
        return declarationOf<V>("Dhcp6VirtualSubnetSelection", Kcore::attribute("vssType", &V::vssType),
                                Kcore::attribute("vrfName", &V::vrfName));
    }

private:
    Field<U8, Dhcp6Const::vssType_offset> vssType_;
    L3::VrfName vrfName_;
    [[no_unique_address]] KitSlab::Tracked<Dhcp6VirtualSubnetSelection> tracked_;
};

DHCPLIB_EXPORT Dhcp6VirtualSubnetSelection::Ptr dhcp6VirtualSubnetSelectionFactory(const Dhcp6OptionPtr& opt);

/// View of a client link-layer address option (option 79, RFC 6939):
///   option offset  4  link-layer type (2)     6  MAC address (6)
class DHCPLIB_EXPORT DhcpLinkLayerAddr final : public Dhcp6OptionView {
public:
    using Ptr = Kcore::Ptr<DhcpLinkLayerAddr>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    explicit DhcpLinkLayerAddr(const Dhcp6OptionPtr& opt) : Dhcp6OptionView(opt) { handleInitialized(); }
    static Ptr DhcpLinkLayerAddrIs(const Dhcp6OptionPtr& opt);
    /// Reads the option; later calls do nothing.
    void handleInitialized();

    /// The hardware type; 1 is Ethernet.
    U16 llAddrType() const { return llAddrType_.value; }
    void llAddrTypeIs(U16 type) { write(llAddrType_, type); }
    /// The MAC address.
    const Kitnet::EthAddr& llAddr() const { return llAddr_.value; }
    void llAddrIs(const Kitnet::EthAddr& address) { write(llAddr_, address); }

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using V = DhcpLinkLayerAddr;
        return declarationOf<V>("DhcpLinkLayerAddr", Kcore::attribute("llAddrType", &V::llAddrType),
                                Kcore::attribute("llAddr", &V::llAddr));
    }

private:
    Field<U16, Dhcp6Const::llAddrType_offset> llAddrType_;
    Field<Kitnet::EthAddr, Dhcp6Const::llAddrType_offset + Dhcp6Const::llAddrType_size> llAddr_;
    [[no_unique_address]] KitSlab::Tracked<DhcpLinkLayerAddr> tracked_;
};

DHCPLIB_EXPORT DhcpLinkLayerAddr::Ptr dhcpLinkLayerAddrFactory(const Dhcp6OptionPtr& opt);

}  // namespace DhcpLib
