#include "Tyk/Toggle.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>

#include "Kcore/internal/Environment.h"
#include "Tyk/Trace.h"

namespace Tyk {

namespace {

constexpr std::size_t maxFileBytes = 64 * 1024;

/// The reason why a toggle file cannot be used.
struct Unusable : std::runtime_error {
    using runtime_error::runtime_error;
};

/// Parses `{"name": true, ...}` (RFC 8259), without escapes in names. Every function advances `rest_` past what it has
/// read, and throws Unusable if the text does not match.
class ToggleReader {
public:
    explicit ToggleReader(std::string_view text) : text_(text), rest_(text) {}

    /// The names point into the text.
    std::map<std::string_view, bool> toggles() {
        std::map<std::string_view, bool> all;
        take("{");
        if (!taken("}")) {
            do {
                const std::string_view name = takeName();
                take(":");
                if (!all.emplace(name, takeFlag()).second) fail("each name once");
            } while (taken(","));
            take("}");
        }
        skipSpace();
        if (!rest_.empty()) fail("nothing more");
        return all;
    }

private:
    void skipSpace() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size())); }
    bool taken(std::string_view token) {
        skipSpace();
        if (!rest_.starts_with(token)) return false;
        rest_.remove_prefix(token.size());
        return true;
    }
    void take(std::string_view token) {
        if (!taken(token)) fail(token);
    }
    std::string_view takeName() {
        take("\"");
        const auto isPlain = [](char c) { return static_cast<unsigned char>(c) >= 0x20 && c != '"' && c != '\\'; };
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), isPlain);
        const std::string_view name(rest_.begin(), end);
        rest_.remove_prefix(name.size());
        if (!rest_.starts_with('"')) fail("a name's closing quote");
        rest_.remove_prefix(1);
        return name;
    }
    bool takeFlag() {
        if (taken("true")) return true;
        if (!taken("false")) fail("true or false");
        return false;
    }
    [[noreturn]] void fail(std::string_view expected) const {
        std::string why("expected ");
        why.append(expected).append(" at byte ").append(std::to_string(text_.size() - rest_.size()));
        throw Unusable(why);
    }

    std::string_view text_;
    std::string_view rest_;
};

std::filesystem::path pathOf(std::string_view file) {
    const char* folder = Kcore::environmentValue("DHCPLIB_TOGGLE_DIR");
    const bool given = folder != nullptr && *folder != '\0';  // an empty name would mean the current folder
    return std::filesystem::path(given ? folder : DHCPPLATFORM_CONFIG_DIR) / file;
}

std::string contentOf(const std::filesystem::path& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) throw Unusable(error.message());
    if (!std::filesystem::is_regular_file(status)) throw Unusable("not a regular file");  // reading a pipe could block
    std::ifstream in(path, std::ios::binary);
    if (!in) throw Unusable(std::strerror(errno));
    std::string content(maxFileBytes + 1, '\0');
    in.read(content.data(), static_cast<std::streamsize>(content.size()));
    if (in.bad()) throw Unusable("cannot be read");
    content.resize(static_cast<std::size_t>(in.gcount()));
    if (content.size() > maxFileBytes) throw Unusable("longer than 65536 bytes");
    return content;
}

bool stateIn(const std::filesystem::path& path, std::string_view name) {
    const std::string content = contentOf(path);
    const auto all = ToggleReader(content).toggles();
    const auto found = all.find(name);
    if (found == all.end()) throw Unusable("the name is not in it");
    return found->second;
}

}  // namespace

bool getToggleState(std::string_view name, std::string_view file, bool dflt) {
    const auto path = pathOf(file);
    try {
        return stateIn(path, name);
    } catch (const Unusable& why) {
        static const TraceHandle handle("Tyk", false);
        DualTrace(handle, 1, {}, "toggle {} is {} by default: {}: {}", name, dflt, path.native(),
                  std::string_view(why.what()));
        return dflt;
    }
}

}  // namespace Tyk
