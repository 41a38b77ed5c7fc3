// Prints the DHCPv4 messages on the interfaces that the command line names, one line each: snooper eth1 eth2
// Needs CAP_NET_RAW. Interfaces may disappear and come back.

#include <poll.h>

#include <cerrno>
#include <iostream>
#include <vector>

#include "DhcpLib/DhcpParser.h"
#include "DhcpLib/DhcpSnoopingPamManager.h"
#include "Kcore/Exception.h"

namespace {

using Pams = Interface::EthDevPamCollection::Pams;

void print(const Interface::PamFrame& frame, const Bridging::Config::Ptr& bridging) {
    DhcpLib::PacketParser parser(bridging);
    try {
        if (!parser.doParse(frame.pkt, frame.intf, false)) return;
    } catch (const Kcore::RangeException&) {  // a tag with the reserved VLAN 4095
        return;
    }
    std::cout << frame.intf << (frame.outgoing ? " sends " : " receives ") << parser.dhcpMsgType() << " for "
              << parser.chaddr() << ", transaction " << parser.xid() << ", VLAN " << parser.vlanId() << std::endl;
}

}  // namespace

int main(int argc, char** argv) {
    const auto kernel = Kcore::makeNode<KernelNetInfo::Status>();
    const auto manager = DhcpLib::pamManagerFactory("snooper", Kcore::makeNode<Interface::AllIntfStatusDir>(kernel),
                                                    Kcore::makeNode<Interface::AllIntfStatusLocalDir>(), kernel);
    const auto bridging = Kcore::makeNode<Bridging::Config>();
    for (int i = 1; i < argc; ++i) {
        const Kitnet::IntfId intf(argv[i]);
        bridging->switchIntfConfigIs(intf)->nativeVlanIs(Bridging::VlanId(1));
        manager->pamDesiredIntfDir()->intfIs(intf);
    }

    const Pams& pams = manager->ethDevPamCollection()->ethDevPam();
    for (;;) {
        std::vector<pollfd> fds{{kernel->fd(), POLLIN, 0}};
        for (const auto& [intf, pam] : pams) fds.push_back({pam->fd(), POLLIN, 0});  // poll ignores -1 (no device)
        if (poll(fds.data(), fds.size(), -1) < 0 && errno != EINTR) return 1;
        for (const auto& [intf, pam] : pams)
            if (const auto frame = pam->readPkt()) print(frame, bridging);
        kernel->handleReadable();  // last, because it adds and removes members of the collection
    }
}
