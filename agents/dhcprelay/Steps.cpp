#include "Steps.h"

#include <algorithm>

namespace DhcpRelay {

Reason checkServer(const Transaction& t, const Context& context) {
    const Settings& s = context.settings;
    if (s.serverInterface && t.ifIndex != context.links.serverIfIndex()) return Reason::wrongInterface;
    const bool isServer = t.src.isV4()
                              ? std::find(s.servers4.begin(), s.servers4.end(), t.src.v4Addr()) != s.servers4.end()
                              : std::find(s.servers6.begin(), s.servers6.end(), t.src.v6Addr()) != s.servers6.end();
    return isServer ? Reason::none : Reason::unknownServer;
}

Reason process(Transaction& t, Context& context) {
    const Steps& steps = stepsOf(t.protocol);
    if (t.side == Side::server)
        if (const Reason reason = checkServer(t, context); reason != Reason::none) return reason;
    if (const Reason reason = steps.validate(t); reason != Reason::none) return reason;
    if (const Reason reason = steps.decide(t, context); reason != Reason::none) return reason;
    return steps.rewrite(t, context);
}

}  // namespace DhcpRelay
