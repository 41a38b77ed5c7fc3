#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Bytes.h"
#include "DhcpLib/OptionParser.h"
#include "Recorders.h"

/// Rows of the tests of the relay rewrite, and a function that checks each kind of row.
namespace DhcpTest::Relay {

using DhcpLib::BootpOption;
using DhcpLib::RelayRewrite;
using Generation = DhcpLib::RelayGeneration;
using Verdict = DhcpLib::RelayRewriteVerdict;

inline constexpr auto oldGeneration = Generation::preparePacket, newGeneration = Generation::preparePacketNew;
inline constexpr auto reply = BootpOption::bootpReply;
inline constexpr auto wouldBreak = Verdict::infoOptionWouldBreak;

// Their wire bytes are 0A 00 05 01, 0A 00 0B 01 and 0A 00 09 01.
inline const auto linkAddress = Kitnet::IpAddr::fromText("10.0.5.1"),
                  serverAddress = Kitnet::IpAddr::fromText("10.0.11.1");
inline const auto tunnelAddress = Kitnet::IpGenAddr::fromText("10.0.9.1");

/// The signature text that a generation's assertions name.
inline std::string signatureOf(Generation generation) {
    return std::string("bool DhcpLib::") + (generation == oldGeneration ? "preparePacket" : "preparePacketNew") +
           "(const Ptr&, DhcpLib::BootpOption, bool, Tyk::String, Tyk::String, Tyk::String, Kitnet::IpAddr, "
           "Kitnet::IpAddr, U32, bool, Tyk::String, Kitnet::IpGenAddr)";
}

/// The bytes in the notation of the rows: "EE*3" for three bytes EE.
inline std::string shown(const Octets& bytes) {
    std::string text = std::to_string(bytes.size()) + " bytes:";
    for (auto run = bytes.begin(); run != bytes.end();) {
        const auto next = std::find_if(run, bytes.end(), [&](U8 byte) { return byte != *run; });
        char spelled[16];
        std::snprintf(spelled, sizeof spelled, next - run > 1 ? " %02X*%d" : " %02X", *run,
                      static_cast<int>(next - run));
        text += spelled;
        run = next;
    }
    return text;
}

inline void expectBytes(const Kitnet::Pkt& pkt, const Octets& expected) {
    EXPECT_TRUE(bytesOf(pkt) == expected) << "have " << shown(bytesOf(pkt)) << "\nwant " << shown(expected);
}

struct Rewritten {
    const char* rule;
    RelayRewrite args;
    const char* before;  ///< the options area
    const char* after;   ///< the options area afterwards, up to the end option; zeros follow
    U32 size;            ///< of the message afterwards
    Verdict verdict = Verdict::fine;
};

/// Expects that the rewrite and its forecast give what the row says, at each offset and in every kind of storage.
inline void expectRewritten(const Rewritten& row, Generation generation) {
    SCOPED_TRACE(row.rule);
    const Octets options = message(row.after);
    ASSERT_LE(options.size(), row.size);
    for (const U32 offset : {0u, 14u}) {
        const Octets front(offset, scratch);
        const Octets expected = front + options + Octets(row.size - options.size(), 0);
        RelayRewrite args = row.args;
        args.offset = offset;
        for (const PktPtr& pkt : packets(front + message(row.before))) {
            const auto forecast = relayRewriteCheck(pkt, args, generation);
            EXPECT_EQ(forecast.verdict, row.verdict) << stringValue(forecast.verdict);
            EXPECT_EQ(forecast.isRewritable(), row.verdict != wouldBreak);
            EXPECT_EQ(forecast.messageBytes, row.size);
            expectBytes(*pkt, front + message(row.before));
            EXPECT_TRUE(relayRewrite(pkt, args, generation));
            expectBytes(*pkt, expected);
        }
    }
}

struct Stopped {
    const char* rule;
    RelayRewrite args;
    Octets before;  ///< the whole packet
    Verdict verdict;
    const char* text;  ///< text of the last level-1 trace line, or of the assertion
};

/// Expects that the rewrite refuses the packet and leaves it unchanged, and that the forecast says so.
inline void expectStopped(const Stopped& row, Generation generation) {
    SCOPED_TRACE(row.rule);
    for (const PktPtr& pkt : packets(row.before)) {
        const auto forecast = relayRewriteCheck(pkt, row.args, generation);
        EXPECT_EQ(forecast.verdict, row.verdict) << stringValue(forecast.verdict);
        EXPECT_FALSE(forecast.isRewritable());
        EXPECT_EQ(forecast.messageBytes, pkt->bytes() - row.args.offset);
        TraceRecorder trace(1);
        bool result = false;
        const std::string assertion = assertionOf([&] { result = relayRewrite(pkt, row.args, generation); });
        EXPECT_FALSE(result);
        const std::vector<std::string> lines = trace.lines();
        if (row.verdict == Verdict::assertion) {
            EXPECT_EQ(forecast.assertion, row.text);
            EXPECT_EQ(assertion, "DhcpLib/OptionParser|" + signatureOf(generation) + '|' + row.text);
        } else {
            EXPECT_EQ(assertion, "");
            EXPECT_EQ(lines.empty() ? "" : lines.back(), std::string("1 ") + row.text);
        }
        expectBytes(*pkt, row.before);
    }
}

}  // namespace DhcpTest::Relay
