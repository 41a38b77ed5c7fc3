#pragma once

#include <string>

#include "exchange/Exchange.h"

namespace DhcpTool {

/// Three digits and a unit: "850ns", "1.20ms", "34.5s", "4000s". The rest is cut off.
std::string durationText(Nanoseconds time);

/// The client's MAC address, else its identifier.
std::string clientText(const Exchange& exchange);

/// "DISCOVER", "REQUEST (renew)".
std::string stepName(const Step& step);

/// "10.0.0.1", "10.0.0.1 (02:5e:00:00:00:01)" with the MAC address of a server that answers without a relay agent.
std::string serverText(const ExchangeServer& server);

/// "10.0.0.100", "2001:db8:f00::/56".
std::string addressText(const Assigned& assigned);

/// "NoAddrsAvail"; "status 77" for a code without a name.
std::string statusText(U16 code);

/// Joins with ", ".
std::string addressesText(const std::vector<Assigned>& addresses);

}  // namespace DhcpTool
