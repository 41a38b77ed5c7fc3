#pragma once

#include "DhcpLib/TlvItem.h"
#include "Kcore/FlatMap.h"

namespace DhcpLib {

/// Collection of item views by code. Its setters change the map only, never the packet. It is not updated when the
/// packet changes. `Item` may be const.
template <class Item>
class OptionMap : public Kcore::Node, public KitSlab::SlabObject {
public:
    using Type = typename Item::Type;
    using Child = Kcore::Ptr<Item>;
    using Map = Kcore::FlatMap<Type, Child>;

    const Map& option() const { return option_; }
    /// The view stored under `type`, or null.
    Child option(Type type) const {
        const Child* child = option_.find(type);
        return child != nullptr ? *child : Child{};
    }
    /// Stores `child` under `type`, replacing the previous view. A null `child` removes the entry.
    void optionIs(Type type, const Child& child) {
        if (child)
            option_.insertOrAssign(type, child);
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
        const Type type = static_cast<Type>(code);
        if (!option_.contains(type)) option_.insert(type, Kcore::makeNode<Item>(pkt, static_cast<U16>(at)));
    }
    /// True on the first call only.
    bool beginInitialization() { return !std::exchange(initialized_, true); }

private:
    Map option_;
    bool initialized_ = false;
};

}  // namespace DhcpLib
