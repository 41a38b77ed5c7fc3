#pragma once

#include "Kcore/FlatMap.h"
#include "Kcore/Observers.h"

namespace Kcore {

/// A map whose observers are called with the key of each entry that is added, changed or removed.
template <class Key, class Value>
class Directory {
public:
    /// All entries, in the order in which they were added.
    const FlatMap<Key, Value>& entries() const { return entries_; }
    /// The key's value, or null. Valid until the directory changes.
    const Value* find(const Key& key) const { return entries_.find(key); }
    /// Called with the key of each entry that is added, changed or removed.
    const Observers<const Key&>& observers() const { return observers_; }

    /// Calls no observer if the key has that value already. `key` is passed by value because it may refer to an entry.
    void entryIs(Key key, const Value& value) {
        if (const Value* const known = find(key); known != nullptr && *known == value) return;
        entries_.insertOrAssign(key, value);
        observers_.notify(key);
    }
    /// Removes an entry, if there is one.
    void entryDel(Key key) {
        if (entries_.erase(key)) observers_.notify(key);
    }

private:
    FlatMap<Key, Value> entries_;
    Observers<const Key&> observers_;
};

}  // namespace Kcore
