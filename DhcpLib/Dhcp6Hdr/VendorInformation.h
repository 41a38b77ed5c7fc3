#pragma once

#include "DhcpLib/Dhcp6Hdr/OptionView.h"
#include "Kitnet/IpAddr.h"

namespace DhcpLib {

/// View of a vendor-specific information option (option 17, RFC 8415, section 21.17):
///    option offset  4  enterprise number (4)     8  sub-options of that enterprise
/// The caller checks the number, for example against Dhcp6Const::cableLabs_entno.
class DHCPLIB_EXPORT Dhcp6VSI final : public Dhcp6OptionView {
public:
    using Ptr = Kcore::Ptr<Dhcp6VSI>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    explicit Dhcp6VSI(const Dhcp6OptionPtr& opt) : Dhcp6OptionView(opt) { handleInitialized(); }
    static Ptr Dhcp6VSIIs(const Dhcp6OptionPtr& opt);
    /// Reads the enterprise number; later calls do nothing.
    void handleInitialized();

    /// The IANA enterprise number.
    U32 entno() const { return entno_.value; }
    void entnoIs(U32 entno) { write(entno_, entno); }

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return declarationOf<Dhcp6VSI>("Dhcp6VSI", Kcore::attribute("entno", &Dhcp6VSI::entno));
    }

private:
    Field<U32, Dhcp6Const::entno_offset> entno_;
    [[no_unique_address]] KitSlab::Tracked<Dhcp6VSI> tracked_;
};

DHCPLIB_EXPORT Dhcp6VSI::Ptr dhcp6VSIFactory(const Dhcp6OptionPtr& opt);

struct CableLabsSubOptionTraits {
    using Type = CableLabsSubOptionType;
    using Shape = Option6Shape;
};

/// View of a CableLabs sub-option: code (2), length (2), data. The data of `ccapCoresOpt` (61) are IPv6 addresses.
class DHCPLIB_EXPORT CableLabsSubOption final : public TlvItem<CableLabsSubOptionTraits> {
public:
    using Ptr = Kcore::Ptr<CableLabsSubOption>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    using TlvItem::TlvItem;
    static Ptr CableLabsSubOptionIs(const PktPtr& pkt, U16 offset);
    /// Writes an address at sub-option offset `fieldOffset`, of which only the low 8 bits count. The offset of CCAP
    /// core i is 4 + 16 * i. Throws Tyk::InternalException "length value exceeds pkt-length." if it does not fit.
    void ip6AddrIs(const Kitnet::Ip6Addr& address, U16 fieldOffset);

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return declarationOf<CableLabsSubOption>(
            "CableLabsSubOption", Kcore::constant("ip6AddrIs", std::string_view("(address, fieldOffset)")));
    }

private:
    [[no_unique_address]] KitSlab::Tracked<CableLabsSubOption> tracked_;
};

DHCPLIB_EXPORT CableLabsSubOption::Ptr cableLabsSubOptionFactory(const PktPtr& pkt, U16 offset);

/// The CableLabs sub-options by code, from `offset` to the packet's end; the length of the vendor option is not
/// consulted. The last one of a code is kept, code 0 is an ordinary code, and a sub-option may pass the packet's end
/// (docs/compatibility.md#code-0-ends-the-area).
class DHCPLIB_EXPORT CableLabsSubOptions final : public OptionMap<CableLabsSubOption> {
public:
    using Ptr = Kcore::Ptr<CableLabsSubOptions>;
    using HN_Option = Map::value_type;  ///< an entry of `option`
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    CableLabsSubOptions(const PktPtr& pkt, U16 offset) : pkt_(pkt), offset_(offset) { handleInitialized(); }
    static Ptr CableLabsSubOptionsIs(const PktPtr& pkt, U16 offset);
    void handleInitialized();

    const PktPtr& pkt() const { return pkt_; }
    U16 offset() const { return offset_; }

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using C = CableLabsSubOptions;
        return Kcore::declare("CableLabsSubOptions", attribute("pkt", &C::pkt_), attribute("offset", &C::offset_),
                              attribute("option", [](const C& c) { return c.option(); }),
                              attribute("initialized", &C::initialized));
    }

private:
    PktPtr pkt_;
    U16 offset_;
    [[no_unique_address]] KitSlab::Tracked<CableLabsSubOptions> tracked_;
};

DHCPLIB_EXPORT CableLabsSubOptions::Ptr cableLabsSubOptionsFactory(const PktPtr& pkt, U16 offset);

}  // namespace DhcpLib
