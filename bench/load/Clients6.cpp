#include <net/if.h>

#include "Clients.h"
#include "Options.h"

namespace DhcpBench {

namespace {

constexpr U32 optionsAt = 4;
constexpr U8 solicit = 1, advertise = 2, request = 3, reply = 7;
constexpr U16 optionClient = 1, optionServer = 2, optionAddresses = 3, optionWanted = 6, optionElapsed = 8;
constexpr U32 duidPrefixBytes = 6;  // DUID-LL of an Ethernet address, which ends with the client's number

/// The client's message without its server identifier; the transaction id is the number's low 24 bits.
Octets messageOf(U32 number, U8 type) {
    Octets message = bigEndian(static_cast<U32>(type) << 24 | (number & 0xffffff));
    Octets duid{0, 3, 0, 1, 2, 0xd1}, addresses = bigEndian(number);
    append(duid, bigEndian(number));
    addresses.resize(12);
    appendOption6(message, optionClient, duid);
    appendOption6(message, optionWanted, {0, 23, 0, 24, 0, 39, 0, 31});
    appendOption6(message, optionElapsed, {0, 0});
    appendOption6(message, optionAddresses, addresses);
    return message;
}

Kcore::FileDescriptor clientSocket(const std::string& interface) {
    Kcore::FileDescriptor fd = boundSocket(SOCK_DGRAM, 0, peerOf("::", 546), "UDP port 546");
    const int index = static_cast<int>(if_nametoindex(interface.c_str()));
    setsockopt(fd.get(), IPPROTO_IPV6, IPV6_MULTICAST_IF, &index, sizeof index);
    return fd;
}

class Clients6 final : public Clients {
public:
    explicit Clients6(const std::string& interface) : Clients(clientSocket(interface), peerOf("ff02::1:2", 547)) {}

    Octets discover(U32 number) const override { return messageOf(number, solicit); }

    std::optional<Answer> answerTo(ByteView message) const override {
        const U8 type = message.load<U8>(0);
        const U32 number = optionOf<Option6Shape>(message, optionsAt, optionClient).load<U32>(duidPrefixBytes);
        if ((message.load<U32>(0) & 0xffffff) != (number & 0xffffff) || (type != advertise && type != reply))
            return std::nullopt;
        if (type == reply) return Answer{number, std::nullopt};
        Octets taken = messageOf(number, request);
        appendOption6(taken, optionServer, octetsOf(optionOf<Option6Shape>(message, optionsAt, optionServer)));
        return Answer{number, taken};
    }
};

}  // namespace

std::unique_ptr<Clients> clients6(const std::string& interface) { return std::make_unique<Clients6>(interface); }

}  // namespace DhcpBench
