#include "Kitnet/Pkt.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string_view>

#include "Kcore/Exception.h"
#include "Kcore/internal/Environment.h"
#include "Kitnet/EthAddr.h"
#include "Kitnet/IntfId.h"
#include "Kitnet/IpGenAddr.h"

namespace Kitnet {

namespace {

using Kcore::U64;

const Kcore::ModuleTypes<AddressFamily, NetU16, NetU32, UdpPort, IpProtocolNumber, IpAddr, Ip6Addr, IpGenAddr, EthAddr,
                         IntfId, Pkt>
    registration{"Kitnet"};

U32 checkedBytes(U64 n) {
    if (n > std::numeric_limits<U32>::max()) Kcore::throwException("Kitnet::Pkt::bytes > 4294967295 not allowed");
    return static_cast<U32>(n);
}

Pkt::Storage storageOfEnvironment() {
    const char* const wanted = Kcore::environmentValue("DHCPLIB_PKT_STORAGE");
    return wanted != nullptr && std::string_view(wanted) == "tight" ? Pkt::Storage::tight : Pkt::Storage::roomy;
}

}  // namespace

KitSlab::AllocationTracker Pkt::memAllocationTracker_;

Pkt::Pkt(std::span<const U8> bytes, Storage storage) : bytes_(checkedBytes(bytes.size())), mode_(storage) {
    const bool roomy = mode_ == Storage::roomy;
    move(roomy ? headRoom : 0, 0, U64{bytes_} + (roomy ? tailRoom + guardBytes : 0));
    std::copy(bytes.begin(), bytes.end(), data_);
    freeTail_ -= bytes_;
}

Pkt::~Pkt() = default;

const Kcore::TypeData& Pkt::typeData() const { return Kcore::typeDataOf<Pkt>(); }

U32 Pkt::grownBy(U32 n) const { return checkedBytes(U64{bytes_} + n); }

/// Moves the first `kept` bytes into new storage, with `head` bytes in front and `tail` zero bytes after.
void Pkt::move(U64 head, U32 kept, U64 tail) {
    const U64 total = head + kept + tail;
    if (total > static_cast<U64>(std::numeric_limits<std::ptrdiff_t>::max())) throw std::bad_alloc();
    std::unique_ptr<U8[]> storage(new U8[static_cast<std::size_t>(total)]);  // not zeroed
    U8* const data = storage.get() + static_cast<std::size_t>(head);
    std::fill_n(std::copy_n(data_, kept, data), static_cast<std::size_t>(tail), U8{0});
    storage_ = std::move(storage);
    data_ = data;
    freeTail_ = static_cast<std::size_t>(tail);
}

/// Makes sure that there are `head` free bytes in front of the packet and `tail` after it. If the storage has to move,
/// the end that grows gets as much spare room as the packet has bytes, so that growth in small steps costs linear time.
void Pkt::makeRoom(U32 head, U32 tail) {
    if (mode_ == Storage::tight) return move(head, bytes_, tail);
    const U64 headNow = freeHead(), tailNow = freeTail_ - guardBytes;
    if (head <= headNow && tail <= tailNow) return;
    const U64 grown = U64{bytes_} + head + tail;
    const auto room = [grown](U64 wanted, U64 now, U64 usual) {
        return wanted <= now ? now : wanted + std::max(usual, grown);
    };
    move(room(head, headNow, headRoom), bytes_, room(tail, tailNow, tailRoom) + guardBytes);
}

void Pkt::newSharedHeadData(U32 n) {
    const U32 grown = grownBy(n);
    makeRoom(n, 0);
    data_ -= n;
    std::fill_n(data_, n, U8{0});
    bytes_ = grown;
}

void Pkt::newSharedTailData(U32 n) {
    const U32 grown = grownBy(n);
    makeRoom(0, n);
    std::fill_n(data_ + bytes_, n, U8{0});  // not zero if the packet has shrunk before
    freeTail_ -= n;
    bytes_ = grown;
}

void Pkt::delSharedTailData(U32 n) {
    if (n > bytes_) Kcore::throwException("Kitnet::Pkt::delSharedTailData > bytes() not allowed");
    bytes_ -= n;
    freeTail_ += n;
    if (mode_ == Storage::roomy) return;
    try {
        move(0, bytes_, 0);
    } catch (const std::bad_alloc&) {
        // Keep the larger storage. An exception would come too late: callers mostly changed other bytes before.
    }
}

void Pkt::vlanTagIs(U16 tpid, U16 tci) {
    vlanTagPresent_ = true;
    vlanTagTpid_ = tpid;
    vlanTagTci_ = tci;
}

void Pkt::vlanTagDel() {
    vlanTagPresent_ = false;
    vlanTagTpid_ = vlanTagTci_ = 0;
}

Kcore::Ptr<Pkt> Pkt::Manager::newPkt(std::span<const U8> bytes) {
    return Kcore::Ptr<Pkt>::adopt(new Pkt(bytes, storage()));
}

Pkt::Manager& globalPktManager() {
    static Pkt::Manager manager(storageOfEnvironment());
    return manager;
}

}  // namespace Kitnet
