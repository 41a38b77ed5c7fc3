#include "Steps.h"

#include <algorithm>

namespace DhcpRelay {

Reason checkServer(const Transaction& t, const Context& context) {
    const Settings& s = context.settings;
    const bool isServerSide = s.serverInterface ? t.ifIndex == context.links.serverIfIndex()
                                                : !context.links.isUntrustedClientLink(t.ifIndex);
    if (!isServerSide) return Reason::wrongInterface;
    const auto isOneOf = [](const auto& addresses, const auto& address) {
        return std::find(addresses.begin(), addresses.end(), address) != addresses.end();
    };
    const bool isServer = t.src.isV4() ? isOneOf(s.servers4, t.src.v4Addr()) : isOneOf(s.servers6, t.src.v6Addr());
    return isServer || isOneOf(s.replySources, t.src) ? Reason::none : Reason::unknownServer;
}

Reason process(Transaction& t, Context& context) {
    const Steps& steps = stepsOf(t.protocol);
    if (t.side == Side::server) {
        if (const Reason reason = checkServer(t, context); reason != Reason::none) return reason;
    } else if (!context.budgets[t.port.link].spend(context.time)) {
        return Reason::rateLimit;
    }
    if (const Reason reason = steps.validate(t); reason != Reason::none) return reason;
    if (const Reason reason = steps.decide(t, context); reason != Reason::none) return reason;
    return steps.rewrite(t, context);
}

}  // namespace DhcpRelay
