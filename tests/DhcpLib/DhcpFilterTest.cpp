#include <gtest/gtest.h>
#include <linux/filter.h>
#include <pcap/bpf.h>
#include <sys/socket.h>

#include <random>
#include <set>

#include "Bytes.h"
#include "DhcpLib/DhcpSnoopingPamManager.h"
#include "Kcore/FileDescriptor.h"

using namespace DhcpTest;

namespace {

/// A filter program in two interpreters: that of libpcap and that of the kernel, on a socket that needs no privilege.
class DhcpFilter {
public:
    explicit DhcpFilter(const char* name) {
        const auto kni = Kcore::makeNode<KernelNetInfo::Status>();
        const auto pam = DhcpLib::pamManagerFactory(name, Kcore::makeNode<Interface::AllIntfStatusDir>(kni),
                                                    Kcore::makeNode<Interface::AllIntfStatusLocalDir>(), kni);
        program_ = pam->ethDevPamManager()->filterProgram();
        EXPECT_TRUE(bpf_validate(instructions(), program_.count));

        int ends[2];
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0, ends), 0);
        sender_ = Kcore::FileDescriptor(ends[0]);
        receiver_ = Kcore::FileDescriptor(ends[1]);
        const sock_fprog filter{program_.count, reinterpret_cast<sock_filter*>(instructions())};
        EXPECT_EQ(setsockopt(ends[1], SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof filter), 0);
    }

    Kcore::U16 count() const { return program_.count; }
    /// How many bytes of the frame are taken.
    unsigned byPcap(const U8* frame, std::size_t size) const {
        return bpf_filter(instructions(), frame, static_cast<unsigned>(size), static_cast<unsigned>(size));
    }
    bool byKernel(const U8* frame, std::size_t size) const {
        EXPECT_EQ(send(sender_.get(), frame, size, 0), static_cast<ssize_t>(size));
        std::array<U8, 256> received;
        const ssize_t left = recv(receiver_.get(), received.data(), received.size(), 0);
        EXPECT_TRUE(left < 0 || std::equal(frame, frame + size, received.begin(), received.begin() + left));
        return left >= 0;
    }

private:
    bpf_insn* instructions() const {
        static_assert(sizeof(bpf_insn) == sizeof(Kitnet::SockFilter));
        return reinterpret_cast<bpf_insn*>(const_cast<Kitnet::SockFilter*>(program_.instructions));
    }

    Kitnet::SockFilterProgram program_;
    Kcore::FileDescriptor sender_, receiver_;
};

/// What the agents are meant to get, told without a program: -1 stands for what lies behind the frame's end.
struct Frame {
    const U8* bytes;
    std::size_t size;
    long u8(std::size_t at) const { return at < size ? bytes[at] : -1; }
    long u16(std::size_t at) const { return u8(at + 1) < 0 ? -1 : u8(at) << 8 | u8(at + 1); }
};
constexpr std::size_t noNetworkHeader = 0;

std::size_t networkHeader(Frame f, long etherType) {
    const bool tagged = std::set<long>{0x8100, 0x88a8, 0x9100}.contains(f.u16(12));
    const std::size_t typeAt = tagged ? 16 : 12;
    return f.u16(typeAt) == etherType ? typeAt + 2 : noNetworkHeader;
}
bool isDhcp4(Frame f) {
    const std::size_t ip = networkHeader(f, 0x0800);
    if (ip == noNetworkHeader || f.u8(ip + 9) != 17 || f.u16(ip + 6) < 0 || f.u16(ip + 6) % 0x2000 != 0) return false;
    const auto port = f.u16(ip + static_cast<std::size_t>(f.u8(ip) % 16 * 4) + 2);
    return port == 67 || port == 68;
}
bool isDhcp6(Frame f) {
    const std::size_t ip = networkHeader(f, 0x86dd);
    if (ip == noNetworkHeader || f.u8(ip + 6) != 17) return false;
    return f.u16(ip + 42) == 547 || f.u16(ip + 42) == 546;
}

struct Protocol {
    const char* name;
    bool (*isDhcp)(Frame);
};
constexpr Protocol protocols[] = {{"Dhcp4PamMan", &isDhcp4}, {"Dhcp6PamMan", &isDhcp6}};

const Octets addresses = hex("02 00 00 00 00 02 02 00 00 00 00 01");

Octets big(unsigned value) { return {static_cast<U8>(value >> 8), static_cast<U8>(value)}; }

/// Every way in which two VLAN tags or none lead up to `etherType`.
std::vector<Octets> ethernetHeaders(unsigned etherType) {
    std::vector<Octets> headers;
    for (const char* tags : {"", "81 00 00 05", "88 A8 A0 05", "91 00 0F FF", "81 01 00 05", "92 00 00 05",
                             "81 00 00 05 81 00 00 06", "88 A8 00 05 81 00 00 06"})
        for (const unsigned type : {etherType, etherType + 1, etherType + 0x100, etherType ^ 0x8edd})
            headers.push_back(addresses + hex(tags) + big(type));
    return headers;
}

Octets ip4(unsigned words, unsigned protocol, unsigned fragment, unsigned port) {
    Octets header(std::max<std::size_t>(4 * words, 20), 0);
    header[0] = static_cast<U8>(0x40 | words);
    std::ranges::copy(big(fragment), header.begin() + 6);
    header[9] = static_cast<U8>(protocol);
    // The port stands where the header's length says, be it inside the header.
    const Octets ports = big(1067) + big(port);
    header.resize(std::max<std::size_t>(header.size(), 4 * words + 4));
    std::ranges::copy(ports, header.begin() + 4 * words);
    return header + hex("00 08 00 00");
}

/// `chain`: the next header and what it stands for.
Octets ip6(const char* chain, unsigned port) {
    const Octets next = hex(chain);
    return hex("60 00 00 00 00 10") + Octets{next[0]} + hex("40 FE 80 00*13 01 FF 02 00*12 01 02") +
           Octets{next.begin() + 1, next.end()} + big(1067) + big(port) + hex("00 08 00 00");
}

std::vector<Octets> generatedFrames() {
    std::vector<Octets> frames;
    for (const Octets& ethernet : ethernetHeaders(0x0800))
        for (const unsigned words : {0u, 1u, 4u, 5u, 6u, 10u, 15u})
            for (const unsigned protocol : {17u, 6u, 16u, 145u})
                for (const unsigned fragment : {0u, 0x4000u, 0x2000u, 0x0001u, 0x1000u, 0x2100u, 0x8000u})
                    for (const unsigned port : {67u, 68u, 66u, 69u, 0x4300u, 0x1043u, 547u})
                        frames.push_back(ethernet + ip4(words, protocol, fragment, port));
    const char* chains[] = {"11",
                            "06",
                            "10",
                            "91",
                            "00 11 00 01 04 00*4",  // hop-by-hop options
                            "2C 11 00 00 00 00*4",  // first fragment, and the only one
                            "3C 11 00*7",
                            "2B 11 00*7",
                            "33 11 01 00*10"};
    for (const Octets& ethernet : ethernetHeaders(0x86dd))
        for (const char* chain : chains)
            for (const unsigned port : {546u, 547u, 545u, 548u, 0x2302u, 67u, 68u})
                frames.push_back(ethernet + ip6(chain, port));
    return frames;
}

class DhcpFilterPrograms : public testing::TestWithParam<Protocol> {
protected:
    /// Whether both interpreters do with the frame, cut to `size`, what they should. True if it was accepted.
    bool judge(const Octets& frame, std::size_t size) {
        const bool wanted = GetParam().isDhcp({frame.data(), size});
        const bool asMeant = filter.byPcap(frame.data(), size) == (wanted ? 65535u : 0u) &&
                             filter.byKernel(frame.data(), size) == wanted;
        if (!asMeant) ADD_FAILURE() << (wanted ? "refused: " : "accepted: ") << testing::PrintToString(frame) << size;
        return wanted;
    }

    DhcpFilter filter{GetParam().name};
};

TEST_P(DhcpFilterPrograms, TakeDhcpAndNothingElse) {
    std::size_t accepted = 0, cuts = 0;
    for (const Octets& frame : generatedFrames()) {
        if (HasFailure()) return;
        if (!judge(frame, frame.size())) continue;
        ++accepted;
        for (std::size_t size = 0; size < frame.size(); ++size) cuts += judge(frame, size) ? 0 : 1;
    }
    EXPECT_GE(accepted, 8u);
    EXPECT_GT(cuts, accepted);
}

TEST_P(DhcpFilterPrograms, JudgeDamagedFramesAlike) {
    std::vector<Octets> frames = generatedFrames();
    std::erase_if(frames, [](const Octets& frame) { return !GetParam().isDhcp({frame.data(), frame.size()}); });
    std::mt19937 random(20);
    const auto below = [&](std::size_t n) { return static_cast<std::size_t>(random()) % n; };
    std::size_t accepted = 0;
    constexpr std::size_t rounds = 40000;
    for (std::size_t i = 0; i < rounds && !HasFailure(); ++i) {
        Octets frame = frames[below(frames.size())];
        for (std::size_t damages = 1 + below(3); damages != 0; --damages)
            frame[12 + below(frame.size() - 12)] = static_cast<U8>(random());
        accepted += judge(frame, frame.size() - below(8)) ? 1 : 0;
    }
    EXPECT_GT(accepted, rounds / 10);
    EXPECT_LT(accepted, rounds * 9 / 10);
}

INSTANTIATE_TEST_SUITE_P(Protocols, DhcpFilterPrograms, testing::ValuesIn(protocols),
                         [](const auto& row) { return std::string(row.param.name); });

/// A few of them as agents meet them, told by nothing but their bytes.
TEST(DhcpFilterProgram, KnownFrames) {
    const Octets to67 = hex("45 00 00 24 00 00 00 00 40 11 00 00 00*4 FF*4  00 44 00 43 00 10 00 00");
    const Octets to547 = hex("60 00 00 00 00 10 11 40 00*16 FF*16  02 22 02 23 00 10 00 00");
    const struct {
        const char *rule, *ethernet;
        Octets ip;
        bool dhcp4, dhcp6;
    } rows[] = {
        {"request", "08 00", to67, true, false},
        {"request, service tag", "88 A8 00 05 08 00", to67, true, false},
        {"request, two tags", "88 A8 00 05 81 00 00 05 08 00", to67, false, false},
        {"first fragment", "08 00", hex("45 00*5 20 00 40 11 00*10  00 44 00 43 00 10 00 00"), true, false},
        {"from port 67 to another", "08 00", hex("45 00*8 11 00*10  00 43 00 45 00 10 00 00"), false, false},
        {"solicit, tagged", "81 00 00 05 86 DD", to547, false, true},
        {"solicit behind hop-by-hop options", "86 DD", hex("60 00*5 00 40 00*32  11 00 00*6  02 22 02 23 00 10 00 00"),
         false, false},
    };
    const DhcpFilter dhcp4("Dhcp4PamMan"), dhcp6("Dhcp6PamMan"), other("dhcp6PamMan");
    EXPECT_EQ(dhcp4.count(), 24);
    EXPECT_EQ(dhcp6.count(), 18);
    EXPECT_EQ(other.count(), 24);
    for (const auto& row : rows) {
        const Octets frame = addresses + hex(row.ethernet) + row.ip;
        EXPECT_EQ(dhcp4.byPcap(frame.data(), frame.size()), row.dhcp4 ? 65535u : 0u) << row.rule;
        EXPECT_EQ(dhcp6.byPcap(frame.data(), frame.size()), row.dhcp6 ? 65535u : 0u) << row.rule;
    }
}

}  // namespace
