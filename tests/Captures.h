#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Bytes.h"

/// Captures, and what an independent dissector reads in them (`data/captures/README.md`).
namespace DhcpTest::Captures {

using Json = nlohmann::json;
using Path = std::filesystem::path;

struct Frame {
    std::size_t number;
    Octets bytes;
    Json expected;  ///< null where the dissector sees no DHCP
};

/// The bundled captures whose names start with `prefix` or with "crafted-" and `prefix`, by name.
std::vector<Path> bundled(const std::string& prefix);
/// The folder of captures that are used where they are and never copied: DHCPLIB_SHARED_CAPTURES, or the one beside the
/// checkout. None where there is no such folder.
std::optional<Path> publicFolder();
/// The captures of a folder, by name.
std::vector<Path> in(const Path& folder);

/// The frames of `capture`, which is a .pcap file with its .expected.jsonl beside it.
std::vector<Frame> read(const Path& capture);
/// A test's name for a capture.
inline std::string testName(const testing::TestParamInfo<Path>& capture) {
    std::string name = capture.param.stem();
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

/// A packet of `bytes`, behind which `behind` lies in memory.
inline PktPtr packetInFrontOf(std::span<const U8> bytes, std::span<const U8> behind) {
    PktPtr pkt =
        packet(Octets(bytes.begin(), bytes.end()) + Octets(behind.begin(), behind.end()), Kitnet::Pkt::Storage::roomy);
    pkt->delSharedTailData(static_cast<U32>(behind.size()));
    return pkt;
}

/// Cuts `frame` at every length and expects that the outcome of `parse(pkt)` is that of the bytes alone, whatever lies
/// behind them: what was cut off, end options, or junk.
template <class Parse>
void expectCutsIndependentOfBytesBehind(const Frame& frame, Parse parse) {
    const Octets ends(300, 0xff), junk(300, scratch);
    const std::span<const U8> all(frame.bytes);
    for (std::size_t size = 0; size <= all.size(); ++size) {
        const auto cut = all.first(size);
        const auto alone = parse(packet({cut.begin(), cut.end()}));
        for (const auto behind : {all.subspan(size), std::span<const U8>(ends), std::span<const U8>(junk)})
            ASSERT_TRUE(parse(packetInFrontOf(cut, behind)) == alone) << "frame " << frame.number << " cut to " << size;
    }
}

}  // namespace DhcpTest::Captures
