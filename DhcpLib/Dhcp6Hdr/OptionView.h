#pragma once

#include <utility>

#include "DhcpLib/Dhcp6Hdr/Field.h"
#include "DhcpLib/Dhcp6Hdr/Options.h"

namespace DhcpLib {

/// The option that a view reads and writes through: made by its factory or taken from a Dhcp6Options.
using Dhcp6OptionPtr = Kcore::Ptr<Dhcp6Option>;

/// Base of the views over the data of an option. They do not compare positions with the option's length: bytes past the
/// packet's end read as 0, a text stops there, and a setter that would write there throws Tyk::InternalException
/// "length value exceeds pkt-length." and changes nothing. A null option reads as one in an empty packet. Every setter
/// writes the packet and the cached value. The views never write the option's code and length; use `opt()` for that.
/// Stale once the packet grows at its head.
class DHCPLIB_EXPORT Dhcp6OptionView : public Kcore::Node, public KitSlab::SlabObject {
public:
    ~Dhcp6OptionView() override;
    const Dhcp6OptionPtr& opt() const { return opt_; }
    bool initialized() const { return initialized_; }

protected:
    explicit Dhcp6OptionView(const Dhcp6OptionPtr& opt) : opt_(opt) {}

    /// True on the first call only.
    bool beginInitialization() { return !std::exchange(initialized_, true); }
    Wire::ByteView bytes() const { return opt_ ? Wire::ByteView(opt_->pkt().get()) : Wire::ByteView(); }
    /// The option's own position and length; 0 for a null option.
    U16 optAt() const { return opt_ ? opt_->offset() : U16{0}; }
    U16 optLen() const { return opt_ ? opt_->len() : U16{0}; }
    U16 position(U32 at) const { return optionPosition(optAt(), at); }
    Kitnet::Pkt& writablePkt() const {
        if (!opt_ || !opt_->pkt()) [[unlikely]]
            Wire::throwNoRoom();
        return *opt_->pkt();
    }

    template <class T, U8 fieldAt>
    void read(Field<T, fieldAt>& field) {
        field.read(bytes(), optAt());
    }
    template <class T, U8 fieldAt>
    void write(Field<T, fieldAt>& field, const T& value) {
        field.write(writablePkt(), optAt(), value);
    }
    std::string_view text(U32 at, U32 n) const { return bytes().text(position(at), n); }
    /// Stores a value that is no Field.
    template <class T>
    void store(U32 at, const T& value) {
        Wire::store(writablePkt(), position(at), value);
    }
    void requireRoom(U32 at, std::size_t n) const {
        Wire::requireRoom(writablePkt(), position(at), static_cast<U32>(n));
    }

    template <class View, class... More>
    static constexpr auto declarationOf(std::string_view name, Kcore::Attribute<More>... more) {
        return Kcore::declare(name, Kcore::attribute("opt", &View::opt), more...,
                              Kcore::attribute("initialized", &View::initialized));
    }

private:
    Dhcp6OptionPtr opt_;
    bool initialized_ = false;
};

}  // namespace DhcpLib
