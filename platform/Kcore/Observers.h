#pragma once

#include <functional>
#include <list>

#include "Kcore/Types.h"

namespace Kcore {

/// The callbacks that are called at each change of an object, in the order of registration. The object owns it and must
/// outlive the observations. A callback may start and end observations, including its own.
template <class... Args>
class Observers {
    struct Entry {
        std::function<void(Args...)> callback;
        bool ended = false;
    };

public:
    /// Registration of one callback. Ends when it is destroyed.
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

    /// Registers `callback` until the returned object is destroyed.
    [[nodiscard]] Observation observe(std::function<void(Args...)> callback) const {
        return {*this, entries_.insert(entries_.end(), Entry{std::move(callback)})};
    }
    /// Calls the callbacks.
    void notify(Args... args) const {
        const Pass pass(*this);
        for (const Entry& entry : entries_)
            if (!entry.ended) entry.callback(args...);
    }

private:
    /// During a pass entries are only marked as removed, since the callback of an entry may be running.
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
