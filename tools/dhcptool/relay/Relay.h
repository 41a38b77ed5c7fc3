#pragma once

#include <map>
#include <optional>
#include <string>

#include "DhcpLib/OptionParser.h"
#include "capture/Capture.h"
#include "relay/UdpFrame.h"

namespace DhcpTool {

/// Settings of the relay.
struct RelaySettings {
    DhcpLib::RelayGeneration generation = DhcpLib::RelayGeneration::preparePacket;
    DhcpLib::RelayRewrite rewrite;           ///< `op` and `offset` are set for each message
    std::optional<Kitnet::IpAddr> serverId;  ///< written to option 54 of replies
};

/// Numbers of frames by what was done with them.
struct RelayCounts {
    U64 frames = 0;
    U64 requests = 0;  ///< rewritten
    U64 replies = 0;   ///< rewritten
    U64 copied = 0;    ///< messages, and frames that may contain one
    std::map<std::string, U64> copiedFor;

    std::string text() const;
};

/// Rewrites the DHCPv4 messages in frames as a relay agent does.
class Relayer {
public:
    explicit Relayer(const RelaySettings& settings) : settings_(settings) {}

    struct Result {
        Kcore::Ptr<Kitnet::Pkt> frame;  ///< the rewritten frame; null if the original is to be copied
        std::string line;               ///< report about the message; empty if there is none
    };
    Result take(const Frame& frame);
    const RelayCounts& counts() const { return counts_; }

private:
    Result relay(const Frame& frame, const UdpFrame& place);
    Result copy(const Frame& frame, const std::string& why);

    RelaySettings settings_;
    RelayCounts counts_;
};

}  // namespace DhcpTool
