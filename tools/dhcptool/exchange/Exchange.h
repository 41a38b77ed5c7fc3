#pragma once

#include <optional>
#include <string>
#include <vector>

#include "exchange/Event.h"

namespace DhcpTool {

/// When and how often a message was seen on one side of a relay agent.
struct Sighting {
    Nanoseconds first{}, last{};
    U32 count = 0;  ///< transmissions; 0 if it was not seen there. Copies of one frame count once.
    U8 relays = 0;  ///< Event::relays of the message nearest to the server
    U64 path = 0;   ///< hash of the addresses that the first one had

    bool seen() const { return count != 0; }
};

/// What the client wants with a DHCPv4 REQUEST (RFC 2131, section 4.3.2).
enum class RequestPurpose : U8 { none, select, reboot, renew, rebind };

/// A message of an exchange with its retransmissions and its copies on the other side of relay agents.
struct Step {
    MessageKind kind{};
    RequestPurpose purpose = RequestPurpose::none;
    U32 xid = 0;
    std::optional<U8> server;   ///< of an answer: its index in Exchange::servers, unless there are too many
    std::optional<U8> request;  ///< of an answer: the step that it answers, if it was seen
    Sighting near;              ///< on the client's link
    Sighting far;               ///< between relay agent and server
    /// From the last transmission of the request to the answer, as the client and the relay agent see it. Unset if the
    /// request or the answer was not seen on that side.
    std::optional<Nanoseconds> wait, serverWait;
    std::string text;            ///< message of the server (DHCPv4 option 56)
    bool refuses = false;        ///< a NAK, or an answer with a status code other than success
    bool relayInfo = false;      ///< option 82 or interface-id on the far side
    bool lostRelayInfo = false;  ///< an answer on the far side without the option 82 of its request

    const MessageRole& role() const { return roleOf(kind); }
    const Sighting& clientSide() const { return near.seen() ? near : far; }
};

/// A server that answered in an exchange.
struct ExchangeServer {
    std::string id;                  ///< server identifier: 4 bytes or a DUID
    Kitnet::IpGenAddr address;       ///< DHCPv4: of the server identifier, else the source of its messages
    Kitnet::EthAddr mac;             ///< source of its messages; if not `direct`, that of a relay agent
    bool direct = false;             ///< a message came without a relay agent
    bool near = false, far = false;  ///< where it was seen
    Kitnet::IpGenAddr offered;       ///< the first address that it offered or assigned
};

/// All messages between a client and its servers from the first request to the last answer.
struct Exchange {
    static constexpr std::size_t mostSteps = 16, mostServers = 8, mostAddresses = 8, mostStatuses = 4;
    static constexpr std::size_t longestText = 255;  ///< bytes; longer texts are cut

    struct Status {
        MessageKind kind;
        U16 code;
        std::string text;
        friend bool operator==(const Status&, const Status&) = default;
    };

    Nanoseconds start{}, end{};
    std::string client;  ///< Event::client
    std::string clientId, hostname, interface;
    std::string port, farPort;  ///< circuit-id or interface-id on the client's link, and on the server's side
    std::optional<Kitnet::EthAddr> mac;
    U16 vlan = 0;
    bool near = false;  ///< a message on the client's link was seen
    Kitnet::IpGenAddr relay;
    std::vector<Step> steps;  ///< in the order of their first message
    std::vector<ExchangeServer> servers;
    std::string chosenServer;         ///< id of the server that the client requests from
    std::vector<Assigned> requested;  ///< of the last request
    std::vector<Assigned> assigned;   ///< of the last answer with addresses
    std::vector<Status> statuses;
    bool rapidCommit = false;
    bool selected = false;          ///< one of the messages passes the user's filter
    Kitnet::IpGenAddr otherServer;  ///< a server that answered another client in this VLAN
    bool incomplete = false;        ///< there were more messages than an exchange can hold, or too many open exchanges

    bool dhcp6() const { return steps.front().role().dhcp6; }
    /// The circuit-id or interface-id that the server sees, if known.
    const std::string& anyPort() const { return farPort.empty() ? port : farPort; }
    U32 xid() const { return steps.front().xid; }
    /// The last step that is no answer, or null.
    const Step* lastRequest() const;
    /// Whether nothing more is due: the last request was answered for good, or needs no answer.
    bool done() const;
};

}  // namespace DhcpTool
