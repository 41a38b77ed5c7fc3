#pragma once

#include <algorithm>
#include <limits>
#include <utility>

#include "DhcpLib/ItemTable.h"
#include "DhcpLib/TlvItem.h"

namespace DhcpLib {

/// Collection of item views, keyed by code. Its setters change the map only, never the packet. It is not refreshed when
/// the packet changes: a view that it creates later has the code and the length that the collection has read. The
/// views that it hands out can be written; that changes the packet, not the map's keys.
/// `Given` is what `optionIs` takes a pointer to: `Item`, or `const Item` to accept read-only pointers as well.
/// An operation that throws leaves the collection as it was. Reading a collection may create views, so it is used by
/// one thread at a time, like its packet.
template <class Item, class Given = Item>
class OptionMap : public Kcore::Node, public KitSlab::SlabObject {
public:
    using Type = typename Item::Type;
    using Child = Kcore::Ptr<Item>;  ///< pointer to a view
    using Map = ItemEntries<Item>;   ///< the views by code

    /// All views, in the order of the packet until entries are removed. A loop over them may outlive the collection.
    Map option() const { return Map(table_); }
    /// The view stored under `type`, or null.
    Child option(Type type) const {
        const auto* const entry = table_->find(type);
        return entry != nullptr ? entry->second : Child{};
    }
    /// Stores `child` under `type`, in place of the present entry if there is one; a null `child` removes the entry.
    void optionIs(Type type, const Kcore::Ptr<Given>& child) {
        if (child)
            table_->insertOrAssign(type, Child::share(const_cast<Item*>(child.get())));
        else
            table_->erase(type);
    }
    /// Removes the entry and returns its view, or null.
    Child optionDel(Type type) {
        Child child = option(type);
        table_->erase(type);
        return child;
    }
    void optionDelAll() { table_->clear(); }
    bool initialized() const { return initialized_; }

protected:
    using Keeps = typename ItemTable<Item>::Keeps;

    /// Adds the items of a packet. `walk(visit)` calls `visit(head)` for each of them. It is called twice: counting the
    /// items first saves the moves of a growing table.
    template <Keeps which = Keeps::first, class Walk>
    void keepItems(const PktPtr& pkt, Walk walk) {
        constexpr std::size_t mostCodes = std::numeric_limits<typename Item::Width>::max() + std::size_t{1};
        std::size_t count = 0;
        walk([&count](const auto&) {
            ++count;
            return true;
        });
        table_->pktIs(pkt);
        table_->reserve(std::min(count, mostCodes));
        walk([this](const auto& head) {
            table_->template keep<which>({static_cast<U16>(head.at), head.code, head.len});
            return true;
        });
    }
    /// True on the first call only.
    bool beginInitialization() { return !std::exchange(initialized_, true); }

private:
    const Kcore::Ptr<ItemTable<Item>> table_ = Kcore::makeNode<ItemTable<Item>>();
    bool initialized_ = false;
};

}  // namespace DhcpLib
