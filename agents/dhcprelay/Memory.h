#pragma once

#include <array>

#include "Transaction.h"

namespace DhcpRelay {

/// Identifies a transaction. A request and its reply give the same key.
struct TransactionKey {
    Protocol protocol = Protocol::dhcp4;
    std::array<U8, 16> relayAddress{};  ///< giaddr or link-address, as set by this agent
    std::array<U8, 16> client{};        ///< chaddr or peer-address
    std::array<U8, 32> id{};            ///< xid; for a message of another relay, its link-address and peer-address

    std::size_t hash() const { return Kcore::hashBytes(this, sizeof *this); }
    friend bool operator==(const TransactionKey&, const TransactionKey&) = default;
};
static_assert(std::has_unique_object_representations_v<TransactionKey>);

/// Remembers for a limited time which port each transaction came from. A transaction belongs to the port that sent it
/// first. Until it expires, another port that copies the chaddr and xid cannot take it over. Each link has its own
/// share of the memory, so a flood on one link evicts only the oldest transactions of that link.
class TransactionMemory {
public:
    struct Origin {
        Port port;
        EthAddr mac;               ///< source of the request's frame: the client, or the relay that forwarded it
        bool foreignInfo = false;  ///< the request had an option 82, which was kept
    };

    TransactionMemory(std::size_t links, U32 transactionsOfLink, U32 seconds);

    /// Returns false if the transaction belongs to another port already, and changes nothing then. `now` is in seconds.
    bool remember(const TransactionKey& key, const Origin& origin, U32 now);
    /// Null if the transaction is not remembered. The result is valid until the next call of `remember`.
    const Origin* find(const TransactionKey& key, U32 now) const;

private:
    static constexpr U32 none = 0xffffffff;

    struct Entry {
        TransactionKey key;
        Origin origin;
        U32 expires = 0;
        U32 next = none;  ///< next entry of the same bucket
        bool used = false;
    };

    U32 placeOf(const TransactionKey& key, std::size_t bucket) const;
    void unchain(U32 place);

    const U32 ofLink_, seconds_;
    std::vector<Entry> entries_;  // a ring buffer for each link, one after the other
    std::vector<U32> oldest_;     // position in the ring buffer of each link
    std::vector<U32> buckets_;    // first entry of each bucket
};

}  // namespace DhcpRelay
