#pragma once

#include <gtest/gtest.h>

#include <string>

#include "Bridging/Config.h"
#include "Bytes.h"
#include "DhcpLib/FrameRejection.h"
#include "Kcore/Exception.h"
#include "Recorders.h"

/// Shared by the tests of both snooping parsers: ports, and the outcome of a parse as text.
namespace DhcpTest {

inline const Kitnet::IntfId accessPort("Ethernet1"), tunnelPort("Ethernet2"), unknownPort("Ethernet9"), noPort;

/// An access port of VLAN 10, a tunnel port of VLAN 30.
inline const Kcore::Ptr<const Bridging::Config>& config() {
    static const Kcore::Ptr<const Bridging::Config> switchConfig = [] {
        auto made = Kcore::makeNode<Bridging::Config>();
        made->switchIntfConfigIs(accessPort)->nativeVlanIs(Bridging::VlanId(10));
        made->switchIntfConfigIs(tunnelPort)->nativeVlanIs(Bridging::VlanId(30));
        made->switchIntfConfigIs(tunnelPort)->switchportModeIs(Bridging::SwitchportMode::dot1qTunnel);
        return made;
    }();
    return switchConfig;
}

/// The outcome of `parse(parser)` as text: "true", the rejection's name or the text of the RangeException, then the
/// attributes that the call changed, then its trace lines of levels 1 and 2.
template <class Parser, class Parse>
std::string outcomeOf(Parser& parser, Parse parse) {
    const Parser before = parser;
    TraceRecorder trace(2);
    std::string outcome;
    try {
        const bool accepted = parse(parser);
        EXPECT_EQ(accepted, parser.rejection() == DhcpLib::FrameRejection::none);
        outcome = accepted ? "true:" : Kcore::textOf(parser.rejection()) + ':';
    } catch (const Kcore::RangeException& e) {
        EXPECT_EQ(parser.rejection(), DhcpLib::FrameRejection::reservedVlan);
        outcome = e.what() + std::string(":");
    }
    std::vector<std::string> values;
    Kcore::forEachAttribute(before, [&](auto, const auto& value) { values.push_back(Kcore::textOf(value)); });
    auto was = values.begin();
    Kcore::forEachAttribute(parser, [&](std::string_view name, const auto& value) {
        const std::string now = Kcore::textOf(value);
        if (now != *was++) outcome.append(" ").append(name).append("=").append(now);
    });
    for (const std::string& line : trace.lines()) outcome.append(" | ").append(line);
    return outcome;
}

/// Expects `outcome` from a fresh parser, whatever bytes follow the frame, and that it writes nothing.
template <class Parser, class Parse>
void expectOutcome(const Octets& frame, Parse parse, const std::string& outcome) {
    for (const PktPtr& pkt : packets(frame)) {
        Parser parser(config());
        EXPECT_EQ(outcomeOf(parser, [&](Parser& p) { return parse(p, pkt); }), outcome);
        EXPECT_EQ(bytesOf(*pkt), frame);
    }
}

}  // namespace DhcpTest
