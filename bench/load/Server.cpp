#include "Server.h"

#include <poll.h>

#include <cstring>

#include "BatchSocket.h"
#include "Kitnet/BigEndian.h"
#include "Options.h"

namespace DhcpBench {

namespace {

/// Builds a server's answer to one relayed message; empty if the server does not answer it.
class Server {
public:
    Server(const Peer& own, bool echo) : echo_(echo) {
        const auto* v4 = reinterpret_cast<const sockaddr_in*>(&own.address);
        v4_ = v4->sin_family == AF_INET;
        if (v4_) id_ = bigEndian(ntohl(v4->sin_addr.s_addr));
    }
    Octets answer(ByteView message, Peer& to) const { return v4_ ? answer4(message, to) : answer6(message, {}, 0); }

private:
    Octets answer4(ByteView request, Peer& to) const;
    Octets answer6(ByteView message, const Octets& link, unsigned depth) const;
    Octets answerRelay6(ByteView message, unsigned depth) const;

    bool echo_, v4_ = false;
    Octets id_;
};

Octets Server::answer4(ByteView request, Peer& to) const {
    constexpr U32 yiaddrAt = 16, giaddrAt = 24, chaddrAt = 28, cookieAt = 236, optionsAt = 240;
    constexpr U8 discover = 1, offer = 2, requestType = 3, ack = 5;
    const U8 type = optionOf<OptionShape>(request, optionsAt, 53).load<U8>(0);
    const U32 giaddr = request.load<U32>(giaddrAt);
    if (request.size() < optionsAt || giaddr == 0 || (type != discover && type != requestType)) return {};
    Octets reply{request.data(), request.data() + optionsAt};
    reply[0] = static_cast<U8>(Op::reply);
    const U32 yiaddr = (giaddr & 0xffffff00) | (100 + request.load<U8>(chaddrAt + 5) % 100U);
    Kitnet::storeBigEndian(reply.data() + yiaddrAt, yiaddr);
    std::fill(reply.begin() + chaddrAt + 16, reply.begin() + cookieAt, U8{0});
    appendItem(reply, 53, {type == discover ? offer : ack});
    appendItem(reply, 54, id_);
    appendItem(reply, 51, bigEndian(120));
    appendItem(reply, 58, bigEndian(6));
    appendItem(reply, 1, {255, 255, 255, 0});
    appendItem(reply, 3, bigEndian(giaddr));
    const ByteView relayInfo = optionOf<OptionShape>(request, optionsAt, 82);
    if (echo_ && relayInfo.size() != 0) appendItem(reply, 82, octetsOf(relayInfo));
    reply.push_back(255);
    reply.resize(std::max<std::size_t>(reply.size(), 300));
    reinterpret_cast<sockaddr_in*>(&to.address)->sin_addr.s_addr = htonl(giaddr);
    return reply;
}

Octets Server::answerRelay6(ByteView message, unsigned depth) const {
    constexpr U32 linkAt = 2, peerAt = 18, optionsAt = 34;
    constexpr U8 relayReply = 13;
    const ByteView link{message.data() + linkAt, peerAt - linkAt};
    const Octets inner = answer6(optionOf<Option6Shape>(message, optionsAt, 9), octetsOf(link), depth + 1);
    if (inner.empty()) return {};
    Octets reply{message.data(), message.data() + optionsAt};
    reply[0] = relayReply;
    const ByteView interfaceId = optionOf<Option6Shape>(message, optionsAt, 18);
    if (echo_ && interfaceId.size() != 0) appendOption6(reply, 18, octetsOf(interfaceId));
    appendOption6(reply, 9, inner);
    return reply;
}

/// `link` is the link address in the innermost relay message; empty for a message that no relay forwarded.
Octets Server::answer6(ByteView message, const Octets& link, unsigned depth) const {
    constexpr U8 solicit = 1, advertise = 2, request = 3, reply = 7, relayForward = 12;
    constexpr U32 optionsAt = 4, relayBytes = 34;
    constexpr unsigned mostRelays = 8;
    const U8 type = message.load<U8>(0);
    if (type == relayForward)
        return message.size() < relayBytes || depth == mostRelays ? Octets{} : answerRelay6(message, depth);
    if (link.empty() || message.size() < optionsAt) return {};
    Octets answer = bigEndian(message.load<U32>(0));
    answer[0] = type == solicit ? advertise : reply;
    appendOption6(answer, 1, octetsOf(optionOf<Option6Shape>(message, optionsAt, 1)));
    appendOption6(answer, 2, {0, 3, 0, 1, 2, 0, 0, 0, 0, 1});
    const ByteView wanted = optionOf<Option6Shape>(message, optionsAt, 3);
    if (type > request && type != 5 && type != 6) return answer;
    Octets addresses = bigEndian(wanted.load<U32>(0)), offered(link.begin(), link.begin() + 8);
    append(addresses, bigEndian(6));
    append(addresses, bigEndian(90));
    append(offered, {0, 0, 0, 0, 0, 0, 0x10, wanted.load<U8>(3)});
    append(offered, bigEndian(100));
    append(offered, bigEndian(120));
    appendOption6(addresses, 5, offered);
    appendOption6(answer, 3, addresses);
    return answer;
}

}  // namespace

void serve(const std::string& address, bool echo) {
    const Peer own = peerOf(address, address.find(':') == address.npos ? 67 : 547);
    BatchSocket socket(boundSocket(SOCK_DGRAM, 0, own, "port of " + address));
    const Server server(own, echo);
    for (pollfd readable{socket.fd(), POLLIN, 0}; poll(&readable, 1, -1) >= 0;) {
        socket.receive([&](ByteView message, Peer from) {
            Octets reply = server.answer(message, from);
            if (!reply.empty()) socket.send(std::move(reply), from);
        });
        socket.flush();
    }
}

}  // namespace DhcpBench
