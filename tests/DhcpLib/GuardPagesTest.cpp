// Every capture, cut at every length: the packet ends directly in front of a page that cannot be accessed, or begins
// directly after one, or other bytes follow it. The results are the same, and an access outside of the packet ends
// the program. The usual run takes some of the lengths; with GUARD_PAGES_ALL in the environment it takes all.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>

#include "ReadMessages.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

/// Memory between two pages that cannot be accessed.
class GuardedBlocks {
public:
    enum class Place { off, atEnd, atStart };

    Place place = Place::off;

    GuardedBlocks() {
        constexpr std::size_t all = blocks * (inside + page) + page;
        void* const memory = mmap(nullptr, all, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) std::abort();
        first_ = static_cast<char*>(memory) + page;
        for (std::size_t i = 0; i < blocks; ++i)
            if (mprotect(blockAt(i), inside, PROT_READ | PROT_WRITE) != 0) std::abort();
    }
    /// Null if no block is free, or if the guards are off.
    void* take(std::size_t size) {
        if (place == Place::off || size > inside) return nullptr;
        for (std::size_t i = 0; i < blocks; ++i)
            if (!used_[i]) {
                used_[i] = true;
                return blockAt(i) + (place == Place::atEnd ? inside - size : 0);
            }
        return nullptr;
    }
    /// False if the memory is not from here.
    bool give(void* memory) {
        const auto at = static_cast<char*>(memory) - first_;
        if (at < 0 || static_cast<std::size_t>(at) >= blocks * (inside + page)) return false;
        used_[static_cast<std::size_t>(at) / (inside + page)] = false;
        return true;
    }

private:
    static constexpr std::size_t page = 65536;  // a multiple of every usual page size
    static constexpr std::size_t inside = page, blocks = 8;
    char* blockAt(std::size_t i) const { return first_ + i * (inside + page); }

    char* first_;
    bool used_[blocks] = {};
};

GuardedBlocks& guarded() {
    static GuardedBlocks blocks;
    return blocks;
}

}  // namespace

// Only the storage of packets is allocated as an array.
[[gnu::noinline]] void* operator new[](std::size_t size) {
    if (void* const block = guarded().take(size)) return block;
    if (void* const block = std::malloc(size)) return block;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete[](void* block) noexcept {
    if (!guarded().give(block)) std::free(block);
}
[[gnu::noinline]] void operator delete[](void* block, std::size_t) noexcept { operator delete[](block); }

namespace {

std::vector<Octets> framesOf(const std::filesystem::path& capture) {
    std::ifstream in(capture, std::ios::binary);
    const Octets bytes{std::istreambuf_iterator<char>(in), {}};
    std::vector<Octets> frames;
    const auto littleEndian = [&](std::size_t at) { return bytes[at] | bytes[at + 1] << 8 | bytes[at + 2] << 16; };
    for (std::size_t at = 24; at + 16 <= bytes.size();) {
        const auto size = static_cast<std::size_t>(littleEndian(at + 8));
        at += 16;
        frames.emplace_back(&bytes.at(at), &bytes.at(at) + size);
        at += size;
    }
    return frames;
}

void rewriteV4(std::string& out, const PktPtr& pkt, U32 message) {
    RelayRewrite args{.circuitId = "Et1", .remoteId = "sw1", .linkselectionId = Kitnet::IpAddr(0x0a000501)};
    args.vendorSpecificSubOptIntfName = "Et1";
    args.offset = message;
    for (const auto op : {BootpOption::bootpRequest, BootpOption::bootpReply})
        for (const auto generation : {RelayGeneration::preparePacketNew, RelayGeneration::preparePacket}) {
            args.op = op;
            const auto verdict = relayRewriteCheck(pkt, args, generation).verdict;
            if (verdict != RelayRewriteVerdict::assertion) out += std::to_string(relayRewrite(pkt, args, generation));
            out.append(pkt->data(), pkt->data() + pkt->bytes());
        }
    out += std::to_string(removeInfoOption(pkt, message).options) + std::to_string(setServerId(pkt, {}));
}

/// All results for one packet, as text.
std::string resultsOf(const PktPtr& pkt, U32 message, bool v6) {
    std::string out;
    try {
        v6 ? readV6(out, pkt, message) : readV4(out, pkt, message);
    } catch (const Kcore::RangeException& refusal) {
        out += refusal.what();
    }
    if (!v6) rewriteV4(out, pkt, message);
    return out;
}

PktPtr followedBy(const Octets& bytes, U8 junk) {
    PktPtr pkt = packet(bytes + Octets(Kitnet::Pkt::guardBytes, junk), Kitnet::Pkt::Storage::roomy);
    pkt->delSharedTailData(Kitnet::Pkt::guardBytes);
    return pkt;
}

void checkCut(const Octets& cut, U32 message, bool v6) {
    const std::string expected = resultsOf(packet(cut), message, v6);
    for (const U8 junk : {U8{0x00}, U8{0xaa}, U8{0xff}})
        ASSERT_EQ(resultsOf(followedBy(cut, junk), message, v6), expected) << "followed by " << unsigned{junk};
    for (const auto place : {GuardedBlocks::Place::atEnd, GuardedBlocks::Place::atStart}) {
        guarded().place = place;
        const std::string guardedResults = resultsOf(packet(cut), message, v6);
        guarded().place = GuardedBlocks::Place::off;
        ASSERT_EQ(guardedResults, expected);
    }
}

TEST(GuardPages, AroundEveryCaptureCutAtEveryLength) {
    const std::size_t step = std::getenv("GUARD_PAGES_ALL") != nullptr ? 1 : 151;
    std::size_t frames = 0, cuts = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(DHCPLIB_TEST_DATA "/captures")) {
        if (entry.path().extension() != ".pcap") continue;
        for (const Octets& frame : framesOf(entry.path())) {
            PacketParser parser(config());
            Dhcp6PacketParser parser6(config());
            bool v4 = false;
            try {
                v4 = parser.doParse(packet(frame), accessPort, false);
                parser6.doParseDhcp6(packet(frame), accessPort);
            } catch (const Kcore::RangeException&) {  // a reserved VLAN
            }
            const bool v6 = parser6.isIp6();
            const U32 message = v4 ? parser.offset() : v6 ? parser6.etherHdrLen() + 48u : 42u;
            // The lengths shift from frame to frame, so that the usual run takes all kinds of them.
            for (std::size_t n = frames++ % step; n <= frame.size(); n += step, ++cuts)
                checkCut(first(frame, n), message, v6);
            if (HasFatalFailure()) FAIL() << entry.path() << ", frame of " << frame.size() << " bytes";
        }
    }
    EXPECT_GE(frames, 300u);
    std::printf("%zu frames, %zu packets, each in 6 places\n", frames, cuts);
}

}  // namespace
