#pragma once

#include "Fields.h"
#include "Frames.h"

namespace DhcpBench {

/// The fields that every contender reads from a DHCPv6 frame (RFC 8415): the headers, the DUID-LLT of the client
/// identifier, and the relay agent remote-id with its DUID-LL, interface and VLAN.
struct Fields6 {
    std::array<U8, 6> dstMac{}, srcMac{}, clientMac{}, remoteMac{};
    std::array<U8, 16> srcIp{}, dstIp{};
    U16 srcPort = 0, dstPort = 0;
    U8 msgType = 0;
    U32 xid = 0;
    U16 clientIdBytes = 0, remoteIdBytes = 0;
    U32 enterprise = 0;
    U16 vlan = 0;
    std::array<char, 16> interface {};
    bool operator==(const Fields6&) const = default;
};

/// Cases: a SOLICIT from a client, one that a relay has marked, and one for each number of empty options in `growing`.
const std::vector<Case>& solicitCases();
const std::vector<Case>& growingSolicitCases();

Fields6 parseSolicitInOnePass(const U8* frame, std::size_t bytes);
Fields6 parseSolicitWithTins(const U8* frame, std::size_t bytes);
/// Reads an option by hand, for both other contenders. `data` is the option's data, `bytes` its size.
void readClientId(const U8* data, std::size_t bytes, Fields6& fields);
void readRemoteId(const U8* data, std::size_t bytes, Fields6& fields);

}  // namespace DhcpBench
