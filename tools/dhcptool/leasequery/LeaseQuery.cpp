#include "leasequery/LeaseQuery.h"

#include <charconv>

#include "DhcpLib/Constants.h"
#include "DhcpLib/OptionParser/LeaseQuery.h"
#include "DhcpLib/Wire.h"
#include "Kcore/Exception.h"

namespace DhcpTool {

namespace {

using Kcore::U32;
using Kcore::U8;
namespace Wire = DhcpLib::Wire;

constexpr U8 endOption = 255, parameterList = 55, clientIdOption = 61;
/// The times, the client's other addresses, and its identifier, which a server sends only if it is asked for.
constexpr U8 wanted[] = {51, 91, 92, clientIdOption};

/// Writes the options behind the message type over those that the library has put there.
void askForClientId(Kitnet::Pkt& query, const std::string& id) {
    constexpr U32 listAt = DhcpLib::Constants::bootpHdrSize + 4 + 3;  // behind the magic cookie and option 53
    const U32 idAt = listAt + 2 + U32{sizeof wanted};
    const U32 endAt = idAt + 2 + static_cast<U32>(id.size());
    if (query.bytes() <= endAt) query.newSharedTailData(endAt + 1 - static_cast<U32>(query.bytes()));
    Wire::store<U8>(query, listAt, parameterList);
    Wire::store<U8>(query, listAt + 1, U8{sizeof wanted});
    Wire::store(query, listAt + 2, std::span<const U8>(wanted));
    Wire::store<U8>(query, idAt, clientIdOption);
    Wire::store<U8>(query, idAt + 1, static_cast<U8>(id.size()));
    Wire::store(query, idAt + 2, std::string_view(id));
    Wire::store<U8>(query, endAt, endOption);
}

}  // namespace

ClientId ClientId::fromText(const std::string& text) {
    ClientId id;
    for (std::size_t at = 0; at < text.size(); at += 2) {
        if (at != 0 && text[at] == ':') ++at;
        U8 byte = 0;
        const char* const end = text.data() + std::min(at + 2, text.size());
        const auto [read, error] = std::from_chars(text.data() + at, end, byte, 16);
        if (error != std::errc() || read != text.data() + at + 2) throw Kcore::RangeException("no hexadecimal bytes");
        id.bytes.push_back(static_cast<char>(byte));
    }
    if (id.bytes.empty() || id.bytes.size() > mostBytes) throw Kcore::RangeException("not 1 to 255 bytes");
    return id;
}

DhcpLib::PktPtr leaseQueryFor(const LeaseSubject& subject, Kitnet::IpAddr giaddr, U32 xid) {
    const auto* const mac = std::get_if<Kitnet::EthAddr>(&subject);
    const auto* const ip = std::get_if<Kitnet::IpAddr>(&subject);
    DhcpLib::PktPtr query = DhcpLib::buildDhcpLeaseQuery(
        mac != nullptr, giaddr, mac != nullptr ? *mac : Kitnet::EthAddr(), ip != nullptr ? *ip : Kitnet::IpAddr(), xid);
    if (const auto* const id = std::get_if<ClientId>(&subject)) askForClientId(*query, id->bytes);
    return query;
}

}  // namespace DhcpTool
