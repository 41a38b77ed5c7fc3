// Asks a DHCP server which lease a client has (RFC 4388), or shows the answers in a capture:
//   leasequery SERVER OWN-ADDRESS MAC     needs CAP_NET_BIND_SERVICE: the server answers to UDP port 67 of OWN-ADDRESS
//   leasequery --read FILE

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cstdio>
#include <iostream>
#include <set>
#include <string_view>

#include "DhcpLib/DhcpParser.h"
#include "DhcpLib/OptionParser.h"
#include "Frames.h"
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

// [answer]
/// Prints the lease in a reply whose BOOTP header is at `offset`; false if it is no reply to a lease query.
bool showLease(const PktPtr& pkt, U32 offset) {
    const Kcore::String type = getDhcpMsgType(pkt, offset);
    if (type != "DHCPLEASEACTIVE" && type != "DHCPLEASEUNASSIGNED" && type != "DHCPLEASEUNKNOWN") return false;
    Kcore::Duration leaseTime{0}, lastTransaction{0};
    std::set<Kitnet::IpAddr> addresses;
    Kitnet::IpAddr server;
    bool hasLeaseTime = false, hasLastTransaction = false, hasServer = false;
    if (!parseLeaseQueryOpts(pkt, leaseTime, lastTransaction, addresses, server, hasLeaseTime, hasLastTransaction,
                             hasServer, offset))
        return false;
    const auto header = Wire::load<DhcpHdr>(*pkt, offset);
    std::cout << type << ' ' << header.ciaddr() << ' ' << header.chaddr();
    if (hasLeaseTime) std::cout << ", for " << leaseTime.count() << " s";
    addresses.erase(header.ciaddr());
    for (const auto& address : addresses) std::cout << ", also " << address;
    std::cout << '\n';
    return true;
}
// [/answer]

void showCapture(const char* path) {
    for (const PktPtr& frame : framesOf(path)) {
        PacketParser parser(nullptr);
        if (accepted([&] { return parser.doParse(frame, {}, false); })) showLease(frame, parser.offset());
    }
}

// [ask]
/// Asks `server` for the lease of `client` and prints the answer. `own` is the address to which the server answers.
int ask(const Kitnet::IpAddr& server, const Kitnet::IpAddr& own, const Kitnet::EthAddr& client) {
    const sockaddr_in to = serverPortAt(server), from = serverPortAt(own);
    const Kcore::FileDescriptor udp(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (bind(udp.get(), reinterpret_cast<const sockaddr*>(&from), sizeof from) != 0) return perror("bind"), 1;
    // A connected socket receives only datagrams from the server.
    if (connect(udp.get(), reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0) return perror("connect"), 1;
    const PktPtr query = buildDhcpLeaseQuery(true, own, client, {}, xid);
    if (send(udp.get(), query->data(), query->bytes(), 0) < 0) return perror("send"), 1;

    constexpr int patience = 3000;  // milliseconds
    std::array<U8, 65536> buffer;
    for (pollfd readable{udp.get(), POLLIN, 0}; poll(&readable, 1, patience) > 0;) {
        const ssize_t size = recv(udp.get(), buffer.data(), buffer.size(), 0);
        if (size < 0) return perror("recv"), 1;
        const PktPtr reply = Kitnet::globalPktManager().newPkt({buffer.data(), static_cast<std::size_t>(size)});
        if (Wire::load<DhcpHdr>(*reply, 0).xidU32() == xid && showLease(reply, 0)) return 0;
    }
    std::cerr << "no answer\n";
    return 1;
}
// [/ask]

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string_view(argv[1]) == "--read") return showCapture(argv[2]), 0;
    if (argc != 4) return std::cerr << "usage: leasequery SERVER OWN-ADDRESS MAC | leasequery --read FILE\n", 2;
    return ask(Kitnet::IpAddr::fromText(argv[1]), Kitnet::IpAddr::fromText(argv[2]),
               Kitnet::EthAddr::fromText(argv[3]));
}
