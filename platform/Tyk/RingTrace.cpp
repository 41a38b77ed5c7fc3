#include "Tyk/RingTrace.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <ostream>

#include "Kcore/Encoding.h"
#include "Tyk/TraceHandle.h"
#include "Tyk/internal/TimeOfDay.h"

namespace Tyk {

namespace {

using Kcore::U64;

struct Slot {
    std::chrono::system_clock::time_point time;
    std::string_view handle;  // the name of a handle lives until the process ends
    int level = 0;
    unsigned size = 0;
    char text[RingTrace::textCapacity] = {};
};
static_assert(sizeof(Slot) <= 256);

struct Ring {
    std::mutex mutex;
    U64 cleared = 0;  // sequence number of the oldest message after the last clear()
    U64 next = 0;     // sequence number of the next message
    std::array<Slot, RingTrace::capacity> slots{};

    Slot& slotOf(U64 sequence) { return slots[sequence % RingTrace::capacity]; }
    U64 oldest() const { return std::max(cleared, next - std::min<U64>(next, RingTrace::capacity)); }
};
constinit Ring ring;  // usable before any constructor has run

std::vector<RingTrace::Formatter>& registered() {
    static auto& all = *new std::vector<RingTrace::Formatter>;
    return all;
}

}  // namespace

std::atomic<int> RingTrace::level_{1};

void RingTrace::record(const TraceHandle& handle, int level, std::string_view text) {
    const auto now = std::chrono::system_clock::now();
    const std::string_view kept = text.substr(0, textCapacity);
    const std::lock_guard lock(ring.mutex);
    Slot& slot = ring.slotOf(ring.next++);
    slot.time = now;
    slot.handle = handle.name();
    slot.level = level;
    slot.size = static_cast<unsigned>(kept.size());
    std::copy(kept.begin(), kept.end(), slot.text);
}

void RingTrace::visit(const std::function<void(const Record&)>& see) {
    std::unique_lock lock(ring.mutex);
    const U64 end = ring.next;
    for (U64 sequence = 0; (sequence = std::max(sequence, ring.oldest())) < end; ++sequence) {
        const Slot copy = ring.slotOf(sequence);
        lock.unlock();  // `see` may trace
        see({sequence, copy.time, copy.handle, copy.level, {copy.text, copy.size}});
        lock.lock();
    }
}

void RingTrace::dump(std::ostream& out) {
    visit([&out](const Record& record) {
        std::string line;
        Detail::appendTimeOfDay(line, record.time);
        line.append(" ").append(record.handle).append(" ").append(std::to_string(record.level)).append(" ");
        Kcore::appendQuoted(line, record.text);
        out << line << '\n';
    });
}

void RingTrace::clear() {
    const std::lock_guard lock(ring.mutex);
    ring.cleared = ring.next;
}

void RingTrace::formatterIs(const Formatter& formatter) {
    const std::lock_guard lock(ring.mutex);
    auto& all = registered();
    const auto hasItsName = [&](const Formatter& other) { return other.name == formatter.name; };
    if (std::none_of(all.begin(), all.end(), hasItsName)) all.push_back(formatter);
}

std::vector<RingTrace::Formatter> RingTrace::formatters() {
    const std::lock_guard lock(ring.mutex);
    return registered();
}

}  // namespace Tyk
