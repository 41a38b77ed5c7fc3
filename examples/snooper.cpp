// Prints the DHCPv4 messages of a capture or of interfaces, one line each:
//   snooper --read FILE
//   snooper eth1 eth2     needs CAP_NET_RAW; interfaces may disappear and come back

#include <poll.h>

#include <cerrno>
#include <iostream>
#include <string_view>
#include <vector>

#include "DhcpLib/DhcpParser.h"
#include "DhcpLib/DhcpSnoopingPamManager.h"
#include "Frames.h"

namespace {

using Pams = Interface::EthDevPamCollection::Pams;

// [print]
/// One line for a DHCP message, nothing for any other frame.
void print(const DhcpLib::PktPtr& frame, const Kitnet::IntfId& intf, const Bridging::Config::Ptr& bridging) {
    DhcpLib::PacketParser parser(bridging);  // a fresh one for each frame: a parser keeps what it has read
    if (!accepted([&] { return parser.doParse(frame, intf, false); })) return;
    std::cout << intf << " VLAN " << parser.vlanId() << ' ' << parser.dhcpMsgType() << ' ' << parser.chaddr();
    if (!parser.yiaddr().isAny()) std::cout << " gets " << parser.yiaddr();
    std::cout << std::endl;
}
// [/print]

// [configure]
/// The parser refuses frames of interfaces that have no entry here.
void configure(Bridging::Config& bridging, const Kitnet::IntfId& intf) {
    const auto port = bridging.switchIntfConfigIs(intf);
    port->nativeVlanIs(Bridging::VlanId(1));  // of frames without a tag
    port->switchportModeIs(Bridging::SwitchportMode::trunk);
}
// [/configure]

// [live]
/// Prints the messages on the interfaces until poll() fails.
void snoop(const std::vector<Kitnet::IntfId>& intfs, const Bridging::Config::Ptr& bridging) {
    const auto kernel = Kcore::makeNode<KernelNetInfo::Status>();
    const auto manager = DhcpLib::pamManagerFactory("snooper", Kcore::makeNode<Interface::AllIntfStatusDir>(kernel),
                                                    Kcore::makeNode<Interface::AllIntfStatusLocalDir>(), kernel);
    for (const auto& intf : intfs) manager->pamDesiredIntfDir()->intfIs(intf);
    const Pams& pams = manager->ethDevPamCollection()->ethDevPam();
    for (const auto& [intf, pam] : pams)
        if (pam->fd() < 0) std::cerr << intf << ": " << pam->error() << '\n';  // no privilege, or no device yet
    for (;;) {
        std::vector<pollfd> fds{{kernel->fd(), POLLIN, 0}};
        for (const auto& [intf, pam] : pams) fds.push_back({pam->fd(), POLLIN, 0});  // poll ignores -1 (no device)
        if (poll(fds.data(), fds.size(), -1) < 0 && errno != EINTR) return;
        for (const auto& [intf, pam] : pams)
            if (const auto frame = pam->readPkt(); frame && !frame.outgoing) print(frame.pkt, intf, bridging);
        kernel->handleReadable();  // last, because it adds and removes members of the collection
    }
}
// [/live]

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return std::cerr << "usage: snooper --read FILE | snooper INTERFACE...\n", 2;
    const auto bridging = Kcore::makeNode<Bridging::Config>();
    if (argc == 3 && std::string_view(argv[1]) == "--read") {
        const Kitnet::IntfId port("Ethernet1");
        configure(*bridging, port);
        for (const auto& frame : framesOf(argv[2])) print(frame, port, bridging);
        return 0;
    }
    const std::vector<Kitnet::IntfId> intfs(argv + 1, argv + argc);
    for (const auto& intf : intfs) configure(*bridging, intf);
    snoop(intfs, bridging);
    return 1;
}
