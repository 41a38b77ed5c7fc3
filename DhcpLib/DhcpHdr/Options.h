#pragma once

#include "DhcpLib/DhcpHdr/Const.h"
#include "DhcpLib/DhcpHdr/Enums.h"
#include "DhcpLib/OptionMap.h"

namespace DhcpLib {

struct DhcpMsgOptionTraits {
    using Type = DhcpOptionType;
    using Shape = TlvShape<U8, Pads::single>;  ///< pads are counted one by one
};

/// View of a DHCPv4 option (RFC 2132, section 2): code (1), length (1), data. A pad (code 0) has a code only. Views
/// read a length byte of the end option like of any other.
class DHCPLIB_EXPORT DhcpMsgOption final : public TlvItem<DhcpMsgOptionTraits> {
public:
    using Ptr = Kcore::Ptr<DhcpMsgOption>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    using TlvItem::TlvItem;
    static Ptr DhcpMsgOptionIs(const PktPtr& pkt, U16 offset);
    /// As optTypeIs, for any code.
    void optIs(U8 code) { writeCode(code); }

    const Kcore::TypeData& typeData() const override;
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
/// There are no pads: code 0 is an ordinary code.
class DHCPLIB_EXPORT DhcpInformationSubOption final : public TlvItem<DhcpInformationSubOptionTraits> {
public:
    using Ptr = Kcore::Ptr<DhcpInformationSubOption>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    using TlvItem::TlvItem;
    static Ptr DhcpInformationSubOptionIs(const PktPtr& pkt, U16 offset);

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() { return declarationOf<DhcpInformationSubOption>("DhcpInformationSubOption"); }

private:
    [[no_unique_address]] KitSlab::Tracked<DhcpInformationSubOption> tracked_;
};

DHCPLIB_EXPORT DhcpInformationSubOption::Ptr dhcpInformationSubOptionFactory(const PktPtr& pkt, U16 offset);

/// Calls `keep(head)` for each option of the options area at `offset`, from the relative position `first` on, until it
/// returns false. The walk does not stop at the end option (docs/compatibility.md#collections-ignore-the-end-option).
/// It ends at the packet's end, and at an option whose end, counted from `offset`, exceeds bytes()
/// (docs/compatibility.md#overrun-within-offset).
template <class Keep>
void walkMsgOptions(Wire::ByteView bytes, U16 offset, U16 first, Keep keep) {
    const auto inside = [&](U16 cursor) { return U32{offset} + cursor < bytes.size(); };
    walkItems<OptionShape, U16>(bytes, offset, first, inside, [&](const TlvHead<OptionShape>& head, U16 next) {
        if (next > bytes.size()) return false;
        return head.pad || keep(head);
    });
}

/// Calls `keep(head)` for each item of a region of `len` bytes that starts `header` bytes after `base`. The walk ends
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

/// The options of a DHCPv4 message by code, from `offset` (the byte after the magic cookie) to the packet's end. The
/// first option of a code is kept. Pads are not stored; the end option is.
class DHCPLIB_EXPORT DhcpMsgOptions final : public OptionMap<DhcpMsgOption> {
public:
    using Ptr = Kcore::Ptr<DhcpMsgOptions>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    DhcpMsgOptions(const PktPtr& pkt, U16 offset) : pkt_(pkt), offset_(offset) { handleInitialized(); }
    static Ptr DhcpMsgOptionsIs(const PktPtr& pkt, U16 offset);
    void handleInitialized();

    const PktPtr& pkt() const { return pkt_; }
    U16 offset() const { return offset_; }

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using C = DhcpMsgOptions;
        return Kcore::declare("DhcpMsgOptions", attribute("pkt", &C::pkt_), attribute("offset", &C::offset_),
                              attribute("option", [](const C& c) { return c.option(); }),
                              attribute("initialized", &C::initialized));
    }

private:
    PktPtr pkt_;
    U16 offset_;
    [[no_unique_address]] KitSlab::Tracked<DhcpMsgOptions> tracked_;
};

DHCPLIB_EXPORT DhcpMsgOptions::Ptr dhcpMsgOptionsFactory(const PktPtr& pkt, U16 offset);

/// The sub-options of an option 82 by code. The first one of a code is kept. The walk ends at a sub-option that would
/// pass the option's end.
class DHCPLIB_EXPORT DhcpInformationSubOptions final : public OptionMap<DhcpInformationSubOption> {
public:
    using Ptr = Kcore::Ptr<DhcpInformationSubOptions>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    explicit DhcpInformationSubOptions(const DhcpMsgOption::Ptr& opt) : opt_(opt) { handleInitialized(); }
    static Ptr DhcpInformationSubOptionsIs(const DhcpMsgOption::Ptr& opt);
    void handleInitialized();

    const DhcpMsgOption::Ptr& opt() const { return opt_; }

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using C = DhcpInformationSubOptions;
        return Kcore::declare("DhcpInformationSubOptions", attribute("opt", &C::opt_),
                              attribute("option", [](const C& c) { return c.option(); }),
                              attribute("initialized", &C::initialized));
    }

private:
    DhcpMsgOption::Ptr opt_;
    [[no_unique_address]] KitSlab::Tracked<DhcpInformationSubOptions> tracked_;
};

DHCPLIB_EXPORT DhcpInformationSubOptions::Ptr dhcpInformationSubOptionsFactory(const DhcpMsgOption::Ptr& opt);

}  // namespace DhcpLib
