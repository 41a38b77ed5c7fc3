#pragma once

#include <gtest/gtest.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "Bytes.h"
#include "Interface/Interface.h"
#include "Kcore/FileDescriptor.h"

namespace DhcpTest {

/// Whether `fd` becomes readable within ten seconds.
inline bool becomesReadable(int fd) {
    pollfd wanted{fd, POLLIN, 0};
    return ::poll(&wanted, 1, 10000) == 1;
}

/// Handles kernel messages until `seen` returns true. Some changes, such as the operational state, are reported some
/// time after the command.
template <class Seen>
void followUntil(KernelNetInfo::Status& kni, Seen seen) {
    do kni.handleReadable();
    while (!seen() && becomesReadable(kni.fd()));
    EXPECT_TRUE(seen());
}

/// Runs each test in a network namespace of its own with a veth pair "va" and "vb". Needs root; skips the test
/// otherwise.
class NetNamespace : public testing::Test {
protected:
    void SetUp() override {
        if (unshare(CLONE_NEWNET) != 0)
            GTEST_SKIP() << "needs its own network namespace, which only root can create: " << std::strerror(errno);
        if (std::system("ip -Version >/dev/null 2>&1") != 0) GTEST_SKIP() << "needs the program ip (iproute2)";
        if (std::system("ip link add va type veth peer name vb 2>/dev/null") != 0)
            GTEST_SKIP() << "needs veth devices, which the kernel does not have";
        linkUp();
    }

    static void ip(const std::string& arguments) {
        ASSERT_EQ(std::system(("ip " + arguments).c_str()), 0) << arguments;
    }
    static void linkAdd() {
        ip("link add va type veth peer name vb");
        linkUp();
    }
    /// Waits until both ends are up: before that, the kernel drops frames.
    static void linkUp() {
        const auto kni = Kcore::makeNode<KernelNetInfo::Status>();
        for (const char* end : {"va", "vb"}) quietLinkUp(end);
        followUntil(*kni,
                    [&] { return kni->intfStatus().find("va")->operUp() && kni->intfStatus().find("vb")->operUp(); });
    }
    /// Sets the device up without the frames that IPv6 sends on its own.
    static void quietLinkUp(const std::string& device) { ip("link set " + device + " addrgenmode none up"); }
};

/// Sends raw frames on a device. Receives none.
class RawSender {
public:
    explicit RawSender(const char* device) : socket_(::socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0)) {
        address_.sll_family = AF_PACKET;
        address_.sll_ifindex = static_cast<int>(if_nametoindex(device));
    }
    void send(const Octets& frame) const {
        const auto* const to = reinterpret_cast<const sockaddr*>(&address_);
        ASSERT_EQ(::sendto(socket_.get(), frame.data(), frame.size(), 0, to, sizeof address_),
                  static_cast<ssize_t>(frame.size()))
            << std::strerror(errno);
    }

private:
    Kcore::FileDescriptor socket_;
    sockaddr_ll address_{};
};

/// Marks the end of the test's frames: no test sends it for another purpose.
inline const Octets lastFrame = hex("FF*12 88 B5 00*46");

/// The frames that are waiting in front of `lastFrame`, which has been sent.
inline std::vector<Interface::PamFrame> framesBeforeLast(Interface::EthDevPam& pam) {
    std::vector<Interface::PamFrame> frames;
    while (becomesReadable(pam.fd()))
        while (auto frame = pam.readPkt()) {
            if (bytesOf(*frame.pkt) == lastFrame) return frames;
            frames.push_back(std::move(frame));
        }
    ADD_FAILURE() << "the last frame did not arrive";
    return frames;
}

}  // namespace DhcpTest
