#pragma once

#include <map>
#include <optional>
#include <string>

#include "Bridging/Config.h"
#include "Capture.h"
#include "DhcpLib/DhcpParser.h"
#include "TraceWatch.h"

namespace DhcpTool {

/// How frames are to be snooped.
struct SnoopSettings {
    std::string interface = "Ethernet1";  ///< on which every frame arrives
    unsigned nativeVlan = 1;
    Bridging::SwitchportMode switchportMode = Bridging::SwitchportMode::access;
    std::optional<int> traceLevel;
    bool json = false;
    bool keepState = false;  ///< one parser for all frames, as an agent may have it
};

/// What became of the frames.
struct SnoopCounts {
    U64 frames = 0;
    U64 dhcp = 0;
    U64 bootp = 0;
    U64 rejected = 0;
    std::map<std::string, U64> rejectedFor;

    std::string text() const;
};

/// Takes frames as a snooping agent on one switch port does.
class Snooper {
public:
    /// Raises Kcore::RangeException where the interface's name is none.
    explicit Snooper(const SnoopSettings& settings);

    /// The line about the frame's message; none where it was rejected.
    std::optional<std::string> take(const Frame& frame);
    const SnoopCounts& counts() const { return counts_; }

private:
    bool parse(const Frame& frame);
    void reject(const std::string& why);

    SnoopSettings settings_;
    Kitnet::IntfId interface_;
    Bridging::Config::Ptr config_ = Kcore::makeNode<Bridging::Config>();
    DhcpLib::PacketParser parser_{config_};
    TraceWatch trace_;
    SnoopCounts counts_;
};

}  // namespace DhcpTool
