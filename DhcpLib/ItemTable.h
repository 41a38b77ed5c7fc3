#pragma once

#include <algorithm>
#include <bit>
#include <iterator>
#include <utility>
#include <vector>

#include "DhcpLib/PacketView.h"

namespace DhcpLib {

/// The items of a collection by code. It remembers where each item is, its code and its length, and creates the item's
/// view when it is first asked for. Creating every view at once made a collection of 252 options ten times as slow.
/// Shared by the collection and by the ranges that it hands out.
///
/// Entries keep the order of insertion until one is removed: the last entry then takes the removed one's place.
/// Tables of more than a few entries have an index of chains, one for the codes that are equal modulo its size. A chain
/// has at most 65536 / size entries, whatever codes a sender chooses.
/// An operation that throws leaves the table as it was.
template <class Item>
class ItemTable final : public KitSlab::SlabObject {
public:
    using Type = typename Item::Type;      ///< enumeration of the codes
    using Width = typename Item::Width;    ///< integer as wide as a code
    using Child = Kcore::Ptr<Item>;        ///< pointer to a view
    using Entry = std::pair<Type, Child>;  ///< a code and its view

    ItemTable() = default;
    ItemTable(const ItemTable&) = delete;
    ItemTable& operator=(const ItemTable&) = delete;

    /// Number of entries.
    std::size_t size() const { return slots_.size(); }
    /// Whether there is an entry of this code.
    bool contains(Type type) const { return placeOf(type) != none; }
    /// The entry at `place`, with its view.
    const Entry& entry(std::size_t place) const {
        const Slot& slot = slots_[place];
        if (!slot.entry.second) slot.entry.second = Kcore::makeNode<Item>(pkt_, slot.item);
        return slot.entry;
    }
    /// Null if there is none.
    const Entry* find(Type type) const {
        const std::size_t place = placeOf(type);
        return place == none ? nullptr : &entry(place);
    }
    /// Stores `child` under `type`, in place of the present entry if there is one.
    void insertOrAssign(Type type, Child child) {
        const std::size_t place = placeOf(type);
        if (place != none) {
            slots_[place].entry.second = std::move(child);
            return;
        }
        reserve(size() + 1);
        append(type, std::move(child), typename Item::Place{});
    }
    /// Removes the entry, if there is one.
    void erase(Type type) {
        const std::size_t place = placeOf(type);
        if (place != none) removeAt(place);
    }
    /// Removes all entries.
    void clear() {
        slots_.clear();
        chains_.clear();
    }

    /// The packet of the items that `keep` adds.
    void pktIs(const PktPtr& pkt) { pkt_ = pkt; }
    /// Makes room for `count` entries in all.
    void reserve(std::size_t count) {
        if (count > slots_.capacity()) slots_.reserve(std::max({count, 2 * slots_.size(), searchedInOrder}));
        if (count > searchedInOrder && count > chains_.size()) growIndex(count);
    }
    /// Which of two items of the same code is kept.
    enum class Keeps { first, last };
    /// Adds an item that `reserve` has made room for.
    template <Keeps which>
    void keep(const typename Item::Place& item) {
        const Type type = static_cast<Type>(item.opt);
        const std::size_t place = placeOf(type);
        if (place == none)
            append(type, Child{}, item);
        else if (which == Keeps::last)
            slots_[place].item = item;
    }

    /// Counts one more owner.
    void incUse() const { uses_.increment(); }
    /// Counts one owner less. The last one destroys the table.
    void decUse() const {
        if (uses_.decrement() == 0) delete this;
    }

private:
    struct Slot {
        Slot(Type type, Child&& child, const typename Item::Place& place)
            : entry(type, std::move(child)), item(place) {}

        mutable Entry entry;  // the view is null until it is asked for
        typename Item::Place item;
        Kcore::U32 next = 0;  // position of the next entry in the chain plus 1, or 0
    };
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    static constexpr std::size_t searchedInOrder = 8;

    static std::size_t codeOf(Type type) { return static_cast<Width>(type); }
    Kcore::U32& chainOf(Type type) { return chains_[codeOf(type) & (chains_.size() - 1)]; }

    std::size_t placeOf(Type type) const {
        if (chains_.empty()) {
            for (std::size_t i = 0; i < slots_.size(); ++i)
                if (slots_[i].entry.first == type) return i;
            return none;
        }
        Kcore::U32 link = chains_[codeOf(type) & (chains_.size() - 1)];
        while (link != 0 && slots_[link - 1].entry.first != type) link = slots_[link - 1].next;
        return link == 0 ? none : link - 1;
    }
    void append(Type type, Child&& child, const typename Item::Place& place) {
        slots_.emplace_back(type, std::move(child), place);
        if (!chains_.empty()) chain(slots_.size() - 1);
    }
    void chain(std::size_t place) {
        Slot& slot = slots_[place];
        slot.next = std::exchange(chainOf(slot.entry.first), static_cast<Kcore::U32>(place + 1));
    }
    void unchain(std::size_t place) {
        Kcore::U32* link = &chainOf(slots_[place].entry.first);
        while (*link != place + 1) link = &slots_[*link - 1].next;
        *link = slots_[place].next;
    }
    void removeAt(std::size_t place) {
        const std::size_t last = slots_.size() - 1;
        if (!chains_.empty()) {
            unchain(place);
            if (place != last) unchain(last);
        }
        if (place != last) slots_[place] = std::move(slots_[last]);
        slots_.pop_back();
        if (!chains_.empty() && place != last) chain(place);
    }
    void growIndex(std::size_t count) {
        std::vector<Kcore::U32> grown(std::bit_ceil(count));
        chains_.swap(grown);
        for (std::size_t place = 0; place < slots_.size(); ++place) chain(place);
    }

    PktPtr pkt_;
    std::vector<Slot> slots_;
    std::vector<Kcore::U32> chains_;  // of each chain the position of the first entry plus 1, or 0; a power of two
    mutable Kcore::Counter uses_{1};
};

/// The entries of a collection: pairs of a code and a view. Shares them with the collection and shows its changes. It
/// keeps them alive, so a loop may run over the entries of a collection that is gone. Changing the collection makes
/// iterators stale.
template <class Item>
class ItemEntries {
    using Table = ItemTable<Item>;

public:
    using key_type = typename Table::Type;      ///< enumeration of the codes
    using mapped_type = typename Table::Child;  ///< pointer to a view
    using value_type = typename Table::Entry;   ///< a code and its view

    /// Forward iterator. Creates the view that it is dereferenced to, if that is not done yet.
    class const_iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = typename Table::Entry;
        using difference_type = std::ptrdiff_t;
        using pointer = const value_type*;
        using reference = const value_type&;

        const_iterator() = default;
        const_iterator(const Table& table, std::size_t place) : table_(&table), place_(place) {}  ///< at `place`
        reference operator*() const { return table_->entry(place_); }
        pointer operator->() const { return &**this; }
        const_iterator& operator++() {
            ++place_;
            return *this;
        }
        const_iterator operator++(int) { return std::exchange(*this, {*table_, place_ + 1}); }
        friend bool operator==(const const_iterator&, const const_iterator&) = default;

    private:
        const Table* table_ = nullptr;
        std::size_t place_ = 0;
    };

    /// The entries of `table`, which is not null.
    explicit ItemEntries(const Kcore::Ptr<Table>& table) : table_(table) {}

    /// Number of entries.
    std::size_t size() const { return table_->size(); }
    /// Whether there is no entry.
    bool empty() const { return size() == 0; }
    /// The first entry. Valid while the collection or these entries live.
    const_iterator begin() const { return {*table_, 0}; }
    /// Behind the last entry.
    const_iterator end() const { return {*table_, size()}; }
    /// Whether there is an entry of this code.
    bool contains(key_type type) const { return table_->contains(type); }
    /// The view of the code, or null. Valid until the collection changes.
    const mapped_type* find(key_type type) const {
        const value_type* const entry = table_->find(type);
        return entry == nullptr ? nullptr : &entry->second;
    }

private:
    Kcore::Ptr<const Table> table_;
};

}  // namespace DhcpLib
