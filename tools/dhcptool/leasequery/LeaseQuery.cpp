#include "leasequery/LeaseQuery.h"

#include "DhcpLib/Constants.h"
#include "DhcpLib/OptionParser/LeaseQuery.h"
#include "DhcpLib/Wire.h"
#include "Kcore/Exception.h"
#include "common/HexBytes.h"

namespace DhcpTool {

namespace {

using Kcore::U32;
using Kcore::U8;
namespace Wire = DhcpLib::Wire;

constexpr U8 endOption = 255, parameterList = 55, clientIdOption = 61;
/// The times, the client's other addresses, and its identifier, which a server sends only if it is asked for.
constexpr U8 wanted[] = {51, 91, 92, clientIdOption};

/// Replaces the options that the library has put after the message type.
void askForClientId(Kitnet::Pkt& query, const std::string& id) {
    constexpr U32 listAt = DhcpLib::Constants::bootpHdrSize + 4 + 3;  // after the magic cookie and option 53
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
    const auto bytes = bytesOfHex(text);
    if (!bytes) throw Kcore::RangeException("no hexadecimal bytes");
    if (bytes->empty() || bytes->size() > mostBytes) throw Kcore::RangeException("not 1 to 255 bytes");
    return {*bytes};
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
