#include <gtest/gtest.h>
#include <pcap/bpf.h>

#include <set>

#include "Bytes.h"
#include "DhcpLib/DhcpSnoopingPamManager.h"

using namespace DhcpTest;

namespace {

/// A filter program in libpcap's interpreter.
class DhcpFilter {
public:
    explicit DhcpFilter(const char* name) {
        const auto kni = Kcore::makeNode<KernelNetInfo::Status>();
        const auto pam = DhcpLib::pamManagerFactory(name, Kcore::makeNode<Interface::AllIntfStatusDir>(kni),
                                                    Kcore::makeNode<Interface::AllIntfStatusLocalDir>(), kni);
        program_ = pam->ethDevPamManager()->filterProgram();
        EXPECT_TRUE(bpf_validate(instructions(), program_.count));
    }

    Kcore::U16 count() const { return program_.count; }
    bool takes(const U8* frame, std::size_t size) const {
        const auto bytes = static_cast<unsigned>(size);
        const unsigned taken = bpf_filter(instructions(), frame, bytes, bytes);
        EXPECT_TRUE(taken == 0 || taken == 65535);
        return taken != 0;
    }

private:
    bpf_insn* instructions() const {
        static_assert(sizeof(bpf_insn) == sizeof(Kitnet::SockFilter));
        return reinterpret_cast<bpf_insn*>(const_cast<Kitnet::SockFilter*>(program_.instructions));
    }

    Kitnet::SockFilterProgram program_;
};

/// Access to the fields of a frame, to compute the expected result without the program. -1 beyond the frame's end.
struct Frame {
    const U8* bytes;
    std::size_t size;
    long u8(std::size_t at) const { return at < size ? bytes[at] : -1; }
    long u16(std::size_t at) const { return u8(at + 1) < 0 ? -1 : u8(at) << 8 | u8(at + 1); }
};

/// Position of the IP header after at most one VLAN tag; 0 if the frame has another EtherType.
std::size_t networkHeader(Frame f, long etherType) {
    const bool tagged = std::set<long>{0x8100, 0x88a8, 0x9100}.contains(f.u16(12));
    const std::size_t typeAt = tagged ? 16 : 12;
    return f.u16(typeAt) == etherType ? typeAt + 2 : 0;
}
bool isDhcp4(Frame f) {
    const std::size_t ip = networkHeader(f, 0x0800);
    if (ip == 0 || f.u8(ip + 9) != 17 || f.u16(ip + 6) < 0 || f.u16(ip + 6) % 0x2000 != 0) return false;
    const auto port = f.u16(ip + static_cast<std::size_t>(f.u8(ip) % 16 * 4) + 2);
    return port == 67 || port == 68;
}
bool isDhcp6(Frame f) {
    const std::size_t ip = networkHeader(f, 0x86dd);
    return ip != 0 && f.u8(ip + 6) == 17 && (f.u16(ip + 42) == 547 || f.u16(ip + 42) == 546);
}

const Octets addresses = hex("02 00 00 00 00 02 02 00 00 00 00 01");

Octets big(unsigned value) { return {static_cast<U8>(value >> 8), static_cast<U8>(value)}; }

/// Ethernet headers with up to two VLAN tags, for `etherType` and for other EtherTypes.
std::vector<Octets> ethernetHeaders(unsigned etherType) {
    std::vector<Octets> headers;
    for (const char* tags : {"", "81 00 00 05", "88 A8 A0 05", "91 00 0F FF", "81 01 00 05", "92 00 00 05",
                             "81 00 00 05 81 00 00 06", "88 A8 00 05 81 00 00 06"})
        for (const unsigned type : {etherType, etherType + 1, etherType + 0x100, etherType ^ 0x8edd})
            headers.push_back(addresses + hex(tags) + big(type));
    return headers;
}

/// IPv4 and UDP headers. The IPv4 header's length is `words` * 4, even if that puts the UDP ports inside the IPv4
/// header.
Octets ip4(unsigned words, unsigned protocol, unsigned fragment, unsigned port) {
    Octets header(std::max(4 * words + 4, 20u), 0);
    header[0] = static_cast<U8>(0x40 | words);
    overwrite(header, 6, big(fragment));
    header[9] = static_cast<U8>(protocol);
    overwrite(header, 4 * words, big(1067) + big(port));
    return header + hex("00 08 00 00");
}

/// IPv6 and UDP headers. `chain`: the next header number, then extension headers.
Octets ip6(const char* chain, unsigned port) {
    const Octets next = hex(chain);
    return hex("60 00 00 00 00 10") + first(next, 1) + hex("40 FE 80 00*13 01 FF 02 00*12 01 02") +
           Octets(next.begin() + 1, next.end()) + big(1067) + big(port) + hex("00 08 00 00");
}

/// Compares the program with the expected result for the frame and, if it is accepted, for the frame cut at every byte.
void expectAsDescribed(const DhcpFilter& filter, bool (*isDhcp)(Frame), const Octets& frame, unsigned& taken) {
    const bool wanted = isDhcp({frame.data(), frame.size()});
    taken += wanted ? 1 : 0;
    for (std::size_t size = wanted ? 0 : frame.size(); size <= frame.size(); ++size)
        ASSERT_EQ(filter.takes(frame.data(), size), isDhcp({frame.data(), size}))
            << testing::PrintToString(frame) << " cut to " << size;
}

TEST(DhcpFilter, AcceptsDhcpv4Only) {
    const DhcpFilter filter("Dhcp4PamMan"), other("dhcp6PamMan");
    EXPECT_EQ(filter.count(), other.count());  // all names but one are for DHCPv4
    unsigned taken = 0;
    for (const Octets& ethernet : ethernetHeaders(0x0800))
        for (const unsigned words : {0u, 4u, 5u, 6u, 15u})
            for (const unsigned protocol : {17u, 6u, 145u})
                for (const unsigned fragment : {0u, 0x4000u, 0x2000u, 0x0001u, 0x1000u, 0x8000u})
                    for (const unsigned port : {67u, 68u, 66u, 69u, 0x4300u, 547u})
                        expectAsDescribed(filter, isDhcp4, ethernet + ip4(words, protocol, fragment, port), taken);
    EXPECT_GT(taken, 100u);
}

TEST(DhcpFilter, AcceptsDhcpv6Only) {
    const DhcpFilter filter("Dhcp6PamMan");
    unsigned taken = 0;
    // UDP, TCP, an unknown protocol, then UDP after hop-by-hop options and after a fragment header.
    for (const Octets& ethernet : ethernetHeaders(0x86dd))
        for (const char* chain : {"11", "06", "91", "00 11 00 01 04 00*4", "2C 11 00 00 00 00*4"})
            for (const unsigned port : {546u, 547u, 545u, 548u, 0x2302u, 67u, 68u})
                expectAsDescribed(filter, isDhcp6, ethernet + ip6(chain, port), taken);
    EXPECT_EQ(taken, 8u);
}

}  // namespace
