#pragma once

#include "DhcpLib/TlvItem.h"
#include "Kcore/FlatMap.h"

namespace DhcpLib {

/// Collection of item views, keyed by code. Its setters change the map only, never the packet. It is not refreshed when
/// the packet changes. The views that it hands out can be written; that changes the packet, not the map's keys.
/// `Given` is what `optionIs` takes a pointer to: `Item`, or `const Item` to accept read-only pointers as well.
/// An operation that throws leaves the collection as it was.
template <class Item, class Given = Item>
class OptionMap : public Kcore::Node, public KitSlab::SlabObject {
public:
    using Type = typename Item::Type;
    using Child = Kcore::Ptr<Item>;           ///< pointer to a view
    using Map = Kcore::FlatMap<Type, Child>;  ///< the views by code

    /// All views, in the order of the packet until entries are removed.
    const Map& option() const { return option_; }
    /// The view stored under `type`, or null.
    Child option(Type type) const {
        const Child* child = option_.find(type);
        return child != nullptr ? *child : Child{};
    }
    /// Stores `child` under `type`, in place of the present entry if there is one; a null `child` removes the entry.
    void optionIs(Type type, const Kcore::Ptr<Given>& child) {
        if (child)
            option_.insertOrAssign(type, Child::share(const_cast<Item*>(child.get())));
        else
            option_.erase(type);
    }
    /// Removes the entry and returns its view, or null.
    Child optionDel(Type type) { return option_.erase(type).value_or(Child{}); }
    void optionDelAll() { option_.clear(); }
    bool initialized() const { return initialized_; }

protected:
    /// Creates the view of the item at `at`, unless there is already one with this code.
    void keepFirst(const PktPtr& pkt, U32 code, U32 at) {
        option_.insertMade(static_cast<Type>(code), [&] { return Kcore::makeNode<Item>(pkt, static_cast<U16>(at)); });
    }
    /// True on the first call only.
    bool beginInitialization() { return !std::exchange(initialized_, true); }

private:
    Map option_;
    bool initialized_ = false;
};

}  // namespace DhcpLib
