#pragma once

#include "DhcpLib/DhcpHdr/Enums.h"
#include "DhcpLib/OptionMap.h"

namespace DhcpLib {

struct DhcpMsgOptionTraits {
    using Type = DhcpOptionType;
    using Shape = TlvShape<U8, Pads::single>;
};

/// View of a DHCPv4 option (RFC 2132, section 2): code (1), length (1), data. A pad (code 0) is its code alone. The end
/// option has a length byte like any other as far as views are concerned.
class DHCPLIB_EXPORT DhcpMsgOption final : public TlvItem<DhcpMsgOptionTraits> {
public:
    using Ptr = Kcore::Ptr<DhcpMsgOption>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    using TlvItem::TlvItem;
    static Ptr DhcpMsgOptionIs(const PktPtr& pkt, U16 offset);
    /// As optTypeIs, for a code without a name.
    void optIs(U8 code) { writeCode(code); }

    const Kcore::TypeData& typeData() const override { return Kcore::typeDataOf<DhcpMsgOption>(); }
    static constexpr auto declaration() { return declarationOf<DhcpMsgOption>("DhcpMsgOption"); }

private:
    [[no_unique_address]] KitSlab::Tracked<DhcpMsgOption> tracked_;
};

DHCPLIB_EXPORT DhcpMsgOption::Ptr dhcpMsgOptionFactory(const PktPtr& pkt, U16 offset);

struct DhcpInformationSubOptionTraits {
    using Type = DhcpInformationSubOptionType;
    using Shape = SubOptionShape;
};

/// View of a sub-option of the relay agent information option (RFC 3046, section 2.0): code (1), length (1), data.
/// There are no pads here: code 0 is an ordinary code.
class DHCPLIB_EXPORT DhcpInformationSubOption final : public TlvItem<DhcpInformationSubOptionTraits> {
public:
    using Ptr = Kcore::Ptr<DhcpInformationSubOption>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    using TlvItem::TlvItem;
    static Ptr DhcpInformationSubOptionIs(const PktPtr& pkt, U16 offset);

    const Kcore::TypeData& typeData() const override { return Kcore::typeDataOf<DhcpInformationSubOption>(); }
    static constexpr auto declaration() { return declarationOf<DhcpInformationSubOption>("DhcpInformationSubOption"); }

private:
    [[no_unique_address]] KitSlab::Tracked<DhcpInformationSubOption> tracked_;
};

DHCPLIB_EXPORT DhcpInformationSubOption::Ptr dhcpInformationSubOptionFactory(const PktPtr& pkt, U16 offset);

/// Calls `keep(head)` for each option that a collection over the options area at `offset` considers, from the relative
/// position `first` on, until it returns false: the walk does not stop at the end option, and ends where the packet
/// does or where an option's end, counted from `offset`, is beyond bytes(). That comparison leaves `offset` out on
/// purpose: an option may overrun the packet by up to `offset` bytes.
template <class Keep>
void walkMsgOptions(Wire::ByteView bytes, U16 offset, U16 first, Keep keep) {
    const auto inside = [&](U16 cursor) { return U32{offset} + cursor < bytes.size(); };
    walkItems<OptionShape, U16>(bytes, offset, first, inside, [&](const TlvHead<OptionShape>& head, U16 next) {
        if (next > bytes.size()) return false;
        return head.pad || keep(head);
    });
}

/// Calls `keep(head)` for each item of a region of `len` bytes that starts `header` bytes behind `base`; the walk ends
/// at an item that would pass the region.
template <class Keep>
void walkSubItems(Wire::ByteView bytes, U16 base, U16 header, U16 len, Keep keep) {
    const U32 end = U32{header} + len;
    const auto inside = [&](U16 cursor) { return cursor < end; };
    walkItems<SubOptionShape, U16>(bytes, base, header, inside, [&](const TlvHead<SubOptionShape>& head, U16 next) {
        if (next > end) return false;
        keep(head);
        return true;
    });
}

/// The options of a DHCPv4 message, by code, from `offset` (the first byte behind the magic cookie) to the packet's
/// end. The first of several options of one code is kept; pads are not, the end option is.
class DHCPLIB_EXPORT DhcpMsgOptions final : public OptionMap<DhcpMsgOption> {
public:
    using Ptr = Kcore::Ptr<DhcpMsgOptions>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    DhcpMsgOptions(const PktPtr& pkt, U16 offset) : pkt_(pkt), offset_(offset) { handleInitialized(); }
    static Ptr DhcpMsgOptionsIs(const PktPtr& pkt, U16 offset);
    void handleInitialized();

    const PktPtr& pkt() const { return pkt_; }
    U16 offset() const { return offset_; }

    const Kcore::TypeData& typeData() const override { return Kcore::typeDataOf<DhcpMsgOptions>(); }
    static constexpr auto declaration() {
        using Kcore::attribute;
        using C = DhcpMsgOptions;
        return Kcore::declare("DhcpMsgOptions", attribute("pkt", &C::pkt_), attribute("offset", &C::offset_),
                              attribute("option", [](const C& c) -> const Map& { return c.option(); }),
                              attribute("initialized", &C::initialized));
    }

private:
    PktPtr pkt_;
    U16 offset_;
    [[no_unique_address]] KitSlab::Tracked<DhcpMsgOptions> tracked_;
};

DHCPLIB_EXPORT DhcpMsgOptions::Ptr dhcpMsgOptionsFactory(const PktPtr& pkt, U16 offset);

/// The sub-options of an option 82, by code. The first of several of one code is kept; one that would pass the option's
/// end is dropped, and what follows it.
class DHCPLIB_EXPORT DhcpInformationSubOptions final : public OptionMap<DhcpInformationSubOption> {
public:
    using Ptr = Kcore::Ptr<DhcpInformationSubOptions>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    explicit DhcpInformationSubOptions(const DhcpMsgOption::Ptr& opt) : opt_(opt) { handleInitialized(); }
    static Ptr DhcpInformationSubOptionsIs(const DhcpMsgOption::Ptr& opt);
    void handleInitialized();

    const DhcpMsgOption::Ptr& opt() const { return opt_; }

    const Kcore::TypeData& typeData() const override { return Kcore::typeDataOf<DhcpInformationSubOptions>(); }
    static constexpr auto declaration() {
        using Kcore::attribute;
        using C = DhcpInformationSubOptions;
        return Kcore::declare("DhcpInformationSubOptions", attribute("opt", &C::opt_),
                              attribute("option", [](const C& c) -> const Map& { return c.option(); }),
                              attribute("initialized", &C::initialized));
    }

private:
    DhcpMsgOption::Ptr opt_;
    [[no_unique_address]] KitSlab::Tracked<DhcpInformationSubOptions> tracked_;
};

DHCPLIB_EXPORT DhcpInformationSubOptions::Ptr dhcpInformationSubOptionsFactory(const DhcpMsgOption::Ptr& opt);

}  // namespace DhcpLib
