#pragma once

#include <bit>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "Kcore/Hash.h"

namespace Kcore {

/// Entries in one array in the order of insertion. Beyond a few entries they are found through a hash index with open
/// addressing. `KeyOf` returns an entry's key.
template <class Key, class Entry, class KeyOf>
class FlatTable {
public:
    using value_type = Entry;
    using const_iterator = typename std::vector<Entry>::const_iterator;

    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }
    const_iterator begin() const { return entries_.begin(); }
    const_iterator end() const { return entries_.end(); }
    void reserve(std::size_t n) { entries_.reserve(n); }
    void clear() {
        entries_.clear();
        index_.clear();
    }
    bool contains(const Key& key) const { return placeOf(key) != none; }

protected:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    static constexpr std::size_t searchedInOrder = 8;

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
        if (entries_.capacity() == 0) entries_.reserve(searchedInOrder);
        entries_.push_back(std::move(entry));
        if (entries_.size() <= searchedInOrder) return;
        if (2 * entries_.size() > index_.size())
            rebuildIndex();
        else
            index_[slotOf(KeyOf{}(entries_.back()))] = static_cast<U32>(entries_.size());
    }
    Entry removeAt(std::size_t place) {
        Entry removed = std::move(entries_[place]);
        entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(place));
        rebuildIndex();
        return removed;
    }

    std::vector<Entry> entries_;

private:
    /// The index slot of the key, or the free slot where it would be inserted.
    std::size_t slotOf(const Key& key) const {
        const std::size_t mask = index_.size() - 1;
        std::size_t slot = hashOf(key) & mask;
        while (index_[slot] != 0 && !(KeyOf{}(entries_[index_[slot] - 1]) == key)) slot = (slot + 1) & mask;
        return slot;
    }
    void rebuildIndex() {
        if (entries_.size() <= searchedInOrder) return index_.clear();
        index_.assign(std::bit_ceil(4 * entries_.size()), 0);
        for (std::size_t i = 0; i < entries_.size(); ++i)
            index_[slotOf(KeyOf{}(entries_[i]))] = static_cast<U32>(i + 1);
    }

    // Empty up to `searchedInOrder` entries. Then a power of two of slots, each the number of an entry counted from 1,
    // or 0 if free.
    std::vector<U32> index_;
};

template <class Key, class Value>
struct FirstOfPair {
    const Key& operator()(const std::pair<Key, Value>& entry) const { return entry.first; }
};

/// A map with lookup in constant time that keeps the order of insertion.
template <class Key, class Value>
class FlatMap : public FlatTable<Key, std::pair<Key, Value>, FirstOfPair<Key, Value>> {
    using Table = FlatTable<Key, std::pair<Key, Value>, FirstOfPair<Key, Value>>;

public:
    /// The key's value, or null. Valid until the map changes.
    const Value* find(const Key& key) const {
        const std::size_t place = this->placeOf(key);
        return place == Table::none ? nullptr : &this->entries_[place].second;
    }
    /// Returns false and changes nothing if the map has the key already.
    bool insert(const Key& key, Value value) {
        if (this->contains(key)) return false;
        this->append({key, std::move(value)});
        return true;
    }
    void insertOrAssign(const Key& key, Value value) {
        const std::size_t place = this->placeOf(key);
        if (place != Table::none)
            this->entries_[place].second = std::move(value);
        else
            this->append({key, std::move(value)});
    }
    /// Removes the key and returns its value. Linear in the size, since later entries move up.
    std::optional<Value> erase(const Key& key) {
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

/// A set with the properties of FlatMap.
template <class Key>
class FlatSet : public FlatTable<Key, Key, std::identity> {
    using Table = FlatTable<Key, Key, std::identity>;

public:
    /// Returns false if the set has the key already.
    bool insert(const Key& key) {
        if (this->contains(key)) return false;
        this->append(key);
        return true;
    }
    /// Returns false if the set does not have the key.
    bool erase(const Key& key) {
        const std::size_t place = this->placeOf(key);
        if (place == Table::none) return false;
        this->removeAt(place);
        return true;
    }
    /// Equal sets have equal hashes, whatever the order of insertion.
    std::size_t hash() const {
        U64 sum = this->size();
        for (const Key& key : *this) sum += hashOf(key);
        return mixBits(sum);
    }
    friend bool operator==(const FlatSet& a, const FlatSet& b) {
        if (a.size() != b.size()) return false;
        for (const Key& key : a)
            if (!b.contains(key)) return false;
        return true;
    }
};

}  // namespace Kcore
