#pragma once

#include <utility>

#include "DhcpLib/Dhcp6Hdr/Field.h"
#include "DhcpLib/Dhcp6Hdr/Options.h"

namespace DhcpLib {

/// The option under a view, for example one of a Dhcp6Options. The view does not change its code or length, but can
/// write its data.
using Dhcp6OptionPtr = Kcore::Ptr<const Dhcp6Option>;

/// Base of the views of an option's data. They do not compare positions with the option's length. Bytes past the
/// packet's end read as 0, a text stops there, and a setter that would write there throws Tyk::InternalException
/// "length value exceeds pkt-length." and changes nothing. Every setter writes the packet and the cached value. Stale
/// once the packet grows at its head.
class DHCPLIB_EXPORT Dhcp6OptionView : public Kcore::Node, public KitSlab::SlabObject {
public:
    ~Dhcp6OptionView() override;
    const Dhcp6OptionPtr& opt() const { return opt_; }
    bool initialized() const { return initialized_; }

protected:
    explicit Dhcp6OptionView(const Dhcp6OptionPtr& opt) : opt_(opt) {}

    /// True on the first call only.
    bool beginInitialization() { return !std::exchange(initialized_, true); }
    Wire::ByteView bytes() const { return Wire::ByteView(*opt_->pkt()); }
    U16 position(U32 at) const { return optionPosition(opt_->offset(), at); }

    template <class T, U8 fieldAt>
    void read(Field<T, fieldAt>& field) {
        field.read(bytes(), opt_->offset());
    }
    template <class T, U8 fieldAt>
    void write(Field<T, fieldAt>& field, const T& value) {
        field.write(*opt_->pkt(), opt_->offset(), value);
    }
    std::string_view text(U32 at, U32 n) const { return bytes().text(position(at), n); }
    /// Stores a value that is no Field.
    template <class T>
    void store(U32 at, const T& value) {
        Wire::store(*opt_->pkt(), position(at), value);
    }
    void requireRoom(U32 at, std::size_t n) const {
        Wire::requireRoom(*opt_->pkt(), position(at), static_cast<U32>(n));
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
