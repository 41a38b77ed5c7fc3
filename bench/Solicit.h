#pragma once

#include "Fields.h"
#include "Frames.h"

namespace DhcpBench {

/// What every contender takes out of a DHCPv6 frame (RFC 8415): the headers, the client identifier's DUID-LLT, and the
/// relay agent remote-id with its DUID-LL and the interface and VLAN at its end.
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

/// A SOLICIT as clients send it and as a relay has marked it, then ones of `growing` numbers of empty options.
const std::vector<Case>& solicitCases();
const std::vector<Case>& growingSolicitCases();

Fields6 parseSolicitInOnePass(const U8* frame, std::size_t bytes);
Fields6 parseSolicitWithTins(const U8* frame, std::size_t bytes);
/// Of an option that both read by hand: offsets are those of the layout, `data` has that many bytes.
void readClientId(const U8* data, std::size_t bytes, Fields6& fields);
void readRemoteId(const U8* data, std::size_t bytes, Fields6& fields);

}  // namespace DhcpBench
