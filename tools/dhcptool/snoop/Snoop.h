#pragma once

#include <map>
#include <optional>
#include <string>

#include "Bridging/Config.h"
#include "DhcpLib/Dhcp6Parser.h"
#include "DhcpLib/DhcpParser.h"
#include "capture/Arrival.h"
#include "snoop/TraceLines.h"

namespace DhcpTool {

/// Settings of a switch port.
struct PortSettings {
    unsigned nativeVlan = 1;
    Bridging::SwitchportMode switchportMode = Bridging::SwitchportMode::access;
};

/// Settings of the snooping.
struct SnoopSettings {
    std::map<Kitnet::IntfId, PortSettings> ports;  ///< all ports on which frames arrive
    std::optional<int> traceLevel;
    bool json = false;
    bool keepState = false;  ///< one parser for all frames, as in some agents
};

/// Numbers of frames by what became of them.
struct SnoopCounts {
    U64 frames = 0;
    U64 dhcp = 0;
    U64 bootp = 0;
    U64 dhcp6 = 0;
    U64 rejected = 0;
    std::map<std::string, U64> rejectedFor;  ///< by reason

    std::string text() const;
};

/// Parses frames as a snooping agent for both protocols does. Frames with IPv6 behind their tags go to the DHCPv6
/// parser, all others to the DHCPv4 parser.
class Snooper {
public:
    explicit Snooper(const SnoopSettings& settings);

    /// The line for the frame's message; none if the frame was rejected.
    std::optional<std::string> take(const Arrival& frame);
    const SnoopCounts& counts() const { return counts_; }

private:
    std::optional<std::string> take4(const Arrival& frame);
    std::optional<std::string> take6(const Arrival& frame);
    std::optional<std::string> rejected(DhcpLib::FrameRejection rejection, bool dhcp6);

    SnoopSettings settings_;
    Bridging::Config::Ptr config_ = Kcore::makeNode<Bridging::Config>();
    DhcpLib::PacketParser parser_{config_};
    DhcpLib::Dhcp6PacketParser parser6_{config_};
    TraceLines trace_;
    SnoopCounts counts_;
};

}  // namespace DhcpTool
