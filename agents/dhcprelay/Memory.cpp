#include "Memory.h"

#include <bit>

namespace DhcpRelay {

TransactionMemory::TransactionMemory(std::size_t links, U32 transactionsOfLink, U32 seconds)
    : ofLink_(transactionsOfLink),
      seconds_(seconds),
      entries_(links * transactionsOfLink),
      oldest_(links, 0),
      buckets_(std::bit_ceil(entries_.size() + 1), none) {}

U32 TransactionMemory::placeOf(const TransactionKey& key, std::size_t bucket) const {
    U32 place = buckets_[bucket];
    while (place != none && !(entries_[place].key == key)) place = entries_[place].next;
    return place;
}

void TransactionMemory::unchain(U32 place) {
    U32* link = &buckets_[entries_[place].key.hash() & (buckets_.size() - 1)];
    while (*link != place) link = &entries_[*link].next;
    *link = entries_[place].next;
}

bool TransactionMemory::remember(const TransactionKey& key, const Origin& origin, U32 now) {
    const std::size_t bucket = key.hash() & (buckets_.size() - 1);
    if (const U32 place = placeOf(key, bucket); place != none) {
        Entry& known = entries_[place];
        const bool holds = known.expires > now;
        if (holds && !known.origin.port.isSame(origin.port)) return false;
        if (known.origin.port.link == origin.port.link) {
            known.origin = origin;
            known.expires = now + seconds_;
            return true;
        }
        unchain(place);  // expired, and of another link's share
        known.used = false;
    }
    U32& oldest = oldest_[origin.port.link];
    const U32 place = origin.port.link * ofLink_ + oldest;
    oldest = (oldest + 1) % ofLink_;
    if (entries_[place].used) unchain(place);
    entries_[place] = {key, origin, now + seconds_, buckets_[bucket], true};
    buckets_[bucket] = place;
    return true;
}

const TransactionMemory::Origin* TransactionMemory::find(const TransactionKey& key, U32 now) const {
    const U32 place = placeOf(key, key.hash() & (buckets_.size() - 1));
    return place != none && entries_[place].expires > now ? &entries_[place].origin : nullptr;
}

}  // namespace DhcpRelay
