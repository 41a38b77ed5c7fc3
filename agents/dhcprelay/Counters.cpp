#include "Counters.h"

#include <nlohmann/json.hpp>

namespace DhcpRelay {

namespace {

constexpr char serverSide[] = "(servers)";

template <class Tell>
void forEachReason(const LinkCounters& row, Tell tell) {
    for (const ReasonMember& reason : Kcore::EnumTable<Reason>::members)
        if (const U64 n = row.byReason[static_cast<std::size_t>(reason.value)]; n != 0) tell(reason, n);
}

}  // namespace

Counters::Counters(const std::vector<ClientLink>& links) {
    for (const ClientLink& link : links) rows_.emplace_back(link.name.name(), LinkCounters());
    rows_.emplace_back(serverSide, LinkCounters());
}

std::string Counters::text() const {
    std::string out;
    for (const auto& [name, row] : rows_) {
        out += name + ": relayed " + std::to_string(row.relayed) + ", delivered " + std::to_string(row.delivered) +
               ", kernel-dropped " + std::to_string(row.kernelDropped);
        forEachReason(row, [&](const ReasonMember& reason, U64 n) {
            out += std::string(", ") + std::string(reason.name) + " " + std::to_string(n);
        });
        out += '\n';
    }
    return out;
}

std::string Counters::json() const {
    nlohmann::ordered_json all;
    for (const auto& [name, row] : rows_) {
        nlohmann::ordered_json one{
            {"relayed", row.relayed}, {"delivered", row.delivered}, {"kernel-dropped", row.kernelDropped}};
        auto dropped = nlohmann::ordered_json::object(), remarked = dropped;
        forEachReason(row, [&](const ReasonMember& reason, U64 n) {
            (reason.kind == ReasonKind::drop ? dropped : remarked)[std::string(reason.name)] = n;
        });
        one["dropped"] = dropped;
        one["remarks"] = remarked;
        all[name] = one;
    }
    return all.dump() + '\n';
}

}  // namespace DhcpRelay
