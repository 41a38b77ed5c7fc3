#include "Kitnet/IpAddr.h"

#include <arpa/inet.h>

#include <charconv>

namespace Kitnet {

namespace {

/// Parses with the C library; the text need not be terminated. False if it is not an address of this family.
template <class Address>
bool parseAddress(int family, std::string_view text, Address* address) {
    char terminated[INET6_ADDRSTRLEN] = {};
    if (text.size() >= sizeof terminated || text.find('\0') != text.npos) return false;
    std::copy(text.begin(), text.end(), terminated);
    U8 bytes[Address::wireBytes];
    if (inet_pton(family, terminated, bytes) != 1) return false;
    *address = Address::fromBytes(bytes);
    return true;
}

constexpr std::size_t groupCount = Ip6Addr::wireBytes / sizeof(U16);

U16 groupAt(const Ip6Addr& address, std::size_t i) { return loadBigEndian<U16>(address.bytes() + sizeof(U16) * i); }

/// A run of zero groups, which is written as "::".
struct ZeroRun {
    std::size_t first = groupCount;
    std::size_t length = 1;  // a single zero group is not shortened (RFC 5952 section 4.2.2)
};

/// The longest run; the first one if several are equally long.
ZeroRun longestZeroRun(const Ip6Addr& address) {
    ZeroRun longest;
    for (std::size_t i = 0; i < groupCount; ++i) {
        std::size_t end = i;
        while (end < groupCount && groupAt(address, end) == 0) ++end;
        if (end - i > longest.length) longest = {i, end - i};
        i = end;
    }
    return longest;
}

}  // namespace

void IpAddr::appendText(std::string& out) const {
    for (std::size_t i = 0; i < wireBytes; ++i) {
        if (i != 0) out.push_back('.');
        Kcore::appendText(out, bytes_[i]);
    }
}

bool IpAddr::parse(std::string_view text, IpAddr* value) { return parseAddress(AF_INET, text, value); }

void Ip6Addr::appendText(std::string& out) const {
    const ZeroRun run = longestZeroRun(*this);
    const bool isV4Mapped = run.first == 0 && run.length == 5 && groupAt(*this, 5) == 0xffff;
    for (std::size_t i = 0; i < groupCount; ++i) {
        if (i == run.first) {
            out.append("::");
            i += run.length - 1;
            continue;
        }
        if (i != 0 && i != run.first + run.length) out.push_back(':');
        if (isV4Mapped && i == 6) return IpAddr::fromBytes(bytes() + 12).appendText(out);
        char digits[4];
        out.append(digits, std::to_chars(digits, digits + sizeof digits, groupAt(*this, i), 16).ptr);
    }
}

bool Ip6Addr::parse(std::string_view text, Ip6Addr* value) { return parseAddress(AF_INET6, text, value); }

}  // namespace Kitnet
