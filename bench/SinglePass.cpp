#include "SinglePass.h"

#include <algorithm>
#include <cstring>

#include "Kitnet/BigEndian.h"

namespace DhcpBench {

namespace {

using Kitnet::loadBigEndian;

struct Decimal {
    char digits[4];  // followed by a comma if there is space
    U8 length;
};
constexpr auto decimals = [] {
    std::array<Decimal, 256> table{};
    for (U32 n = 0; n < table.size(); ++n) {
        Decimal& entry = table[n];
        if (n >= 100) entry.digits[entry.length++] = static_cast<char>('0' + n / 100);
        if (n >= 10) entry.digits[entry.length++] = static_cast<char>('0' + n / 10 % 10);
        entry.digits[entry.length++] = static_cast<char>('0' + n % 10);
        entry.digits[entry.length] = ',';
    }
    return table;
}();

std::string_view textAt(const U8* at, std::size_t n) { return {reinterpret_cast<const char*>(at), n}; }

void readRelayInformation(const U8* at, const U8* end, FloorFields& fields, U32& overridden) {
    while (end - at >= 2 && end - at >= 2 + at[1]) {
        const std::size_t n = at[1];
        if (at[0] == 1) fields.circuitId = textAt(at + 2, n);
        if (at[0] == 2) fields.remoteId = textAt(at + 2, n);
        if (at[0] == 11 && n >= 4) overridden = loadBigEndian<U32>(at + 2);
        at += 2 + n;
    }
}

void readNumber(const U8* at, std::size_t n, bool& present, U32& value) {
    present = true;
    value = n == 4 ? loadBigEndian<U32>(at) : 0;
}

bool readOptions(const U8* at, const U8* end, FloorFields& fields) {
    U32 overridden = 0;
    for (;;) {
        if (at == end) return false;
        const U8 code = *at;
        if (code == 0) {
            ++at;
            continue;
        }
        if (code == 255) break;
        if (end - at < 2 || end - at < 2 + at[1]) return false;
        const std::size_t n = at[1];
        const U8* const data = at + 2;
        at = data + n;
        switch (code) {
            case 12:
                fields.hostName = textAt(data, n);
                break;
            case 51:
                readNumber(data, n, fields.hasLeaseTime, fields.leaseTime);
                break;
            case 53:
                fields.msgType = n > 0 ? *data : U8{0};
                break;
            case 54:
                readNumber(data, n, fields.hasServerId, fields.serverId);
                break;
            case 55:
                fields.paramReqList = {fields.paramReqText.data(), writeParamReqList(data, n, fields.paramReqText)};
                break;
            case 60:
                fields.vendorClass = textAt(data, n);
                break;
            case 82:
                readRelayInformation(data, at, fields, overridden);
                break;
            case 91:
                readNumber(data, n, fields.hasLastTransaction, fields.lastTransaction);
                break;
            case 92:
                fields.associatedIps = textAt(data, n);
                break;
            default:
                break;
        }
    }
    if (overridden != 0) {
        fields.hasServerId = true;
        fields.serverId = overridden;
    }
    return true;
}

/// Size of the headers in front of the message; 0 if the frame carries no DHCP message.
std::size_t readHeaders(const U8* frame, std::size_t bytes, Numbers& fields) {
    if (bytes < 46) return 0;
    std::copy_n(frame, 6, fields.dstMac.begin());
    std::copy_n(frame + 6, 6, fields.srcMac.begin());
    fields.tagged = loadBigEndian<U16>(frame + 12) == 0x8100;
    if (fields.tagged) fields.vlan = loadBigEndian<U16>(frame + 14) & 0xfff;
    const std::size_t etherBytes = fields.tagged ? 18 : 14;
    const U8* const ip = frame + etherBytes;
    const std::size_t ipBytes = (ip[0] & 0xfU) * 4;
    if (loadBigEndian<U16>(ip - 2) != 0x0800 || ipBytes < 20 || ip[9] != 17 || bytes < etherBytes + ipBytes + 8)
        return 0;
    fields.srcIp = loadBigEndian<U32>(ip + 12);
    fields.dstIp = loadBigEndian<U32>(ip + 16);
    fields.srcPort = loadBigEndian<U16>(ip + ipBytes);
    fields.dstPort = loadBigEndian<U16>(ip + ipBytes + 2);
    return fields.dstPort == 67 || fields.dstPort == 68 ? etherBytes + ipBytes + 8 : 0;
}

bool readMessage(const U8* message, std::size_t bytes, FloorFields& fields) {
    if (bytes < 240 || loadBigEndian<U32>(message + 236) != 0x63825363) return false;
    fields.op = message[0];
    fields.xid = loadBigEndian<U32>(message + 4);
    fields.ciaddr = loadBigEndian<U32>(message + 12);
    fields.yiaddr = loadBigEndian<U32>(message + 16);
    fields.giaddr = loadBigEndian<U32>(message + 24);
    std::copy_n(message + 28, 6, fields.chaddr.begin());
    return readOptions(message + 240, message + bytes, fields);
}

}  // namespace

std::size_t writeParamReqList(const U8* codes, std::size_t n, ParamReqText& out) {
    char* at = out.data();
    for (std::size_t i = 0; i < n; ++i) {
        const Decimal& decimal = decimals[codes[i]];
        std::memcpy(at, decimal.digits, sizeof decimal.digits);
        at += decimal.length + 1;
    }
    return n == 0 ? 0 : static_cast<std::size_t>(at - out.data()) - 1;
}

FloorFields parseFrameInOnePass(const U8* frame, std::size_t bytes) {
    FloorFields fields;
    const std::size_t headers = readHeaders(frame, bytes, fields);
    fields.understood = headers != 0 && readMessage(frame + headers, bytes - headers, fields);
    return fields;
}

FloorFields parseMessageInOnePass(const U8* message, std::size_t bytes) {
    FloorFields fields;
    fields.understood = readMessage(message, bytes, fields);
    return fields;
}

std::span<const U8> rewriteInOnePass(const U8* message, std::size_t bytes, Rewriting rewriting,
                                     const Octets& information) {
    static U8 rewritten[2048];
    U8* const end = std::copy_n(message, bytes, rewritten);
    U8 *at = rewritten + 240, *relayOption = nullptr;
    for (; at < end && *at != 255; at += *at == 0 ? 1 : 2 + at[1]) {
        if (end - at < 2) return {};
        if (*at == 82) relayOption = at;
    }
    if (at >= end) return {};
    if (rewriting == Rewriting::add) {
        *at++ = 82;
        *at++ = static_cast<U8>(information.size());
        at = std::ranges::copy(information, at).out;
    } else if (relayOption != nullptr) {
        at = std::copy(relayOption + 2 + relayOption[1], at, relayOption);
    }
    *at++ = 255;
    U8* const whole = std::max(at, rewritten + Message::minBytes);
    std::fill(at, whole, U8{0});
    return {rewritten, whole};
}

}  // namespace DhcpBench
