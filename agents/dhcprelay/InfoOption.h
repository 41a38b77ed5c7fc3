#pragma once

#include "Kcore/String.h"
#include "Transaction.h"

namespace DhcpRelay {

/// What the agent reads of a DHCPv4 message's options.
struct OptionFacts {
    bool isBootp = false;      ///< no magic cookie, so no options
    bool isWellFormed = true;  ///< an end option is reached
    bool hasInfo = false;      ///< relay agent information (option 82)
    U8 messageType = 0;        ///< option 53; 0 without
};

OptionFacts factsOf(const PktPtr& pkt, U32 at);

/// What a reply's option 82 says.
struct InfoFacts {
    Kcore::String circuitId;
    bool hasVssControl = false;
};

InfoFacts infoFactsOf(const PktPtr& pkt, U32 at);

/// Takes every option 82 out. False, and the message as it was, where that is not possible.
bool removeEveryInfo(const PktPtr& pkt, U32 at);

}  // namespace DhcpRelay
