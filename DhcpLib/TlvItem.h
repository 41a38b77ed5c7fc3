#pragma once

#include "DhcpLib/PacketView.h"
#include "DhcpLib/Walk.h"

namespace DhcpLib {

/// View of one code/length/data item at `offset` of a packet. `Traits` gives `Type`, the enumeration that names the
/// codes, and `Shape`, the layout.
///    offset 0                code
///    offset sizeof(code)     length, of the data only
///    offset 2 sizeof(code)   data
/// The view reads code and length when it is created. Positions wrap at 65536. Stale once the packet grows at its head.
template <class Traits>
class TlvItem : public PacketView {
public:
    using Type = typename Traits::Type;
    using Shape = typename Traits::Shape;  ///< the layout, a TlvShape
    using Width = typename Shape::Width;   ///< type of code and length

    /// An item that was read before.
    struct Place {
        U16 offset;      ///< position of the code
        Width opt, len;  ///< code, and number of data bytes
    };

    TlvItem(const PktPtr& pkt, U16 offset) : PacketView(pkt), offset_(offset) { handleInitialized(); }
    /// The view of an item that is no pad. Does not read the packet.
    TlvItem(const PktPtr& pkt, const Place& place)
        : PacketView(pkt),
          offset_(place.offset),
          opt_(place.opt),
          len_(place.len),
          hasData_(true),
          initialized_(true) {}

    /// Reads the packet; later calls do nothing. Bytes past the packet's end read as 0.
    void handleInitialized() {
        if (initialized_) return;
        const auto head = headAt<Shape>(bytes(), offset_, 1);
        opt_ = head.code;
        len_ = head.len;
        hasData_ = !head.pad;
        initialized_ = true;
    }

    /// Position of the code in the packet.
    U16 offset() const { return offset_; }
    /// The code.
    Width opt() const { return opt_; }
    /// The length field: number of data bytes.
    Width len() const { return len_; }
    /// The first data byte inside the packet; null for a pad, and if the data would start past the packet's end. Valid
    /// until the packet's size changes, as is dataText().
    const U8* data() const {
        return hasData_ && pkt() && dataAt() <= pkt()->bytes() ? pkt()->data() + dataAt() : nullptr;
    }
    /// The data, cut at the packet's end.
    std::string_view dataText() const { return hasData_ ? bytes().text(dataAt(), len_) : std::string_view{}; }
    /// The code, which need not be a member of the enumeration.
    Type optType() const { return static_cast<Type>(opt_); }
    bool initialized() const { return initialized_; }

    /// Writes the code. Throws Tyk::InternalException "length value exceeds pkt-length." past the packet's end.
    void optTypeIs(Type type) { writeCode(static_cast<Width>(type)); }
    /// Writes the length. Throws Tyk::InternalException "length value exceeds pkt-length." and writes nothing if `n`
    /// data bytes would pass the packet's end.
    void lenIs(Width n) {
        requireFrontRoom(n);
        Wire::store<Width>(writablePkt(), position(sizeof(Width)), n);
        len_ = n;
    }
    /// Copies `len()` bytes from `from`, which must be readable, into the packet. The two may overlap. Throws like
    /// lenIs, and for a view of a pad.
    void dataIs(const U8* from) {
        if (!hasData_) Wire::throwNoRoom();
        requireFrontRoom(len_);
        Wire::store(writablePkt(), dataAt(), std::span<const U8>(from, len_));
    }

protected:
    U16 position(U32 at) const { return packetPosition(offset_ + at); }
    void writeCode(Width code) {
        Wire::store<Width>(writablePkt(), offset_, code);
        opt_ = code;
    }

    template <class Item, class... More>
    static constexpr auto declarationOf(std::string_view name, Kcore::Attribute<More>... more) {
        using Kcore::attribute;
        return Kcore::declare(name, attribute("pkt", &Item::pkt), attribute("offset", &Item::offset),
                              attribute("opt", &Item::opt), attribute("len", &Item::len),
                              attribute("data", &Item::dataText), attribute("optType", &Item::optType),
                              attribute("initialized", &Item::initialized), more...);
    }

private:
    U16 dataAt() const { return position(Shape::headerBytes); }
    void requireFrontRoom(U32 n) const {
        if (offset_ + Shape::headerBytes + n > writablePkt().frontBytes()) Wire::throwNoRoom();
    }

    U16 offset_;
    Width opt_ = 0;
    Width len_ = 0;
    bool hasData_ = false;
    bool initialized_ = false;
};

}  // namespace DhcpLib
