#include "exchange/ExchangeText.h"

#include <array>

#include "Kcore/Text.h"
#include "common/Printable.h"
#include "message/TypeNames.h"

namespace DhcpTool {

namespace {

struct Unit {
    Nanoseconds::rep nanoseconds;
    std::string_view name;
};

constexpr Nanoseconds::rep second = 1'000'000'000;
constexpr std::array units{Unit{second, "s"}, Unit{1'000'000, "ms"}, Unit{1'000, "us"}, Unit{1, "ns"}};

}  // namespace

std::string durationText(Nanoseconds time) {
    if (time.count() < 0) return '-' + durationText(timeBetween(time, Nanoseconds(0)));
    auto unit = units.begin();
    while (time.count() < unit->nanoseconds && unit != units.end() - 1) ++unit;
    const auto whole = time.count() / unit->nanoseconds;
    std::string text = std::to_string(whole);
    if (whole < 100 && unit->nanoseconds > 1) {
        const std::string thousandths =
            std::to_string(1000 + time.count() % unit->nanoseconds * 1000 / unit->nanoseconds);
        text.append(".").append(thousandths, 1, whole < 10 ? 2 : 1);
    }
    return text.append(unit->name);
}

std::string clientText(const Exchange& exchange) {
    if (exchange.mac) return Kcore::textOf(*exchange.mac);
    return exchange.clientId.empty() ? "unknown" : textOrHex(exchange.clientId);
}

std::string stepName(const Step& step) {
    constexpr std::array<std::string_view, 5> purposes{"", "", " (reboot)", " (renew)", " (rebind)"};
    return std::string(step.role().name).append(purposes[static_cast<U8>(step.purpose)]);
}

std::string serverText(const ExchangeServer& server) {
    std::string text = Kcore::textOf(server.address);
    if (server.direct) text.append(" (").append(Kcore::textOf(server.mac)).append(")");
    return text;
}

std::string addressText(const Assigned& assigned) {
    std::string text = Kcore::textOf(assigned.address);
    if (assigned.prefixBits) text.append("/").append(std::to_string(*assigned.prefixBits));
    return text;
}

std::string statusText(U16 code) {
    const std::string_view name = statusName(code);
    return name.empty() ? "status " + std::to_string(code) : std::string(name);
}

std::string addressesText(const std::vector<Assigned>& addresses) {
    std::string text;
    for (const Assigned& assigned : addresses) {
        if (!text.empty()) text.append(", ");
        text.append(addressText(assigned));
    }
    return text;
}

}  // namespace DhcpTool
