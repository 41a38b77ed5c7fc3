#pragma once

#include "DhcpLib/Dhcp6Hdr/Enums.h"
#include "DhcpLib/Dhcp6Hdr/Overlays.h"
#include "DhcpLib/OptionMap.h"

namespace DhcpLib {

struct Dhcp6OptionTraits {
    using Type = Dhcp6OptionType;
    using Shape = Option6Shape;
};

/// View of a DHCPv6 option (RFC 8415, section 21.1): code (2), length (2), data.
class DHCPLIB_EXPORT Dhcp6Option final : public TlvItem<Dhcp6OptionTraits> {
public:
    using Ptr = Kcore::Ptr<Dhcp6Option>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    using TlvItem::TlvItem;
    static Ptr Dhcp6OptionIs(const PktPtr& pkt, U16 offset);

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() { return declarationOf<Dhcp6Option>("Dhcp6Option"); }

private:
    [[no_unique_address]] KitSlab::Tracked<Dhcp6Option> tracked_;
};

DHCPLIB_EXPORT Dhcp6Option::Ptr dhcp6OptionFactory(const PktPtr& pkt, U16 offset);

/// Calls `keep(head)` for each option of the options area at `offset`, until it returns false. The walk ends at code 0,
/// at the packet's end, and at an option whose end, counted from `offset`, exceeds bytes(). An option may therefore
/// overrun the packet by up to `offset` bytes (docs/compatibility.md#overrun-within-offset).
template <class Keep>
void walkDhcp6Options(Wire::ByteView bytes, U16 offset, Keep keep) {
    const auto inside = [&](U16 cursor) { return U32{offset} + cursor < bytes.size(); };
    walkItems<Option6Shape, U16>(bytes, offset, 0, inside, [&](const TlvHead<Option6Shape>& head, U16 next) {
        return head.code != 0 && next <= bytes.size() && keep(head);
    });
}

/// The options of a DHCPv6 message, by code, from `offset` (message + reghdr_size or relayhdr_size) to the packet's
/// end. The first option of each code is kept; code 0 ends the area. Empty for a null packet.
class DHCPLIB_EXPORT Dhcp6Options final : public OptionMap<Dhcp6Option, const Dhcp6Option> {
public:
    using Ptr = Kcore::Ptr<Dhcp6Options>;
    using HN_Option = Map::value_type;  ///< an entry of `option`
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    Dhcp6Options(const PktPtr& pkt, U16 offset) : pkt_(pkt), offset_(offset) { handleInitialized(); }
    static Ptr Dhcp6OptionsIs(const PktPtr& pkt, U16 offset);
    void handleInitialized();

    const PktPtr& pkt() const { return pkt_; }
    U16 offset() const { return offset_; }
    /// Overlay on the option stored under userClass (15) or vendorOpts (17); null if there is none.
    Dhcp6OverlayPtr<Dhcp6UserClassOption> userClassOption() const;
    /// As userClassOption(), for vendorOpts (17).
    Dhcp6OverlayPtr<Dhcp6VendorSpecificInformationOption> vendorSpecificInformationOption() const;

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using C = Dhcp6Options;
        return Kcore::declare("Dhcp6Options", attribute("pkt", &C::pkt_), attribute("offset", &C::offset_),
                              attribute("option", [](const C& c) { return c.option(); }),
                              attribute("userClassOption", &C::userClassOption),
                              attribute("vendorSpecificInformationOption", &C::vendorSpecificInformationOption),
                              attribute("initialized", &C::initialized));
    }

private:
    PktPtr pkt_;
    U16 offset_;
    [[no_unique_address]] KitSlab::Tracked<Dhcp6Options> tracked_;
};

DHCPLIB_EXPORT Dhcp6Options::Ptr dhcp6OptionsFactory(const PktPtr& pkt, U16 offset);

}  // namespace DhcpLib
