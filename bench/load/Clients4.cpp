#include <arpa/inet.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>

#include "Clients.h"
#include "Kitnet/UdpMend.h"
#include "Options.h"

namespace DhcpBench {

namespace {

namespace Wire = DhcpLib::Wire;

constexpr U32 sourceMacAt = 6, ipAt = 14, messageAt = 42, xidAt = 4, yiaddrAt = 16, chaddrAt = 28, optionsAt = 240;
constexpr U32 macPrefix = 0x02d1;  // of a client's MAC address; its number follows
constexpr U8 discover = 1, offer = 2, request = 3, ack = 5;
constexpr U8 optionAddress = 50, optionType = 53, optionServer = 54, optionWanted = 55;

Octets frameFrom(U32 number, const Message& message) {
    const Octets bytes = frameOf(message.finished(), {0, 0xffffffff, 68, 67});
    const auto frame = Kitnet::globalPktManager().newPkt(bytes);
    Wire::fill(*frame, 0, sourceMacAt, 0xff);
    for (const U32 at : {sourceMacAt, messageAt + chaddrAt}) {
        Wire::store<U16>(*frame, at, macPrefix);
        Wire::store<U32>(*frame, at + 2, number);
    }
    Kitnet::mendUdp(*frame, ipAt);
    return octetsOf(ByteView(*frame));
}

Message messageOf(U32 number, U8 type) {
    Message message(Op::request);
    message.xid(number).option(optionType, Octets{type}).option(optionWanted, Octets{1, 3, 6, 12, 15, 28});
    return message;
}

Kcore::FileDescriptor packetSocket(const std::string& interface) {
    Peer own;
    auto* link = reinterpret_cast<sockaddr_ll*>(&own.address);
    link->sll_family = AF_PACKET;
    link->sll_protocol = htons(ETH_P_IP);
    link->sll_ifindex = static_cast<int>(if_nametoindex(interface.c_str()));
    own.bytes = sizeof *link;
    Kcore::FileDescriptor fd = boundSocket(SOCK_RAW, htons(ETH_P_IP), own, interface);
    const int on = 1;
    setsockopt(fd.get(), SOL_PACKET, PACKET_IGNORE_OUTGOING, &on, sizeof on);
    return fd;
}

class Clients4 final : public Clients {
public:
    explicit Clients4(const std::string& interface) : Clients(packetSocket(interface), {}) {}

    Octets discover(U32 number) const override { return frameFrom(number, messageOf(number, DhcpBench::discover)); }

    std::optional<Answer> answerTo(ByteView frame) const override {
        const bool toClient = frame.load<U8>(ipAt) == 0x45 && frame.load<U8>(ipAt + 9) == IPPROTO_UDP &&
                              frame.load<U16>(messageAt - 6) == 68;
        const ByteView message = tail(frame, messageAt);
        if (!toClient || message.load<U8>(0) != static_cast<U8>(Op::reply) || message.load<U16>(chaddrAt) != macPrefix)
            return std::nullopt;
        const U32 number = message.load<U32>(chaddrAt + 2);
        const U8 type = optionOf<OptionShape>(message, optionsAt, optionType).load<U8>(0);
        if (message.load<U32>(xidAt) != number || (type != offer && type != ack)) return std::nullopt;
        if (type == ack) return Answer{number, std::nullopt};
        Message answer = messageOf(number, request);
        answer.option(optionServer, octetsOf(optionOf<OptionShape>(message, optionsAt, optionServer)))
            .option(optionAddress, message.load<U32>(yiaddrAt));
        return Answer{number, frameFrom(number, answer)};
    }
};

}  // namespace

std::unique_ptr<Clients> clients4(const std::string& interface) { return std::make_unique<Clients4>(interface); }

}  // namespace DhcpBench
