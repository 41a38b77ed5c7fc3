#pragma once

#include <array>

#include "Transaction.h"

namespace DhcpRelay {

/// What tells one transaction from all others, taken from a request and from its reply alike.
struct TransactionKey {
    Protocol protocol = Protocol::dhcp4;
    std::array<U8, 16> relayAddress{};  ///< giaddr or link-address: this agent's own choice
    std::array<U8, 16> client{};        ///< chaddr or peer-address
    std::array<U8, 32> id{};            ///< xid; of a relay's message its link-address and peer-address

    std::size_t hash() const { return Kcore::hashBytes(this, sizeof *this); }
    friend bool operator==(const TransactionKey&, const TransactionKey&) = default;
};
static_assert(std::has_unique_object_representations_v<TransactionKey>);

/// Where the transactions of the last while came from. A transaction belongs to the port that sent it first: until it
/// is forgotten no other port can take it over, whatever chaddr and xid a neighbour puts into its requests. Each link
/// has its own share of the memory, so that a flood on one link makes only that link's oldest forgotten.
class TransactionMemory {
public:
    struct Origin {
        Port port;
        EthAddr mac;               ///< of the client; zero where it is behind another relay
        bool foreignInfo = false;  ///< the option 82 was there before and was kept
    };

    TransactionMemory(std::size_t links, U32 transactionsOfLink, U32 seconds);

    /// False where another port has the transaction already; that port keeps it. `now` in seconds.
    bool remember(const TransactionKey& key, const Origin& origin, U32 now);
    /// Null where it is not remembered. Valid until the next call of `remember`.
    const Origin* find(const TransactionKey& key, U32 now) const;

private:
    static constexpr U32 none = 0xffffffff;

    struct Entry {
        TransactionKey key;
        Origin origin;
        U32 expires = 0;
        U32 next = none;  ///< in the chain of the bucket
        bool used = false;
    };

    U32 placeOf(const TransactionKey& key, std::size_t bucket) const;
    void unchain(U32 place);

    const U32 ofLink_, seconds_;
    std::vector<Entry> entries_;  // those of a link side by side, each used in turn
    std::vector<U32> oldest_;     // of each link, counted from its first
    std::vector<U32> buckets_;    // heads of chains
};

}  // namespace DhcpRelay
