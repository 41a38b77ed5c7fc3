#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Tyk/Toggle.h"
#include "Tyk/Trace.h"

namespace {

class TykToggle : public testing::Test {
protected:
    TykToggle() {
        std::string pattern = testing::TempDir() + "toggleXXXXXX";
        folder = mkdtemp(pattern.data());
        setenv("DHCPLIB_TOGGLE_DIR", folder.c_str(), 1);
        Tyk::TraceHandle("Tyk", false).levelIs(1);
        Tyk::traceSinkIs([this](const Tyk::TraceLine& line) { lines.emplace_back(line.text); });
    }
    ~TykToggle() override {
        Tyk::traceSinkIs({});
        unsetenv("DHCPLIB_TOGGLE_DIR");
        std::filesystem::remove_all(folder);
    }

    void fileIs(std::string_view content) const { std::ofstream(folder / "T.json", std::ios::binary) << content; }
    void expectState(bool state) {
        for (const bool dflt : {false, true}) EXPECT_EQ(Tyk::getToggleState("a", "T.json", dflt), state);
        EXPECT_TRUE(lines.empty());
    }
    /// Expects the default, and each time one line that ends with `why`.
    void expectDefault(std::string_view why, const char* file = "T.json") {
        for (const bool dflt : {false, true}) {
            lines.clear();
            EXPECT_EQ(Tyk::getToggleState("a", file, dflt), dflt);
            ASSERT_EQ(lines.size(), 1u);
            EXPECT_TRUE(
                lines[0].starts_with(dflt ? "toggle a is true by default: " : "toggle a is false by default: "));
            EXPECT_TRUE(lines[0].ends_with(why)) << lines[0];
        }
        lines.clear();
    }

    std::filesystem::path folder;
    std::vector<std::string> lines;
};

TEST_F(TykToggle, HasTheValueFromTheFile) {
    const std::string spaces(65536 - 10, ' ');
    for (const std::string& content :
         {std::string(" {\t\"b\" : false ,\n\"a\"\r:\ttrue } \r\n"),
          std::string(R"({"A":false,"a":true,"aa":false,"{}":false})"), R"({"a":true})" + spaces}) {
        SCOPED_TRACE(content.substr(0, 60));
        fileIs(content);
        expectState(true);
    }
    fileIs(R"({"b":true,"a":false})");
    expectState(false);
}

TEST_F(TykToggle, IsTheDefaultForABadFileAndTracesTheReason) {
    const std::pair<std::string, const char*> rows[] = {
        {"{}", ": the name is not in it"},
        {R"({"a":true,"b":null})", ": expected true or false at byte 14"},
        {R"({"a":truely})", ": expected } at byte 9"},
        {R"({"a":true,"a":true})", ": expected each name once at byte 18"},
        {R"({"\u0061":true})", ": expected a name's closing quote at byte 2"},
        {"\xef\xbb\xbf{\"a\":true}", ": expected { at byte 0"},
        {std::string("{\"a\":true}\0", 11), ": expected nothing more at byte 10"},
        {R"({"a":true})" + std::string(65536 - 9, ' '), ": longer than 65536 bytes"},
    };
    for (const auto& [content, why] : rows) {
        SCOPED_TRACE(content.substr(0, 60));
        fileIs(content);
        expectDefault(why);
    }
    std::string nested;
    for (int depth = 0; depth < 10000; ++depth) nested += R"({"a":)";
    fileIs(nested);
    expectDefault(": expected true or false at byte 5");
    std::filesystem::resize_file(folder / "T.json", 1ull << 40);  // sparse; more than fits into memory
    expectDefault(": longer than 65536 bytes");
    const std::string good = R"({"b":false,"a":true})";
    for (std::size_t size = 0; size < good.size(); ++size) {
        SCOPED_TRACE(size);
        fileIs(good.substr(0, size));
        expectDefault("");
    }
}

TEST_F(TykToggle, IsTheDefaultWithoutARegularFile) {
    expectDefault("/absent.json: No such file or directory", "absent.json");
    ASSERT_EQ(mkfifo((folder / "pipe.json").c_str(), 0600), 0);
    expectDefault("/pipe.json: not a regular file", "pipe.json");
    std::filesystem::create_directory(folder / "folder.json");
    expectDefault("/folder.json: not a regular file", "folder.json");
    std::filesystem::create_symlink("/dev/zero", folder / "device.json");
    expectDefault("/device.json: not a regular file", "device.json");

    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder);  // not searched if no folder is given
    fileIs(R"({"a":true})");
    setenv("DHCPLIB_TOGGLE_DIR", "", 1);
    expectDefault("No such file or directory");
    std::filesystem::current_path(before);
}

}  // namespace
