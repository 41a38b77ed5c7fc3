#pragma once

#include <optional>
#include <vector>

#include "DhcpLib/Dhcp6Hdr/Const.h"
#include "DhcpLib/PacketView.h"
#include "Kcore/FlatMap.h"
#include "Kitnet/NetInteger.h"

namespace DhcpLib {

/// Overlay on the bytes of an option: code (2), length (2), data. It keeps the packet alive. No read passes the
/// packet's end; absent bytes read as 0. Derived overlays remember positions of items: get a new one after the packet
/// changes.
class DHCPLIB_EXPORT Dhcp6OptionNrc {
public:
    /// The overlay of the option at `offset` of `pkt`, which may be null.
    Dhcp6OptionNrc(const PktPtr& pkt, U16 offset) : pkt_(pkt), offset_(offset) {}

    /// The option's code.
    Kitnet::NetU16 optionCode() const { return field<Kitnet::NetU16>(Dhcp6Const::opttype_offset); }
    /// The option's length field: number of data bytes.
    Kitnet::NetU16 optionLen() const { return field<Kitnet::NetU16>(Dhcp6Const::optlen_offset); }

protected:
    Wire::ByteView bytes() const { return Wire::ByteView(pkt_.get()); }
    U32 position(U8 at) const { return U32{offset_} + at; }
    template <class T>
    T field(U8 at) const {
        return bytes().load<T>(position(at));
    }
    template <class Overlay, class... More>
    static constexpr auto declarationOf(std::string_view name, Kcore::Attribute<More>... more) {
        return Kcore::declare(name, Kcore::attribute("optionCode", &Overlay::optionCode),
                              Kcore::attribute("optionLen", &Overlay::optionLen), more...);
    }

public:
    static constexpr auto declaration() { return declarationOf<Dhcp6OptionNrc>("Dhcp6OptionNrc"); }

private:
    PktPtr pkt_;
    U16 offset_;
};

/// A user class option (RFC 8415, section 21.15): a list of items, each a length (2) and that many bytes.
class DHCPLIB_EXPORT Dhcp6UserClassOption final : public Dhcp6OptionNrc {
public:
    using Dhcp6OptionNrc::Dhcp6OptionNrc;

    /// The item at `index`, counted from 0, cut at the option's end; empty if there is none.
    Kcore::String userClassData(U16 index) const;

    static constexpr auto declaration() {
        return declarationOf<Dhcp6UserClassOption>("Dhcp6UserClassOption",
                                                   Kcore::constant("userClassData", std::string_view("(index)")));
    }

private:
    bool hasItemAt(U32 at) const;
    /// The position after the item.
    U32 behindItem(U32 at) const;
    void rememberPlaces() const;

    // The furthest item that was asked for, and its position relative to the first one.
    mutable U16 knownIndex_ = 0;
    mutable U32 knownAt_ = 0;
    mutable std::vector<U32> places_;  // positions of the items from the first one on; filled by rememberPlaces
};

/// A vendor-specific information option (RFC 8415, section 21.17): enterprise number (4), then a list of vendor
/// options: code (2), length (2), data.
class DHCPLIB_EXPORT Dhcp6VendorSpecificInformationOption final : public Dhcp6OptionNrc {
public:
    using Dhcp6OptionNrc::Dhcp6OptionNrc;

    /// The IANA enterprise number.
    Kitnet::NetU32 enterpriseNumber() const { return field<Kitnet::NetU32>(Dhcp6Const::entno_offset); }
    /// The data of the first vendor option `code`, cut at the option's end; empty if there is none. In an option of
    /// less than 4 bytes the search goes on to the packet's end (docs/compatibility.md#short-vendor-option).
    Kcore::String vendorOptionData(U16 code) const;

    static constexpr auto declaration() {
        using V = Dhcp6VendorSpecificInformationOption;
        return declarationOf<V>("Dhcp6VendorSpecificInformationOption",
                                Kcore::attribute("enterpriseNumber", &V::enterpriseNumber),
                                Kcore::constant("vendorOptionData", std::string_view("(code)")));
    }

private:
    U32 placeOf(U16 code) const;

    // Positions of the first vendor option of each code, as far as `searchedTo_`; relative to the first vendor option.
    mutable Kcore::FlatMap<U16, U32> places_;
    mutable U32 searchedTo_ = 0;
};

/// Read-only pointer to an overlay; null if there is no such option. The overlay lives as long as the pointer.
template <class Overlay>
class Dhcp6OverlayPtr {
public:
    Dhcp6OverlayPtr() = default;
    /// Keeps a copy of `overlay`.
    explicit Dhcp6OverlayPtr(const Overlay& overlay) : overlay_(overlay) {}

    /// The overlay, or null. Valid as long as this pointer.
    const Overlay* get() const& { return overlay_ ? &*overlay_ : nullptr; }
    const Overlay* get() const&& = delete;
    /// The overlay. Requires: it is not null.
    const Overlay* operator->() const { return get(); }
    /// The overlay. Requires: it is not null.
    const Overlay& operator*() const& { return *get(); }
    /// A copy of the overlay. Requires: it is not null.
    Overlay operator*() const&& { return *get(); }
    /// Whether there is an overlay.
    explicit operator bool() const { return overlay_.has_value(); }
    friend bool operator==(const Dhcp6OverlayPtr& p, std::nullptr_t) { return !p; }

    void appendText(std::string& out) const { out.append(overlay_ ? "present" : "null"); }

private:
    std::optional<Overlay> overlay_;
};

}  // namespace DhcpLib
