#pragma once

#include <bit>
#include <functional>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "Kcore/Hash.h"
#include "Kcore/SmallVector.h"

namespace Kcore {

/// Tables with at most this many entries have no index.
inline constexpr std::size_t searchedInOrder = 8;

/// Hash table that stores its entries in one vector. Tables with more than a few entries are searched through an
/// open-addressed index of positions in that vector. Entries keep the order of insertion until one is removed: the last
/// entry then takes the removed one's place.
/// Insertion and removal take constant time, amortized. An operation that throws leaves the table as it was; only
/// those that add entries allocate. `KeyOf` gives an entry's key, `Entries` is the vector.
template <class Key, class Entry, class KeyOf, class Entries = std::vector<Entry>>
class FlatTable {
public:
    using value_type = Entry;  ///< type of an entry
    /// Iterator in the order of insertion. Valid until the table changes.
    using const_iterator = typename Entries::const_iterator;

    FlatTable() = default;
    FlatTable(const FlatTable&) = default;
    FlatTable(FlatTable&&) noexcept = default;
    ~FlatTable() = default;
    FlatTable& operator=(const FlatTable& other) {
        *this = FlatTable(other);
        return *this;
    }
    FlatTable& operator=(FlatTable&&) noexcept = default;

    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }
    const_iterator begin() const { return entries_.begin(); }
    const_iterator end() const { return entries_.end(); }
    void clear() {
        entries_.clear();
        index_.clear();
    }
    /// Whether there is an entry with this key.
    bool contains(const Key& key) const { return placeOf(key) != none; }

protected:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    std::size_t placeOf(const Key& key) const {
        if (index_.empty()) {
            for (std::size_t i = 0; i < entries_.size(); ++i)
                if (KeyOf{}(entries_[i]) == key) return i;
            return none;
        }
        const U32 slot = index_[slotOf(key)];
        return slot == 0 ? none : slot - 1;
    }
    /// Requires: the key is not in the table.
    void append(Entry entry) {
        static_assert(std::is_nothrow_move_constructible_v<Entry> && std::is_nothrow_move_assignable_v<Entry>);
        const std::size_t count = entries_.size() + 1;
        if (count > searchedInOrder && 2 * count > index_.size()) growIndex(count);
        if constexpr (requires { entries_.reserve(searchedInOrder); })
            if (entries_.capacity() == 0) entries_.reserve(searchedInOrder);
        entries_.push_back(std::move(entry));
        if (!index_.empty()) index_[slotOf(KeyOf{}(entries_.back()))] = static_cast<U32>(count);
    }
    Entry removeAt(std::size_t place) noexcept {
        const std::size_t last = entries_.size() - 1;
        if (!index_.empty()) {
            freeSlot(slotOf(KeyOf{}(entries_[place])));
            if (place != last) index_[slotOf(KeyOf{}(entries_[last]))] = static_cast<U32>(place + 1);
        }
        Entry removed = std::move(entries_[place]);
        if (place != last) entries_[place] = std::move(entries_[last]);
        entries_.pop_back();
        return removed;
    }

    Entries entries_;

private:
    std::size_t slotMask() const { return index_.size() - 1; }
    /// The slot where a search for the key begins.
    std::size_t homeOf(const Key& key) const { return hashOf(key) & slotMask(); }
    /// The slot that names the key's entry, or the free one where it would go.
    std::size_t slotOf(const Key& key) const {
        std::size_t slot = homeOf(key);
        while (index_[slot] != 0 && !(KeyOf{}(entries_[index_[slot] - 1]) == key)) slot = (slot + 1) & slotMask();
        return slot;
    }
    /// Frees a slot, and moves up those after it that a search would no longer reach.
    void freeSlot(std::size_t free) {
        for (std::size_t slot = (free + 1) & slotMask(); index_[slot] != 0; slot = (slot + 1) & slotMask()) {
            const std::size_t home = homeOf(KeyOf{}(entries_[index_[slot] - 1]));
            if (((slot - home) & slotMask()) < ((slot - free) & slotMask())) continue;
            index_[free] = index_[slot];
            free = slot;
        }
        index_[free] = 0;
    }
    void growIndex(std::size_t count) {
        std::vector<U32> grown(std::bit_ceil(4 * count));
        index_.swap(grown);
        for (std::size_t i = 0; i < entries_.size(); ++i)
            index_[slotOf(KeyOf{}(entries_[i]))] = static_cast<U32>(i + 1);
    }

    // Empty until there are more than `searchedInOrder` entries. Then its size is a power of two; a slot holds an
    // entry's position in `entries_` plus 1, or 0 if it is free.
    std::vector<U32> index_;
};

/// The key of a map's entry.
template <class Key, class Value>
struct FirstOfPair {
    /// The key of `entry`.
    const Key& operator()(const std::pair<Key, Value>& entry) const { return entry.first; }
};

/// A map in which keys are found, added and removed in constant time.
template <class Key, class Value>
class FlatMap : public FlatTable<Key, std::pair<Key, Value>, FirstOfPair<Key, Value>> {
    using Table = FlatTable<Key, std::pair<Key, Value>, FirstOfPair<Key, Value>>;

public:
    /// The key's value, or null. Valid until the map changes.
    const Value* find(const Key& key) const {
        const std::size_t place = this->placeOf(key);
        return place == Table::none ? nullptr : &this->entries_[place].second;
    }
    /// False, and nothing changed, if the key is present.
    bool insert(const Key& key, Value value) {
        return insertMade(key, [&] { return std::move(value); });
    }
    /// As insert, with the value that `make()` returns. Calls it only if the key is not present.
    template <class Make>
    bool insertMade(const Key& key, Make make) {
        if (this->contains(key)) return false;
        this->append({key, make()});
        return true;
    }
    /// Adds the key, or replaces its value.
    void insertOrAssign(const Key& key, Value value) {
        const std::size_t place = this->placeOf(key);
        if (place != Table::none)
            this->entries_[place].second = std::move(value);
        else
            this->append({key, std::move(value)});
    }
    /// Removes the key and returns its value. The last entry takes its place.
    std::optional<Value> erase(const Key& key) noexcept {
        const std::size_t place = this->placeOf(key);
        if (place == Table::none) return std::nullopt;
        return std::move(this->removeAt(place).second);
    }
    friend bool operator==(const FlatMap& a, const FlatMap& b) {
        if (a.size() != b.size()) return false;
        for (const auto& [key, value] : a)
            if (const Value* other = b.find(key); other == nullptr || !(*other == value)) return false;
        return true;
    }
};

/// The vector of a set. Small keys are stored in the set until it has an index, so that few of them cost no allocation.
template <class Key>
using SetEntries = std::conditional_t<std::is_trivially_copyable_v<Key> && sizeof(Key) <= sizeof(U64),
                                      SmallVector<Key, searchedInOrder>, std::vector<Key>>;

/// A set with the properties of FlatMap.
template <class Key>
class FlatSet : public FlatTable<Key, Key, std::identity, SetEntries<Key>> {
    using Table = FlatTable<Key, Key, std::identity, SetEntries<Key>>;

public:
    /// False if the key is present.
    bool insert(const Key& key) {
        if (this->contains(key)) return false;
        this->append(key);
        return true;
    }
    /// False if there was no such key. The last entry takes the removed one's place.
    bool erase(const Key& key) noexcept {
        const std::size_t place = this->placeOf(key);
        if (place == Table::none) return false;
        this->removeAt(place);
        return true;
    }
    /// Does not depend on the order of insertion.
    std::size_t hash() const {
        U64 sum = this->size();
        for (const Key& key : *this) sum += hashOf(key);
        return static_cast<std::size_t>(mixBits(sum));
    }
    friend bool operator==(const FlatSet& a, const FlatSet& b) {
        if (a.size() != b.size()) return false;
        for (const Key& key : a)
            if (!b.contains(key)) return false;
        return true;
    }
};

}  // namespace Kcore
