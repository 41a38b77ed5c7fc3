#pragma once

#include <functional>
#include <list>

#include "Kcore/Types.h"

namespace Kcore {

/// Those who want to be called at each change of an object, in the order in which they came. Belongs to the object,
/// which must outlive the observations. A callback may begin and end observations, its own among them.
template <class... Args>
class Observers {
    struct Entry {
        std::function<void(Args...)> callback;
        bool ended = false;
    };

public:
    /// Lasts until it is destroyed.
    class Observation {
    public:
        ~Observation() { of_.end(entry_); }
        Observation(const Observation&) = delete;
        Observation& operator=(const Observation&) = delete;

    private:
        friend class Observers;
        Observation(const Observers& of, typename std::list<Entry>::iterator entry) : of_(of), entry_(entry) {}
        const Observers& of_;
        const typename std::list<Entry>::iterator entry_;
    };

    Observers() = default;
    Observers(const Observers&) = delete;
    Observers& operator=(const Observers&) = delete;

    [[nodiscard]] Observation observe(std::function<void(Args...)> callback) const {
        return {*this, entries_.insert(entries_.end(), Entry{std::move(callback)})};
    }
    void notify(Args... args) const {
        const Pass pass(*this);
        for (const Entry& entry : entries_)
            if (!entry.ended) entry.callback(args...);
    }

private:
    /// While one lasts, entries are marked instead of removed: the callback of an observation that ends may be running.
    class Pass {
    public:
        explicit Pass(const Observers& of) : of_(of) { ++of_.passes_; }
        ~Pass() {
            if (--of_.passes_ == 0) of_.entries_.remove_if([](const Entry& entry) { return entry.ended; });
        }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

    private:
        const Observers& of_;
    };

    void end(typename std::list<Entry>::iterator entry) const {
        if (passes_ != 0)
            entry->ended = true;
        else
            entries_.erase(entry);
    }

    mutable std::list<Entry> entries_;
    mutable U32 passes_ = 0;
};

}  // namespace Kcore
