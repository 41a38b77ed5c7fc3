#include "Counters.h"

#include <nlohmann/json.hpp>

namespace DhcpRelay {

namespace {

constexpr char serverSide[] = "(servers)";

std::string nameOf(const ServerCounters& server) { return "server " + Kcore::textOf(server.address); }

template <class Tell>
void forEachReason(const LinkCounters& row, Tell tell) {
    for (const ReasonMember& reason : Kcore::EnumTable<Reason>::members)
        if (const U64 n = row.byReason[static_cast<std::size_t>(reason.value)]; n != 0) tell(reason, n);
}

}  // namespace

Counters::Counters(const Settings& settings) {
    for (const ClientLink& link : settings.clients) rows_.emplace_back(link.name.name(), LinkCounters());
    rows_.emplace_back(serverSide, LinkCounters());
    for (const IpAddr& server : settings.servers4) servers_.push_back({.address = server});
    for (const Ip6Addr& server : settings.servers6) servers_.push_back({.address = server});
}

ServerCounters* Counters::ofServer(const IpGenAddr& address) {
    for (ServerCounters& server : servers_)
        if (server.address == address) return &server;
    return nullptr;
}

std::string Counters::text() const {
    std::string out;
    for (const auto& [name, row] : rows_) {
        out += name + ": relayed " + std::to_string(row.relayed) + ", delivered " + std::to_string(row.delivered);
        if (row.kernelDropped) out += ", kernel-dropped " + std::to_string(*row.kernelDropped);
        forEachReason(row, [&](const ReasonMember& reason, U64 n) {
            out += std::string(", ") + std::string(reason.name) + " " + std::to_string(n);
        });
        out += '\n';
    }
    for (const ServerCounters& s : servers_)
        out += nameOf(s) + ": sent " + std::to_string(s.sent) + ", not-sent " + std::to_string(s.notSent) +
               ", returned " + std::to_string(s.returned) + '\n';
    return out;
}

std::string Counters::json() const {
    nlohmann::ordered_json all;
    for (const auto& [name, row] : rows_) {
        nlohmann::ordered_json one{{"relayed", row.relayed}, {"delivered", row.delivered}};
        if (row.kernelDropped) one["kernel-dropped"] = *row.kernelDropped;
        auto dropped = nlohmann::ordered_json::object(), remarked = dropped;
        forEachReason(row, [&](const ReasonMember& reason, U64 n) {
            (reason.kind == ReasonKind::drop ? dropped : remarked)[std::string(reason.name)] = n;
        });
        one["dropped"] = dropped;
        one["remarks"] = remarked;
        all[name] = one;
    }
    for (const ServerCounters& s : servers_)
        all[nameOf(s)] = {{"sent", s.sent}, {"not-sent", s.notSent}, {"returned", s.returned}};
    return all.dump() + '\n';
}

}  // namespace DhcpRelay
