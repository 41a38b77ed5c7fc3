#include <arpa/inet.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <optional>
#include <span>

#include "Emulation.h"
#include "FailingAllocations.h"
#include "NetNamespace.h"

using namespace DhcpTest;
using namespace Interface;
using KernelNetInfo::IntfStatus;
using Kitnet::IntfId;

namespace {

/// All objects of packet access, in a network namespace.
class PacketAccess : public NetNamespace {
protected:
    void SetUp() override {
        NetNamespace::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        kni = Kcore::makeNode<KernelNetInfo::Status>();
        all = Kcore::makeNode<AllIntfStatusDir>(kni);
        local = Kcore::makeNode<AllIntfStatusLocalDir>();
        statusManager = Kcore::makeNode<LagLocalDeviceIntfStatusManager>(all, local, devices, kni);
        manager = Kcore::makeNode<EthDevPamManager>(desired, pams, devices);
        manager->protocolIs(3);
    }

    EthDevPam::Ptr pam(const char* intf) const { return pams->ethDevPam(IntfId(intf)); }
    EthDevPam::Ptr openPam(const char* intf) const {
        desired->intfIs(IntfId(intf));
        manager->enabledIs(true);
        return pam(intf);
    }
    const IntfStatus* device(const char* intf) const { return devices->deviceIntfStatus(IntfId(intf)); }
    bool operUp(const char* intf) const { return device(intf) != nullptr && device(intf)->operUp(); }
    template <class Seen>
    void until(Seen seen) const {
        followUntil(*kni, seen);
    }

    KernelNetInfo::Status::Ptr kni;
    AllIntfStatusDir::Ptr all;
    AllIntfStatusLocalDir::Ptr local;
    DeviceIntfStatusDir::Ptr devices = Kcore::makeNode<DeviceIntfStatusDir>("devices");
    PamDesiredIntfDir::Ptr desired = Kcore::makeNode<PamDesiredIntfDir>("desired");
    EthDevPamCollection::Ptr pams = Kcore::makeNode<EthDevPamCollection>("pams");
    LagLocalDeviceIntfStatusManager::Ptr statusManager;
    EthDevPamManager::Ptr manager;
};

/// Tests that open sockets.
class PacketSockets : public PacketAccess {
protected:
    void SetUp() override {
        if (emulated) GTEST_SKIP() << "needs PACKET_AUXDATA or SO_TIMESTAMPNS";
        PacketAccess::SetUp();
    }
};

const Octets untagged = hex("02 00 00 00 00 02  02 00 00 00 00 01  08 00  45*50");

TEST_F(PacketAccess, DirectoriesFollowKernelDevices) {
    const auto status = [&](const char* name) {
        const IntfStatus* const found = kni->intfStatus().find(name);
        return found != nullptr ? *found : IntfStatus();
    };
    std::vector<std::string> changed;
    const auto observation = kni->intfStatus().observers().observe([&](const Kcore::String& name) {
        if (name != "vb") changed.push_back(name.str());
    });
    const auto changes = [&] { return std::exchange(changed, {}); };
    using Names = std::vector<std::string>;
    const U32 index = if_nametoindex("va");
    EXPECT_EQ(status("va").ifIndex(), index);
    EXPECT_TRUE(status("va").enabled() && status("va").operUp());

    ip("link set va mtu 1400");
    until([&] { return status("va").mtu() == 1400; });
    EXPECT_EQ(changes(), Names{"va"});
    // The new queue length changes nothing that is kept.
    ip("link set va txqueuelen 77 && ip link set va address 02:00:00:00:00:0a");
    until([&] { return Kcore::textOf(status("va").macAddr()) == "02:00:00:00:00:0a"; });
    EXPECT_EQ(changes(), Names{"va"});
    ip("link set vb down");
    until([&] { return !status("va").operUp(); });
    EXPECT_TRUE(status("va").enabled());
    ip("link set va down");
    until([&] { return !status("va").enabled(); });
    EXPECT_EQ(changes(), (Names{"va", "va"}));
    ip("link set va name 0x");
    until([&] { return status("0x").ifIndex() == index; });
    EXPECT_EQ(changes(), (Names{"va", "0x"}));
    EXPECT_EQ(status("va"), IntfStatus());
    ip("link del 0x");
    until([&] { return kni->intfStatus().entries().size() == 1; });  // the loopback device
    EXPECT_EQ(changes(), Names{"0x"});
}

TEST_F(PacketAccess, AnInterfaceHasTheDeviceThatTheFirstSourceNames) {
    const IntfId uplink("uplink");
    const auto index = [&] { return device("uplink") != nullptr ? device("uplink")->ifIndex() : 0; };
    statusManager->kernelOnlyInterfaceIs(uplink, "lo");
    EXPECT_EQ(index(), if_nametoindex("lo"));
    local->deviceNameIs(uplink, "va");
    EXPECT_EQ(index(), if_nametoindex("va"));
    EXPECT_EQ(statusManager->kernelOnlyInterface().size(), 1u);
    local->deviceNameDel(uplink);
    EXPECT_EQ(index(), if_nametoindex("lo"));
    statusManager->kernelOnlyInterfaceDel(uplink);
    EXPECT_EQ(index(), 0u);
}

TEST_F(PacketAccess, RecoversFromLostNotifications) {
    ip("link add vy type veth peer name vz");
    kni->handleReadable();
    EXPECT_EQ(kni->intfStatus().entries().size(), 5u);
    // Far more changes than the socket's buffer holds, so later notifications are lost: all devices are removed, then
    // two names come back.
    std::string batch;
    for (int i = 0; i < 400; ++i) batch += "link set va down\nlink set va up\n";
    ip("-batch - <<'END'\n" + batch + "link set lo up\nlink del va\nlink del vy\nEND");
    linkAdd();
    kni->handleReadable();
    EXPECT_EQ(kni->intfStatus().entries().size(), 3u);
    EXPECT_TRUE(kni->intfStatus().find("lo")->enabled());
    for (const char* name : {"va", "vb"}) {
        ASSERT_NE(kni->intfStatus().find(name), nullptr);
        EXPECT_EQ(kni->intfStatus().find(name)->ifIndex(), if_nametoindex(name));
        EXPECT_TRUE(operUp(name));
    }
    ip("link del va");
    until([&] { return kni->intfStatus().entries().size() == 1; });
}

TEST_F(PacketSockets, TagsAreDeliveredBesideTheFrame) {
    struct Row {
        const char* rule;
        Octets sent;
        Octets read;
        std::optional<std::pair<U16, U16>> tag;  // TPID, TCI
    };
    const Octets addresses = hex("02 00 00 00 00 02  02 00 00 00 00 01"), rest = hex("08 00  45*50");
    const auto tagged = [&](const char* tags) { return addresses + hex(tags) + rest; };
    const Row rows[] = {
        {"untagged", untagged, untagged, {}},
        {"tagged", tagged("81 00 A0 05"), untagged, {{0x8100, 0xa005}}},
        {"other tag value", tagged("91 00 00 05"), tagged("91 00 00 05"), {}},
        {"two tags", tagged("88 A8 00 07 81 00 00 05"), tagged("81 00 00 05"), {{0x88a8, 7}}},
    };
    const EthDevPam::Ptr va = openPam("va"), vb = openPam("vb");
    const RawSender sender("vb");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.rule);
        sender.send(row.sent);
        sender.send(lastFrame);
        const auto incoming = framesBeforeLast(*va), outgoing = framesBeforeLast(*vb);
        ASSERT_TRUE(incoming.size() == 1 && outgoing.size() == 1);
        const auto expectAsRead = [&](const Kitnet::Pkt& pkt) {
            EXPECT_EQ(bytesOf(pkt), row.read);
            EXPECT_EQ(pkt.vlanTagPresent(), row.tag.has_value());
            EXPECT_EQ(std::pair(pkt.vlanTagTpid(), pkt.vlanTagTci()), row.tag.value_or(std::pair<U16, U16>()));
        };
        expectAsRead(*incoming[0].pkt);
        EXPECT_EQ(incoming[0].intf, IntfId("va"));
        EXPECT_FALSE(incoming[0].outgoing);
        // An outgoing frame is not split: a tag stays in it.
        EXPECT_EQ(bytesOf(*outgoing[0].pkt), row.sent);
        EXPECT_EQ(outgoing[0].intf, IntfId("vb"));
        EXPECT_TRUE(outgoing[0].outgoing && !outgoing[0].pkt->vlanTagPresent());

        // A frame that is sent on as it was read arrives as it was read. The sender's own socket does not receive it.
        EXPECT_TRUE(va->sendPkt(incoming[0].pkt));
        EXPECT_TRUE(va->sendPkt(packet(lastFrame)));
        const auto returned = framesBeforeLast(*vb);
        ASSERT_EQ(returned.size(), 1u);
        expectAsRead(*returned[0].pkt);
        EXPECT_FALSE(returned[0].outgoing || va->readPkt());
    }
    EXPECT_EQ(va->received(), 2 * std::size(rows));
    EXPECT_EQ(va->sent(), 2 * std::size(rows));
    EXPECT_EQ(va->errors() + va->dropped() + vb->errors() + vb->dropped() + vb->sent(), 0u);
}

TEST_F(PacketSockets, FramesThatCannotBeSentAreCounted) {
    const EthDevPam::Ptr va = openPam("va");
    EXPECT_FALSE(va->sendPkt(nullptr) || va->sendPkt(packet(Octets(11, scratch))));
    EXPECT_FALSE(va->sendPkt(packet(Octets(1515, scratch))));
    EXPECT_TRUE(va->sendPkt(packet(Octets(1514, scratch))));
    desired->intfDel(IntfId("va"));
    EXPECT_EQ(va->fd(), -1);
    EXPECT_FALSE(va->sendPkt(packet(untagged)));
    EXPECT_FALSE(va->readPkt());
    EXPECT_EQ(va->sent(), 1u);
    EXPECT_EQ(va->errors(), 4u);
}

TEST_F(PacketSockets, SeveralFramesAreReadAtOnce) {
    for (const char* end : {"va", "vb"}) ip(std::string("link set mtu 65535 dev ") + end);
    const EthDevPam::Ptr va = openPam("va");
    const int on = 1;
    ASSERT_EQ(setsockopt(va->fd(), SOL_SOCKET, SO_TIMESTAMPNS, &on, sizeof on), 0);
    const auto now = [] { return PamFrame::Time(std::chrono::system_clock::now()); };
    const RawSender sender("vb");
    const auto begin = now();
    std::vector<Octets> sent;
    for (U8 n = 0; n < 100; ++n) {
        sent.push_back(untagged);
        sent.back().push_back(n);
        sender.send(sent.back());
        if (n == 3) sender.send(Octets(65536, scratch));  // too long
    }
    const auto expect = [&](std::size_t first, std::span<const PamFrame> frames) {
        for (std::size_t i = 0; i < frames.size(); ++i) {
            EXPECT_EQ(bytesOf(*frames[i].pkt), sent[first + i]);
            EXPECT_TRUE(frames[i].time >= begin && frames[i].time <= now());
        }
    };
    std::array<PamFrame, 70> frames;
    ASSERT_EQ(va->readPkts(std::span(frames).first(7)), 6u) << "with the one that is too long";
    expect(0, std::span(frames).first(6));
    ASSERT_TRUE(becomesReadable(va->fd()));
    ASSERT_EQ(va->readPkts(frames), 64u);
    expect(6, std::span(frames).first(64));
    EXPECT_EQ(bytesOf(*va->readPkt().pkt), sent[70]);
    ASSERT_EQ(va->readPkts(frames), 29u);
    expect(71, std::span(frames).first(29));
    EXPECT_EQ(va->readPkts(frames), 0u);
    EXPECT_EQ(va->received(), 100u);
    EXPECT_EQ(va->errors(), 1u);
}

TEST_F(PacketSockets, AFrameWithoutMemoryIsCountedAndTheOthersAreRead) {
    const EthDevPam::Ptr va = openPam("va");
    EXPECT_FALSE(va->readPkt());  // allocates what all later calls use
    const RawSender sender("vb");
    for (int failing = 0; failing < 3; ++failing) {
        for (int n = 0; n < 3; ++n) sender.send(untagged);
        std::array<PamFrame, 4> frames;
        std::size_t taken = 0;
        EXPECT_EQ(actWithFailure(failing, [&] { taken = va->readPkts(frames); }), Ending::wentOn);
        EXPECT_EQ(taken, 2u);
    }
    EXPECT_EQ(va->received(), 6u);
    EXPECT_EQ(va->errors(), 3u);
}

TEST_F(PacketSockets, SocketsFollowTheirInterface) {
    const EthDevPam::Ptr va = openPam("va"), missing = openPam("missing");
    EXPECT_EQ(missing->fd(), -1);
    EXPECT_EQ(missing->error(), "there is no such interface");
    EXPECT_EQ(missing->errorCode(), std::errc::no_such_device);

    // The socket stays open while the link is down, and gives the frames that were waiting.
    const int fd = va->fd();
    RawSender("vb").send(untagged);
    ip("link set va down");
    until([&] { return !device("va")->enabled(); });
    EXPECT_TRUE(becomesReadable(fd) && va->readPkt() && !va->readPkt());
    EXPECT_FALSE(va->sendPkt(packet(untagged)));
    EXPECT_EQ(va->fd(), fd);

    // A new device of the same name gets a new socket; the counters go on. Another interface appears meanwhile.
    ip("link del va");
    EXPECT_FALSE(va->readPkt());
    until([&] { return va->fd() == -1; });
    EXPECT_EQ(va->error(), "there is no such interface");
    linkAdd();
    ip("link add missing type veth peer name other");
    until([&] { return missing->fd() >= 0; });
    EXPECT_EQ(va->error(), "");
    RawSender("vb").send(untagged);
    EXPECT_TRUE(becomesReadable(va->fd()) && va->readPkt());
    EXPECT_EQ(va->received(), 2u);
    EXPECT_EQ(va->errors(), 1u);

    manager = {};
    EXPECT_EQ(va->fd(), -1);
    EXPECT_TRUE(pams->ethDevPam().empty());
}

TEST_F(PacketSockets, SettingsReachTheSocket) {
    desired->intfIs(IntfId("va"));
    manager->receiveBufferIs(204800);
    EXPECT_FALSE(pam("va")) << "not enabled yet";
    manager->enabledIs(true);
    const auto option = [&](int level, int name) {
        int value = 0;
        socklen_t size = sizeof value;
        EXPECT_EQ(getsockopt(pam("va")->fd(), level, name, &value, &size), 0);
        return value;
    };
    const auto protocol = [&] {
        sockaddr_ll address{};
        socklen_t size = sizeof address;
        EXPECT_EQ(getsockname(pam("va")->fd(), reinterpret_cast<sockaddr*>(&address), &size), 0);
        return ntohs(address.sll_protocol);
    };
    EXPECT_EQ(option(SOL_SOCKET, SO_RCVBUF), 2 * 204800);
    manager->protocolIs(0x0800);
    EXPECT_EQ(protocol(), 0x0800);
    manager->protocolIs(3);

    // The buffer holds a few frames; the others are counted as dropped.
    manager->receiveBufferIs(4096);
    const RawSender sender("vb");
    for (int i = 0; i < 50; ++i) sender.send(untagged);
    while (pam("va")->readPkt()) {
    }
    EXPECT_GT(pam("va")->received(), 0u);
    manager->receiveBufferIs(204800);
    EXPECT_GT(pam("va")->dropped(), 0u);
    EXPECT_EQ(pam("va")->received() + pam("va")->dropped(), 50u);
    const Kitnet::SockFilter unknownInstruction{0xffff, 0, 0, 0};
    manager->filterProgramIs({1, &unknownInstruction});
    EXPECT_EQ(pam("va")->fd(), -1);
    EXPECT_EQ(pam("va")->error(), "filter program: Invalid argument");
    manager->filterProgramIs({});
    EXPECT_GE(pam("va")->fd(), 0);
    manager->enabledIs(false);
    EXPECT_FALSE(pam("va"));
}

TEST_F(PacketSockets, AMissingPrivilegeIsNamed) {
    ASSERT_EQ(seteuid(65534), 0);
    const EthDevPam::Ptr va = openPam("va");
    ASSERT_EQ(seteuid(0), 0);
    ASSERT_TRUE(va);
    EXPECT_EQ(va->fd(), -1);
    EXPECT_EQ(va->error(), "packet socket, CAP_NET_RAW is missing: Operation not permitted");
    EXPECT_EQ(va->errorCode(), std::errc::operation_not_permitted);
    EXPECT_FALSE(va->readPkt());
    ip("link set va address 02:00:00:00:00:0a");
    until([&] { return va->fd() >= 0; });  // opening is tried again when the interface changes
    EXPECT_EQ(va->error(), "");
}

}  // namespace
