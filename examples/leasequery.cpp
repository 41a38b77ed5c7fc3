// Asks a DHCP server which lease a client has (RFC 4388): leasequery SERVER OWN-ADDRESS MAC
// The server answers to UDP port 67 of OWN-ADDRESS. Binding this port needs CAP_NET_BIND_SERVICE.

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <iostream>

#include "DhcpLib/DhcpParser.h"
#include "DhcpLib/OptionParser.h"
#include "Kcore/FileDescriptor.h"

namespace {

using namespace DhcpLib;

constexpr U32 xid = 0x4c454153;

sockaddr_in serverPortAt(const Kitnet::IpAddr& address) {
    sockaddr_in out{};
    out.sin_family = AF_INET;
    out.sin_port = htons(Constants::dhcpServerPort);
    out.sin_addr.s_addr = htonl(address.value());
    return out;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return std::cerr << "usage: leasequery SERVER OWN-ADDRESS MAC\n", 2;
    const sockaddr_in server = serverPortAt(Kitnet::IpAddr::fromText(argv[1]));
    const auto own = Kitnet::IpAddr::fromText(argv[2]);
    const sockaddr_in local = serverPortAt(own);
    const Kcore::FileDescriptor udp(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (bind(udp.get(), reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0) return perror("bind"), 1;
    // A connected socket receives only datagrams from the server.
    if (connect(udp.get(), reinterpret_cast<const sockaddr*>(&server), sizeof server) != 0) return perror("connect"), 1;
    const PktPtr asked = buildDhcpLeaseQuery(true, own, Kitnet::EthAddr::fromText(argv[3]), {}, xid);
    if (send(udp.get(), asked->data(), asked->bytes(), 0) < 0) return perror("send"), 1;

    constexpr int patience = 3000;  // milliseconds
    std::array<U8, 65536> buffer;
    for (pollfd readable{udp.get(), POLLIN, 0}; poll(&readable, 1, patience) > 0;) {
        const ssize_t size = recv(udp.get(), buffer.data(), buffer.size(), 0);
        if (size < 0) return perror("recv"), 1;
        PacketParser parser(nullptr);
        const PktPtr reply = Kitnet::globalPktManager().newPkt({buffer.data(), static_cast<std::size_t>(size)});
        if (!parser.doParse(reply, {}, true) || parser.xid().value() != xid) continue;
        std::cout << parser.dhcpMsgType();
        if (!parser.ciaddr().isAny()) std::cout << ' ' << parser.ciaddr();
        if (parser.leaseTimeExist()) std::cout << ", for " << parser.leaseTime().count() << " s";
        std::cout << '\n';
        return 0;
    }
    std::cerr << "no answer\n";
    return 1;
}
