#pragma once

#include <optional>

#include "DhcpLib/Dhcp6Hdr/OptionView.h"
#include "Kitnet/EthAddr.h"
#include "Kitnet/IpGenAddr.h"
#include "L3/VrfName.h"

namespace DhcpLib {

/// What an interface-id (option 18, RFC 8415, section 21.18) says. The texts lie in the packet.
struct InterfaceIdFields {
    std::string_view intfName;
    std::string_view vrfName;
    Kitnet::IpGenAddr srcVtepIp;
    Kitnet::EthAddr srcVtepMac;
};

/// Reads the data of an interface-id in the encoding that the toggle "DhcpRelayTunnelEncapReplies" selects:
///   off  the interface name, ':' and the VRF name; neither is empty, and a further ':' belongs to the VRF name
///   on   elements, each code (1), length (1), value: see Dhcp6InterfaceIdCode; the last one of a code counts
/// What is malformed gives nothing at all. An address of an odd length and a MAC of less than 6 bytes are passed over.
/// Positions among the elements are 8 bits wide: a list in which they would wrap is malformed.
DHCPLIB_EXPORT InterfaceIdFields decodeInterfaceId(std::string_view data);

/// How many bytes of option data Dhcp6InterfaceId::setInterfaceIdDataInPkt will write for `fields` in the selected
/// encoding: the length that the option must have before that call. Empty where a name is empty, and where the data
/// would be longer than the encoding allows: 255 bytes of elements, 65535 bytes of text.
DHCPLIB_EXPORT std::optional<U16> interfaceIdBytes(const InterfaceIdFields& fields);

/// View of an interface-id. Its attributes are set on the view and reach the packet through setInterfaceIdDataInPkt().
/// A VRF name of more than 100 bytes raises Kcore::RangeException when it is read or assigned.
class DHCPLIB_EXPORT Dhcp6InterfaceId final : public Dhcp6OptionView {
public:
    using Ptr = Kcore::Ptr<Dhcp6InterfaceId>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    explicit Dhcp6InterfaceId(const Dhcp6OptionPtr& opt) : Dhcp6OptionView(opt) { handleInitialized(); }
    static Ptr Dhcp6InterfaceIdIs(const Dhcp6OptionPtr& opt);
    /// Reads the option's `len` data bytes, the first time only.
    void handleInitialized();

    const Kcore::String& intfName() const { return intfName_; }
    void intfNameIs(const Kcore::String& name) { intfName_ = name; }
    const L3::VrfName& vrfName() const { return vrfName_; }
    void vrfNameIs(const L3::VrfName& name) { vrfName_ = name; }
    /// Unset by default; only a usable address is written.
    const Kitnet::IpGenAddr& srcVtepIp() const { return srcVtepIp_; }
    void srcVtepIpIs(const Kitnet::IpGenAddr& address) { srcVtepIp_ = address; }
    /// All zero by default, and then not written.
    const Kitnet::EthAddr& srcVtepMac() const { return srcVtepMac_; }
    void srcVtepMacIs(const Kitnet::EthAddr& address) { srcVtepMac_ = address; }

    /// Writes the option's data in the selected encoding, the elements in the order of their codes. The caller sets the
    /// option's length. Throws Tyk::InternalException and writes nothing if a name is empty ("Intf Name or Vrf Name is
    /// not set"), if an element has more than 255 bytes, or if the data does not fit ("length value exceeds
    /// pkt-length."). Offsets of elements wrap at 256, so long data overwrites the first elements
    /// (docs/compatibility.md#offsets-in-an-option-wrap-at-256).
    void setInterfaceIdDataInPkt();

    const Kcore::TypeData& typeData() const override { return Kcore::typeDataOf<Dhcp6InterfaceId>(); }
    static constexpr auto declaration() {
        using Kcore::attribute;
        using V = Dhcp6InterfaceId;
        return declarationOf<V>("Dhcp6InterfaceId", attribute("intfName", &V::intfName),
                                attribute("vrfName", &V::vrfName), attribute("srcVtepIp", &V::srcVtepIp),
                                attribute("srcVtepMac", &V::srcVtepMac),
                                Kcore::constant("setInterfaceIdDataInPkt", std::string_view("()")));
    }

private:
    void writeText();
    void writeElements();

    Kcore::String intfName_;
    L3::VrfName vrfName_;
    Kitnet::IpGenAddr srcVtepIp_;
    Kitnet::EthAddr srcVtepMac_;
    [[no_unique_address]] KitSlab::Tracked<Dhcp6InterfaceId> tracked_;
};

DHCPLIB_EXPORT Dhcp6InterfaceId::Ptr dhcp6InterfaceIdFactory(const Dhcp6OptionPtr& opt);

}  // namespace DhcpLib
