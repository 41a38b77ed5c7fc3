// Decoding of hostile text: addresses, names, numbers, encoded records and toggle files. What is accepted has a text
// form that decodes to the same value; what is refused changes nothing.

#include <sys/mman.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "Bridging/Config.h"
#include "Bridging/VlanId.h"
#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/Dhcp6Identifiers.h"
#include "DhcpLib/DhcpHdr.h"
#include "DhcpLib/FrameRejection.h"
#include "DhcpLib/OptionParser/OptionLookup.h"
#include "Kcore/Encoding.h"
#include "Kcore/Exception.h"
#include "Kitnet/IntfId.h"
#include "OptionsInput.h"
#include "Tyk/Toggle.h"

using namespace DhcpTest;
using namespace DhcpTest::Fuzz;
using Kcore::String;

namespace {

template <class Value>
void checkText(std::string_view text) {
    Value value{}, again{};
    const Value before = value;
    if (!Value::parse(text, &value)) return expect(value == before);
    expect(Value::parse(Kcore::textOf(value), &again) && again == value);
}

template <class Value>
void checkEncoded(std::string_view text) {
    Value value{}, again{};
    const Value before = value;
    Kcore::CharRange range(text);
    if (!sequenceToValue(range, &value)) return expect(value == before && range.rest() == text);
    expect(text.ends_with(range.rest()));
    const std::string encoded = Kcore::encoded(value);
    Kcore::CharRange encodedRange(encoded);
    expect(sequenceToValue(encodedRange, &again) && encodedRange.empty() && again == value);
}

/// The quoted form of any bytes decodes to the same bytes. A text that is refused changes neither range nor value.
void checkQuoted(std::string_view text) {
    std::string quoted;
    Kcore::appendQuoted(quoted, text);
    expect(std::all_of(quoted.begin(), quoted.end(), [](char c) { return c >= ' ' && c <= '~'; }));
    String value;
    Kcore::CharRange range(quoted);
    expect(sequenceToValue(range, &value) && range.empty() && value == text);
    Kcore::CharRange given(text);
    if (!sequenceToValue(given, &value)) expect(given.rest() == text && value == text);
}

/// Checks the function that returns the member of an enumeration with a number or a name.
template <class Instance>
void checkMember(std::string_view text, unsigned number, Instance instance) {
    try {
        expect(static_cast<unsigned>(instance(number)) == number);
    } catch (const Kcore::RangeException&) {
    }
    try {
        const auto member = instance(String(text));
        expect(Kcore::stringValue(member) == text && instance(static_cast<unsigned>(member)) == member);
    } catch (const Kcore::RangeException& refusal) {
        expect(std::string_view(refusal.what()).find('\x1b') == std::string_view::npos);
    }
}

void checkMembers(std::string_view text) {
    using namespace DhcpLib;
    const auto number = static_cast<unsigned>(std::strtoul(std::string(text.substr(0, 5)).c_str(), nullptr, 0));
    const auto check = [&](auto instance) { checkMember(text, number, instance); };
    check([](const auto& given) { return BootpOptionInstance(given); });
    check([](const auto& given) { return BootpOpTypeInstance(given); });
    check([](const auto& given) { return DhcpOptionTypeInstance(given); });
    check([](const auto& given) { return DhcpInformationSubOptionTypeInstance(given); });
    check([](const auto& given) { return DhcpVendorSpecificDataTypeInstance(given); });
    check([](const auto& given) { return AreaStateInstance(given); });
    check([](const auto& given) { return FrameRejectionInstance(given); });
    check([](const auto& given) { return Dhcp6MsgTypeInstance(given); });
    check([](const auto& given) { return Dhcp6OptionTypeInstance(given); });
    check([](const auto& given) { return Dhcp6InterfaceIdCodeInstance(given); });
    check([](const auto& given) { return Dhcp6RemoteIdFormatInstance(given); });
    check([](const auto& given) { return CableLabsSubOptionTypeInstance(given); });
    check([](const auto& given) { return Dhcp6PortInfoInstance(given); });
    check([](const auto& given) { return Bridging::SwitchportModeInstance(given); });
    check([](const auto& given) { return Kitnet::AddressFamilyInstance(given); });
}

/// A file without a place in a folder, so that writing it costs little.
class ToggleFile {
public:
    ToggleFile() : fd_(memfd_create("toggles", 0)), name_(std::to_string(fd_)) {
        expect(fd_ >= 0 && setenv("DHCPLIB_TOGGLE_DIR", "/proc/self/fd", 1) == 0);
    }
    const std::string& name() const { return name_; }
    void contentIs(std::string_view content) const {
        expect(ftruncate(fd_, 0) == 0);
        expect(pwrite(fd_, content.data(), content.size(), 0) == static_cast<ssize_t>(content.size()));
    }

private:
    const int fd_;
    const std::string name_;
};

/// The flag of `name` in an object of booleans with ASCII names, each once; empty for anything else.
std::optional<bool> flagIn(std::string_view content, std::string_view name) {
    if (content.find('\0') != content.npos) return std::nullopt;  // nlohmann's parser takes it for the end
    std::set<std::string> names;
    bool usable = true;
    const auto check = [&](int depth, nlohmann::json::parse_event_t event, nlohmann::json& parsed) {
        using Event = nlohmann::json::parse_event_t;
        if (event == Event::key) usable &= names.insert(parsed.get<std::string>()).second;
        if (event == Event::value) usable &= depth == 1 && parsed.is_boolean();
        if (event == Event::array_start) usable = false;
        if (event == Event::object_start) usable &= depth == 0;
        return true;
    };
    const auto json = nlohmann::json::parse(content, check, false);
    if (!usable || !json.is_object() || !json.contains(name)) return std::nullopt;
    return json.at(std::string(name)).get<bool>();
}

void checkToggle(std::string_view content) {
    static const ToggleFile file;
    constexpr std::string_view name = "a";
    const auto isNotModelled = [](char c) { return static_cast<U8>(c) > 127 || c == '\\'; };
    if (std::any_of(content.begin(), content.end(), isNotModelled)) return;
    file.contentIs(content);
    const bool on = Tyk::getToggleState(name, file.name(), true), off = Tyk::getToggleState(name, file.name(), false);
    const auto expected = flagIn(content, name);
    expect(expected ? on == *expected && off == *expected : on && !off);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    checkText<Kitnet::IpAddr>(text);
    checkText<Kitnet::Ip6Addr>(text);
    checkText<Kitnet::IpGenAddr>(text);
    checkText<Kitnet::EthAddr>(text);
    checkText<Kitnet::IntfId>(text);
    checkText<Kitnet::NetU32>(text);
    checkText<Kitnet::UdpPort>(text);
    checkText<Bridging::VlanId>(text);
    checkText<DhcpLib::Dhcp6Xid>(text);
    checkEncoded<DhcpLib::DhcpHdr>(text);
    checkQuoted(text);
    checkMembers(text);
    checkToggle(text);
    return 0;
}
