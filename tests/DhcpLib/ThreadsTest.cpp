// Threads that share what they may share (docs/architecture.md). Meant for the thread sanitizer.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <sstream>
#include <thread>

#include "Bytes.h"
#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/DhcpHdr.h"
#include "DhcpLib/DhcpParser.h"
#include "DhcpLib/OptionParser.h"
#include "DhcpLib/Toggle.h"
#include "Emulation.h"
#include "Tyk/Toggle.h"
#include "Tyk/Trace.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

constexpr std::size_t agents = 4;
const Kitnet::IntfId port("Ethernet1");
const Octets udpFrame = hex("02*6 04*6 08 00 45 00*8 11 00 00 0A 00 00 01 0A 00 00 02 00 44 00 43 00*4");
constexpr U32 messageAt = 42;
// Never destroyed, since threads still use it while the process exits.
const Octets& discover = *new Octets(udpFrame + hex("01 01 06 00*233 63 82 53 63 35 01 01 0C 02 'ab' FF"));
const Octets solicit = hex("01 00 00 01 00 01 00 0E 00 01 00 01 00*8 02 02 00 03 00 04 00 00 00 01");

PktPtr newPacket(const Octets& bytes) { return Kitnet::globalPktManager().newPkt(bytes); }

Bridging::Config::Ptr newConfig() {
    auto config = Kcore::makeNode<Bridging::Config>();
    config->switchIntfConfigIs(port)->nativeVlanIs(Bridging::VlanId(10));
    return config;
}

/// What an agent does with a frame. All its lines are traced, and a shared type description is read.
void handleFrame(const Bridging::Config::Ptr& config) {
    const PktPtr pkt = newPacket(discover);
    PacketParser parser(config);
    ASSERT_TRUE(parser.doParse(pkt, port, false));
    EXPECT_EQ(parser.vlanId(), Bridging::VlanId(10));
    RelayRewrite request{.circuitId = "c1", .vendorSpecificSubOptIntfName = "Ethernet1"};
    request.offset = messageAt;
    EXPECT_TRUE(relayRewrite(pkt, request, RelayGeneration::preparePacketNew));
    EXPECT_EQ(config->typeData().name(), "Config");
    dhcpRelayTunnelEncapReplies();
    Tyk::getToggleState("absent", "absent.json", false);
}

/// Silences the trace of the library when it ends.
struct Traced {
    Traced() { levelIs(4); }
    ~Traced() {
        levelIs(0);
        Tyk::traceSinkIs({});
    }
    static void levelIs(int level) { Tyk::TraceHandle("DhcpLib", false).levelIs(level); }
};

class Threads : public testing::Test {
protected:
    Threads() { Kcore::ThreadControl::multiThreadedIs(true); }
};

TEST_F(Threads, ShareConfigurationTogglesTraceHandlesAndSinks) {
    const auto config = newConfig();
    const Traced traced;
    Tyk::traceSinkIs([](const Tyk::TraceLine&) {});
    std::atomic<std::size_t> running = agents;
    std::array<std::thread, agents> all;
    for (std::thread& agent : all)
        agent = std::thread([&] {
            for (int i = 0; i < 100; ++i) handleFrame(config);
            --running;
        });
    while (running != 0) {
        std::atomic<int> lines = 0;
        Tyk::traceSinkIs([&](const Tyk::TraceLine&) { ++lines; });
        Traced::levelIs(3);
        Tyk::RingTrace::levelIs(2);
        Traced::levelIs(4);
        std::ostringstream out;
        Tyk::RingTrace::dump(out);
        Tyk::RingTrace::clear();
        // Returns when `lines` is no longer used. The new sink replaces itself.
        Tyk::traceSinkIs([](const Tyk::TraceLine&) { Tyk::traceSinkIs([](const Tyk::TraceLine&) {}); });
    }
    for (std::thread& agent : all) agent.join();
    EXPECT_EQ(config->useCount(), 1u);
}

/// A packet and views of it, as one thread hands them to another.
struct Work {
    PktPtr pkt;
    Kcore::Ptr<DhcpMsgOptions> options;
    Kcore::Ptr<Dhcp6Options> options6;
};

TEST_F(Threads, HandPacketsAndViewsOnAndFreeThemElsewhere) {
    const auto live = [] {
        return Kitnet::Pkt::memAllocationTracker_.live() + DhcpMsgOption::memAllocationTracker_.live() +
               Dhcp6Option::memAllocationTracker_.live();
    };
    const U32 before = live();
    std::mutex mutex;
    std::condition_variable added;
    std::deque<Work> queue;
    std::thread consumer([&] {
        for (int i = 0; i < 2000; ++i) {
            std::unique_lock lock(mutex);
            added.wait(lock, [&] { return !queue.empty(); });
            Work work = std::move(queue.front());
            queue.pop_front();
            lock.unlock();
            EXPECT_EQ(work.options->option().size(), 3u);
            EXPECT_EQ(work.options6->option().size(), 2u);
            work.pkt->newSharedHeadData(1);
        }
    });
    for (int i = 0; i < 2000; ++i) {
        Work work{newPacket(discover), nullptr, dhcp6OptionsFactory(newPacket(solicit), 4)};
        work.options = dhcpMsgOptionsFactory(work.pkt, messageAt + 240);
        const std::lock_guard lock(mutex);
        queue.push_back(std::move(work));
        added.notify_one();
    }
    consumer.join();
    EXPECT_EQ(live(), before);
}

TEST_F(Threads, FreeViewsAfterTheThreadsOwnMemoryIsGone) {
    const U32 before = DhcpMsgOption::memAllocationTracker_.live();
    std::thread([] {
        // The first object of the thread, so the last to be destroyed.
        static thread_local Kcore::Ptr<DhcpMsgOptions> kept;
        ASSERT_EQ(kept, nullptr);
        kept = dhcpMsgOptionsFactory(newPacket(discover), messageAt + 240);
        EXPECT_EQ(kept->option().size(), 3u);
    }).join();
    EXPECT_EQ(DhcpMsgOption::memAllocationTracker_.live(), before);
}

TEST_F(Threads, MayRunWhileTheProcessExits) {
    if (emulated) GTEST_SKIP() << "the program starts itself";
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto exitAtWork = [] {
        const auto& config = *new Bridging::Config::Ptr(newConfig());  // the threads outlive all objects
        Traced::levelIs(4);
        static std::atomic<int> lines;
        Tyk::traceSinkIs([](const Tyk::TraceLine&) { ++lines; });
        for (std::size_t i = 0; i < agents; ++i)
            std::thread([&config] {
                for (;;) handleFrame(config);
            }).detach();
        while (lines < 1000) std::this_thread::yield();
        std::exit(0);
    };
    for (int i = 0; i < 5; ++i) EXPECT_EXIT(exitAtWork(), testing::ExitedWithCode(0), "^$");
}

}  // namespace
