#include "Captures.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "common/Capture.h"

namespace DhcpTest::Captures {

namespace {

const Path testData = DHCPLIB_TEST_DATA;

}  // namespace

std::vector<Path> in(const Path& folder) {
    std::vector<Path> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".pcap") found.push_back(entry.path());
    std::sort(found.begin(), found.end());
    return found;
}

std::vector<Path> bundled(const std::string& prefix) {
    std::vector<Path> found = in(testData / "captures");
    std::erase_if(found, [&](const Path& path) {
        const std::string name = path.stem();
        return !name.starts_with(prefix) && !name.starts_with("crafted-" + prefix);
    });
    return found;
}

std::optional<Path> publicFolder() {
    const char* const wanted = std::getenv("DHCPLIB_SHARED_CAPTURES");
    const Path folder = wanted != nullptr ? Path(wanted) : testData / "../../../shared/captures/public";
    return std::filesystem::is_directory(folder) ? std::optional(folder) : std::nullopt;
}

std::vector<Frame> read(const Path& capture) {
    std::vector<Frame> frames;
    DhcpTool::CaptureReader reader(capture);
    while (const auto frame = reader.next())
        frames.push_back({frames.size() + 1, {frame->bytes.begin(), frame->bytes.end()}, nullptr});
    std::ifstream lines(Path(capture).replace_extension(".expected.jsonl"));
    for (std::string line; std::getline(lines, line);) {
        const Json expected = Json::parse(line);
        frames.at(expected.at("frame").get<std::size_t>() - 1).expected = expected;
    }
    return frames;
}

}  // namespace DhcpTest::Captures
