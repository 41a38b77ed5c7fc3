#pragma once

#include <map>
#include <optional>
#include <string>

#include "Bridging/Config.h"
#include "DhcpLib/Dhcp6Parser.h"
#include "DhcpLib/DhcpParser.h"
#include "snoop/Arrival.h"
#include "snoop/TraceWatch.h"

namespace DhcpTool {

/// What a switch port does to frames.
struct PortSettings {
    unsigned nativeVlan = 1;
    Bridging::SwitchportMode switchportMode = Bridging::SwitchportMode::access;
};

/// How frames are to be snooped.
struct SnoopSettings {
    std::map<Kitnet::IntfId, PortSettings> ports;  ///< each on which frames arrive
    std::optional<int> traceLevel;
    bool json = false;
    bool keepState = false;  ///< one parser for all frames, as an agent may have it
};

/// What became of the frames.
struct SnoopCounts {
    U64 frames = 0;
    U64 dhcp = 0;
    U64 bootp = 0;
    U64 dhcp6 = 0;
    U64 rejected = 0;
    std::map<std::string, U64> rejectedFor;

    std::string text() const;
};

/// Takes frames as a snooping agent of both protocols does. What is IPv6 behind its tags goes to the DHCPv6 parser, all
/// else to the DHCPv4 one.
class Snooper {
public:
    explicit Snooper(const SnoopSettings& settings);

    /// The line about the frame's message; none where it was rejected.
    std::optional<std::string> take(const Arrival& frame);
    const SnoopCounts& counts() const { return counts_; }

private:
    std::optional<std::string> take4(const Arrival& frame);
    std::optional<std::string> take6(const Arrival& frame);
    std::optional<std::string> rejected(const std::string& why);

    SnoopSettings settings_;
    Bridging::Config::Ptr config_ = Kcore::makeNode<Bridging::Config>();
    DhcpLib::PacketParser parser_{config_};
    DhcpLib::Dhcp6PacketParser parser6_{config_};
    TraceWatch trace_;
    SnoopCounts counts_;
};

}  // namespace DhcpTool
