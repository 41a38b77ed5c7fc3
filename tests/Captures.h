#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
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

}  // namespace DhcpTest::Captures
