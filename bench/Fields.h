#pragma once

#include <array>
#include <string>
#include <string_view>

#include "Message.h"

namespace DhcpBench {

struct Numbers {
    std::array<U8, 6> dstMac{}, srcMac{}, chaddr{};
    bool tagged = false;
    U16 vlan = 0, srcPort = 0, dstPort = 0;
    U32 srcIp = 0, dstIp = 0;
    U8 op = 0, msgType = 0;
    U32 xid = 0, ciaddr = 0, yiaddr = 0, giaddr = 0;
    bool hasLeaseTime = false, hasLastTransaction = false, hasServerId = false;
    U32 leaseTime = 0, lastTransaction = 0;
    U32 serverId = 0;  ///< sub-option 11 of option 82 wins over option 54
    bool operator==(const Numbers&) const = default;
};

/// The fields that every contender reads from a frame. `Text` either owns its characters or points into the frame.
template <class Text>
struct Fields : Numbers {
    Text circuitId{}, remoteId{}, hostName{}, vendorClass{};
    Text paramReqList{};   ///< "1,3,6"
    Text associatedIps{};  ///< the bytes of option 92, unchanged
};

/// Space for the text of the longest parameter request list.
using ParamReqText = std::array<char, 4 * 255 + 4>;
/// Writes the codes as decimal numbers separated by commas. Returns the length of the text.
std::size_t writeParamReqList(const U8* codes, std::size_t n, ParamReqText& out);

/// What a relay does with option 82. The result has at least 300 bytes, the size of a BOOTP message.
enum class Rewriting : U8 { add, strip };

/// The name of the first field that differs, or null.
template <class A, class B>
const char* difference(const Fields<A>& a, const Fields<B>& b) {
    if (!(static_cast<const Numbers&>(a) == b)) return "a number";
    if (a.circuitId != b.circuitId) return "circuitId";
    if (a.remoteId != b.remoteId) return "remoteId";
    if (a.hostName != b.hostName) return "hostName";
    if (a.vendorClass != b.vendorClass) return "vendorClass";
    if (a.paramReqList != b.paramReqList) return "paramReqList";
    return a.associatedIps != b.associatedIps ? "associatedIps" : nullptr;
}

}  // namespace DhcpBench
