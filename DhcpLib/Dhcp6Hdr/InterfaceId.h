#pragma once

#include <optional>

#include "DhcpLib/Dhcp6Hdr/OptionView.h"
#include "Kitnet/EthAddr.h"
#include "Kitnet/IpGenAddr.h"
#include "L3/VrfName.h"

namespace DhcpLib {

/// The fields of an interface-id (option 18, RFC 8415, section 21.18). The texts point into the packet.
struct InterfaceIdFields {
    std::string_view intfName;    ///< name of the interface on which the request arrived
    std::string_view vrfName;     ///< name of its VRF
    Kitnet::IpGenAddr srcVtepIp;  ///< address of the source tunnel endpoint
    Kitnet::EthAddr srcVtepMac;   ///< MAC address of the source tunnel endpoint
};

/// Decodes the data of an interface-id, in the encoding that the toggle "DhcpRelayTunnelEncapReplies" selects:
///    off  interface name, ':', VRF name; neither may be empty, and a further ':' belongs to the VRF name
///    on   elements of code (1), length (1), value: see Dhcp6InterfaceIdCode; the last one of a code wins
/// Malformed data gives no field at all (docs/compatibility.md#one-bad-element-drops-all). An address of a wrong size
/// and a MAC of less than 6 bytes are skipped. A list of elements that reaches offset 256 is malformed.
DHCPLIB_EXPORT InterfaceIdFields decodeInterfaceId(std::string_view data);

/// Number of data bytes that Dhcp6InterfaceId::setInterfaceIdDataInPkt writes for `fields` in the selected encoding.
/// Give the option this length before that call. Empty if a name is empty, or if the data would exceed the limit of the
/// encoding: 255 bytes of elements, 65535 bytes of text.
DHCPLIB_EXPORT std::optional<U16> interfaceIdBytes(const InterfaceIdFields& fields);

/// View of an interface-id. Set its attributes, then write them to the packet with setInterfaceIdDataInPkt(). Reading
/// or assigning a VRF name of more than 100 bytes throws Kcore::RangeException.
class DHCPLIB_EXPORT Dhcp6InterfaceId final : public Dhcp6OptionView {
public:
    using Ptr = Kcore::Ptr<Dhcp6InterfaceId>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    explicit Dhcp6InterfaceId(const Dhcp6OptionPtr& opt) : Dhcp6OptionView(opt) { handleInitialized(); }
    static Ptr Dhcp6InterfaceIdIs(const Dhcp6OptionPtr& opt);
    /// Reads the option's `len` data bytes; later calls do nothing.
    void handleInitialized();

    /// Name of the interface on which the request arrived.
    const Kcore::String& intfName() const { return intfName_; }
    void intfNameIs(const Kcore::String& name) { intfName_ = name; }
    /// Name of its VRF, at most 100 bytes.
    const L3::VrfName& vrfName() const { return vrfName_; }
    void vrfNameIs(const L3::VrfName& name) { vrfName_ = name; }
    /// Unset by default. Written only if it is usable.
    const Kitnet::IpGenAddr& srcVtepIp() const { return srcVtepIp_; }
    void srcVtepIpIs(const Kitnet::IpGenAddr& address) { srcVtepIp_ = address; }
    /// All zero by default. Not written if all zero.
    const Kitnet::EthAddr& srcVtepMac() const { return srcVtepMac_; }
    void srcVtepMacIs(const Kitnet::EthAddr& address) { srcVtepMac_ = address; }

    /// Writes the option's data in the selected encoding, the elements in the order of their codes. The caller sets the
    /// option's length. Throws Tyk::InternalException and writes nothing if a name is empty ("Intf Name or Vrf Name is
    /// not set"), if an element has more than 255 bytes, or if the data does not fit ("length value exceeds
    /// pkt-length."). Offsets of elements wrap at 256, so long data overwrites the first elements
    /// (docs/compatibility.md#offsets-in-an-option-wrap-at-256).
    void setInterfaceIdDataInPkt();

    const Kcore::TypeData& typeData() const override;
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
