// dhcpreceive INTERFACE [FRAMES]
//
// Receives the DHCPv4 messages of one interface and parses them, until it is interrupted. Reads up to FRAMES frames
// with one system call, 64 by default. Needs CAP_NET_RAW.

#include <poll.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "DhcpLib/DhcpParser.h"
#include "DhcpLib/DhcpSnoopingPamManager.h"
#include "Kcore/Exception.h"

namespace {

volatile std::sig_atomic_t interrupted = 0;

/// Returns whether it is a DHCP message.
bool parse(const Interface::PamFrame& frame, const Bridging::Config::Ptr& bridging) {
    try {
        return DhcpLib::PacketParser(bridging).doParse(frame.pkt, frame.intf, false);
    } catch (const Kcore::RangeException&) {  // a tag with the reserved VLAN 4095
        return false;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return std::fputs("usage: dhcpreceive INTERFACE [FRAMES]\n", stderr), 2;
    const Kitnet::IntfId intf(argv[1]);
    const auto kernel = Kcore::makeNode<KernelNetInfo::Status>();
    const auto manager = DhcpLib::pamManagerFactory("receive", Kcore::makeNode<Interface::AllIntfStatusDir>(kernel),
                                                    Kcore::makeNode<Interface::AllIntfStatusLocalDir>(), kernel);
    const auto bridging = Kcore::makeNode<Bridging::Config>();
    bridging->switchIntfConfigIs(intf)->nativeVlanIs(Bridging::VlanId(1));
    manager->pamDesiredIntfDir()->intfIs(intf);
    const Interface::EthDevPam::Ptr pam = *manager->ethDevPamCollection()->ethDevPam().find(intf);

    struct sigaction action {};
    action.sa_handler = [](int) { interrupted = 1; };
    sigaction(SIGINT, &action, nullptr);
    std::fprintf(stderr, "listening on %s\n", argv[1]);

    std::vector<Interface::PamFrame> frames(argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 64);
    unsigned long long parsed = 0;
    while (interrupted == 0) {
        pollfd readable{pam->fd(), POLLIN, 0};
        if (poll(&readable, 1, -1) < 0) continue;
        const std::size_t count = pam->readPkts(frames);
        for (std::size_t i = 0; i < count; ++i) parsed += parse(frames[i], bridging) ? 1 : 0;
    }
    std::fprintf(stderr, "parsed %llu, dropped %llu, errors %llu\n", parsed,
                 static_cast<unsigned long long>(pam->dropped()), static_cast<unsigned long long>(pam->errors()));
}
