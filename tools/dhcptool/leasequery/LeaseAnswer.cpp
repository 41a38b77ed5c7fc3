#include "leasequery/LeaseAnswer.h"

#include <map>

#include "DhcpLib/DhcpHdr.h"
#include "DhcpLib/OptionParser/BasicCheck.h"
#include "common/JsonWriter.h"
#include "message/Item.h"
#include "view/TimeText.h"

namespace DhcpTool {

namespace {

using Kcore::U32;
using Kcore::U8;

constexpr U32 messageAt = 0;
constexpr U8 leaseTimeOption = 51, typeOption = 53, serverIdOption = 54, clientIdOption = 61;
constexpr U8 lastTransactionOption = 91, associatedIpOption = 92;

/// The options of a message, by code.
class Options {
public:
    /// Requires: the options area is well-formed.
    explicit Options(const DhcpLib::PktPtr& message) {
        forEachItem<DhcpLib::OptionShape>(DhcpLib::Wire::ByteView(*message),
                                          DhcpLib::Constants::bootpHdrSize + U32{sizeof(U32)}, [&](const Item& option) {
                                              const bool end = option.code == 255;
                                              if (!end) joined_[option.code] += option.data;
                                              return !end;
                                          });
    }

    const std::string* find(U8 code) const {
        const auto found = joined_.find(code);
        return found != joined_.end() ? &found->second : nullptr;
    }
    /// Whether the option is absent or has `bytes` bytes.
    bool fits(U8 code, std::size_t bytes) const {
        const std::string* const data = find(code);
        return data == nullptr || data->size() == bytes;
    }
    std::optional<U32> number(U8 code) const {
        const std::string* const data = find(code);
        return data != nullptr ? std::optional(numberAt(*data, 0)) : std::nullopt;
    }
    static U32 numberAt(const std::string& data, std::size_t at) {
        return DhcpLib::Wire::ByteView(reinterpret_cast<const U8*>(data.data()), static_cast<U32>(data.size()))
            .load<U32>(static_cast<U32>(at));
    }

private:
    std::map<U16, std::string> joined_;
};

std::optional<LeaseState> stateOf(const Options& options) {
    const std::string* const type = options.find(typeOption);
    if (type == nullptr || type->size() != 1) return std::nullopt;
    const LeaseState state{static_cast<U8>(type->front())};
    return Kcore::enumName(state).empty() ? std::nullopt : std::optional(state);
}

std::optional<Kitnet::EthAddr> ethernetAddress(const DhcpLib::DhcpHdrWrapper& header) {
    const bool ethernet = header.htype() == static_cast<U8>(DhcpLib::Constants::hardwareTypeEthernet) &&
                          header.hlen() == sizeof(Kitnet::EthAddr);
    return ethernet ? std::optional(header.chaddr()) : std::nullopt;
}

/// Why the options are not those of a lease; empty if they are.
std::string_view faultOf(const Options& options) {
    for (const U8 time : {leaseTimeOption, lastTransactionOption})
        if (!options.fits(time, sizeof(U32))) return "a time of the wrong length";
    if (!options.fits(serverIdOption, sizeof(U32))) return "a server identifier of the wrong length";
    const std::string* const ips = options.find(associatedIpOption);
    return ips != nullptr && ips->size() % sizeof(U32) != 0 ? "associated addresses of the wrong length" : "";
}

LeaseAnswer answerOf(const DhcpLib::DhcpHdrWrapper& header, LeaseState state, const Options& options) {
    LeaseAnswer answer;
    answer.state = state;
    if (!header.ciaddr().isAny()) answer.ip = header.ciaddr();
    answer.mac = ethernetAddress(header);
    if (const std::string* const id = options.find(clientIdOption)) answer.clientId = *id;
    if (const auto time = options.number(leaseTimeOption)) answer.leaseTime = Kcore::Duration(*time);
    if (const auto time = options.number(lastTransactionOption)) answer.lastTransactionTime = Kcore::Duration(*time);
    if (const auto server = options.number(serverIdOption)) answer.serverId = Kitnet::IpAddr(*server);
    if (const std::string* const ips = options.find(associatedIpOption))
        for (std::size_t at = 0; at < ips->size(); at += sizeof(U32))
            answer.associatedIps.insert(Kitnet::IpAddr(Options::numberAt(*ips, at)));
    return answer;
}

/// Whether the answer is about what was asked for. A server that does not know it may leave the field out, and one that
/// knows it need not send a client identifier.
bool isAbout(const LeaseAnswer& answer, const LeaseSubject& subject) {
    const bool unknown = answer.state == LeaseState::unknown;
    if (const auto* const ip = std::get_if<Kitnet::IpAddr>(&subject)) return answer.ip ? answer.ip == *ip : unknown;
    if (const auto* const mac = std::get_if<Kitnet::EthAddr>(&subject))
        return answer.mac ? answer.mac == *mac : unknown;
    return !answer.clientId || *answer.clientId == std::get<ClientId>(subject).bytes;
}

void appendLine(std::string& out, std::string_view name, const std::string& value) {
    if (!out.empty()) out.push_back('\n');
    out.append(name).append(" ").append(value);
}

template <class T>
void memberOrNull(JsonWriter& json, std::string_view name, const std::optional<T>& value) {
    json.key(name);
    value ? json.value(*value) : json.null();
}

}  // namespace

LeaseReply leaseReplyOf(const DhcpLib::PktPtr& message, const LeaseSubject& subject, U32 xid) {
    const auto refused = [](std::string_view why) { return LeaseReply{std::nullopt, why}; };
    if (!DhcpLib::dhcpOptionBasicCheck(message, messageAt)) return refused("not DHCP, or malformed options");
    const auto header = DhcpLib::dhcpHdrWrapperFactory(message, messageAt);
    const Options options(message);
    const auto state = stateOf(options);
    if (header->header()->bootpOp() != DhcpLib::BootpOpType::bootpRep || !state)
        return refused("not a reply to a lease query");
    if (header->xid() != xid) return refused("another transaction");
    if (const std::string_view fault = faultOf(options); !fault.empty()) return refused(fault);
    const LeaseAnswer answer = answerOf(*header, *state, options);
    if (!isAbout(answer, subject)) return refused("about another client or address");
    return {answer, {}};
}

std::string LeaseAnswer::text() const {
    using Kcore::textOf;
    std::string out;
    appendLine(out, "state", textOf(state));
    if (ip) appendLine(out, "ip", textOf(*ip));
    if (mac) appendLine(out, "mac", textOf(*mac));
    if (clientId) appendLine(out, "client-id", textOrHex(*clientId));
    if (leaseTime) appendLifetime(out.append("\nlease-time "), static_cast<U32>(leaseTime->count()));
    if (lastTransactionTime) appendLine(out, "last-transaction", textOf(*lastTransactionTime) + "s ago");
    if (!associatedIps.empty()) appendLine(out, "associated", textOf(associatedIps));
    if (serverId) appendLine(out, "server-id", textOf(*serverId));
    return out;
}

std::string LeaseAnswer::json() const {
    std::string out;
    JsonWriter json(out);
    json.startObject();
    json.member("state", state);
    memberOrNull(json, "ip", ip);
    memberOrNull(json, "mac", mac);
    json.key("clientId");
    clientId ? json.hex(*clientId) : json.null();
    memberOrNull(json, "leaseTime", leaseTime);
    memberOrNull(json, "lastTransactionTime", lastTransactionTime);
    json.member("associatedIps", associatedIps);
    memberOrNull(json, "serverId", serverId);
    json.endObject();
    return out;
}

}  // namespace DhcpTool
