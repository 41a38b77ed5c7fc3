#pragma once

#include <optional>

#include "Kcore/FlatMap.h"
#include "Kcore/Observers.h"

namespace Kcore {

/// A map whose observers are called with the key of each entry that is added, changed or removed. If an observer
/// throws, the entry gets its old value back, so that the same change can be tried again; observers before that one
/// have seen the new value.
template <class Key, class Value>
class Directory {
public:
    /// All entries, in the order in which they were added, until one is removed.
    const FlatMap<Key, Value>& entries() const { return entries_; }
    /// The key's value, or null. Valid until the directory changes.
    const Value* find(const Key& key) const { return entries_.find(key); }
    /// Called with the key of each entry that is added, changed or removed.
    const Observers<const Key&>& observers() const { return observers_; }

    /// Calls no observer if the key has that value already. `key` is passed by value because it may refer to an entry.
    void entryIs(Key key, const Value& value) {
        const Value* const known = find(key);
        if (known != nullptr && *known == value) return;
        std::optional<Value> before;
        if (known != nullptr) before = *known;
        entries_.insertOrAssign(key, value);
        notify(key, before);
    }
    /// Removes an entry, if there is one.
    void entryDel(Key key) {
        if (std::optional<Value> before = entries_.erase(key)) notify(key, before);
    }

private:
    void notify(const Key& key, std::optional<Value>& before) {
        try {
            observers_.notify(key);
        } catch (...) {
            if (before)
                entries_.insertOrAssign(key, std::move(*before));  // needs no memory: there was room for the entry
            else
                entries_.erase(key);
            throw;
        }
    }

    FlatMap<Key, Value> entries_;
    Observers<const Key&> observers_;
};

}  // namespace Kcore
