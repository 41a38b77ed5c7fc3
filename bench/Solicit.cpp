#include "Solicit.h"

#include <algorithm>
#include <cstring>

#include "DhcpLib/Constants.h"
#include "Kitnet/BigEndian.h"

namespace DhcpBench {

namespace {

using Kitnet::loadBigEndian;

constexpr U8 addresses[] = {
    0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0x5e, 0xff, 0xfe, 0x10, 0, 2,   // source
    0xff, 2,    0, 0, 0, 0, 0, 0, 0, 0, 0,    0,    0,    1,    0, 2};  // all servers and relays
constexpr U8 macs[] = {0x33, 0x33, 0, 1, 0, 2, 0x02, 0, 0x5e, 0x10, 0, 2};
constexpr std::size_t headerBytes = 14 + 40 + 8, remoteIdHeaderBytes = 24;

Octets clientId() { return {0, 1, 0, 1, 0x2d, 0, 0, 7, 0x02, 0, 0x5e, 0x10, 0, 2}; }

Octets remoteId() {
    Octets data = bigEndian(DhcpLib::Constants::quorvaEntNum);
    append(data, {0, 3, 0, 1, 0x02, 0, 0x5e, 0x77, 0, 1});  // DUID-LL
    append(data, {0, 0, 0, 0, 0, 0, 0, 9});                 // layer 3 interface
    appendItem(data, 1, octets("Et7:10"));
    return data;
}

/// A SOLICIT with `empty` options of length 0 between the client identifier and the remote-id.
Octets solicit(std::size_t empty) {
    Octets message{1, 0x5e, 0xed, 0x06};
    appendOption6(message, 1, clientId());
    for (U32 i = 0; i < empty; ++i) appendOption6(message, static_cast<U16>(1000 + i), {});
    appendOption6(message, 37, remoteId());
    return message;
}

Octets typicalSolicit(bool relayed) {
    Octets message{1, 0x5e, 0xed, 0x07};
    appendOption6(message, 1, clientId());
    appendOption6(message, 6, {0, 23, 0, 24, 0, 39, 0, 31});
    appendOption6(message, 8, {0, 0});
    appendOption6(message, 3, {0, 0x5e, 0x10, 2, 0, 0, 0x0e, 0x10, 0, 0, 0x15, 0x18});
    if (relayed) appendOption6(message, 37, remoteId());
    return message;
}

Case framed(std::string name, const Octets& message) {
    Octets frame(std::begin(macs), std::end(macs));
    const auto udpBytes = static_cast<U32>(8 + message.size());
    append(frame, {0x86, 0xdd});
    append(frame, bigEndian(0x60000000));
    append(frame, bigEndian(udpBytes << 16 | 0x1101));  // UDP, one hop
    frame.insert(frame.end(), std::begin(addresses), std::end(addresses));
    append(frame, bigEndian(546U << 16 | 547U));
    append(frame, bigEndian(udpBytes << 16));
    append(frame, message);
    Case result{std::move(name), {}};
    result.inputs.push_back({frame, Kitnet::globalPktManager().newPkt(frame), headerBytes});
    return result;
}

}  // namespace

const std::vector<Case>& solicitCases() {
    static const std::vector<Case> cases = {framed("solicit", typicalSolicit(false)),
                                            framed("relayed", typicalSolicit(true)),
                                            framed("338options", solicit(336))};
    return cases;
}

const std::vector<Case>& growingSolicitCases() {
    static const std::vector<Case> cases = [] {
        std::vector<Case> growing;
        for (const std::size_t n : {5U, 10U, 20U, 50U, 100U, 250U})
            growing.push_back(framed(std::to_string(n), solicit(n - 2)));
        return growing;
    }();
    return cases;
}

void readClientId(const U8* data, std::size_t bytes, Fields6& fields) {
    fields.clientIdBytes = static_cast<U16>(bytes);
    if (bytes == 14) std::copy_n(data + 8, 6, fields.clientMac.begin());
}

void readRemoteId(const U8* data, std::size_t bytes, Fields6& fields) {
    fields.remoteIdBytes = static_cast<U16>(bytes);
    if (bytes < remoteIdHeaderBytes) return;
    fields.enterprise = loadBigEndian<U32>(data);
    std::copy_n(data + 8, 6, fields.remoteMac.begin());
    const std::size_t textBytes = std::min<std::size_t>(data[23], bytes - remoteIdHeaderBytes);
    const std::string_view text(reinterpret_cast<const char*>(data + remoteIdHeaderBytes), textBytes);
    const std::size_t colon = text.find(':');
    if (data[22] != 1 || colon == text.npos || colon > fields.interface.size()) return;
    std::copy_n(text.begin(), colon, fields.interface.begin());
    for (const char digit : text.substr(colon + 1)) fields.vlan = static_cast<U16>(fields.vlan * 10 + (digit - '0'));
}

Fields6 parseSolicitInOnePass(const U8* frame, std::size_t bytes) {
    Fields6 fields;
    if (bytes < headerBytes + 4 || loadBigEndian<U16>(frame + 12) != 0x86dd || frame[20] != 17) return fields;
    std::copy_n(frame, 6, fields.dstMac.begin());
    std::copy_n(frame + 6, 6, fields.srcMac.begin());
    std::copy_n(frame + 22, 16, fields.srcIp.begin());
    std::copy_n(frame + 38, 16, fields.dstIp.begin());
    fields.srcPort = loadBigEndian<U16>(frame + 54);
    fields.dstPort = loadBigEndian<U16>(frame + 56);
    fields.msgType = frame[headerBytes];
    fields.xid = loadBigEndian<U32>(frame + headerBytes) & 0xffffff;
    const U8* const end = frame + bytes;
    for (const U8* at = frame + headerBytes + 4; end - at >= 4;) {
        const U16 code = loadBigEndian<U16>(at), n = loadBigEndian<U16>(at + 2);
        if (end - at < 4 + n) break;
        if (code == 1) readClientId(at + 4, n, fields);
        if (code == 37) readRemoteId(at + 4, n, fields);
        at += 4 + n;
    }
    return fields;
}

}  // namespace DhcpBench
