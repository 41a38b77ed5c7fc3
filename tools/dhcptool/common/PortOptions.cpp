#include "common/PortOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace DhcpTool {

namespace {

constexpr char separator = '=';

const std::map<std::string, Bridging::SwitchportMode>& modes() {
    using enum Bridging::SwitchportMode;
    static const std::map<std::string, Bridging::SwitchportMode> all{
        {"access", access}, {"dot1q-tunnel", dot1qTunnel}, {"trunk", trunk}};
    return all;
}

struct PortText {
    std::string port;  ///< empty means: all ports
    std::string value;

    explicit PortText(const std::string& text) {
        const std::size_t at = text.find(separator);
        if (at != text.npos) port = text.substr(0, at);
        value = at != text.npos ? text.substr(at + 1) : text;
    }
};

/// 0 if `text` is not a VLAN number.
unsigned vlanOf(const std::string& text) {
    constexpr unsigned last = 4094;
    Bridging::VlanId vlan;
    return Bridging::VlanId::parse(text, &vlan) && vlan.value() <= last ? vlan.value() : 0;
}

/// Calls `set(port settings, value)` for each port that a text applies to. Texts for all ports come first.
template <class Set>
void apply(const std::string& option, const std::vector<std::string>& texts, Ports& ports, Set set) {
    std::vector<PortText> ordered(texts.begin(), texts.end());
    std::ranges::stable_sort(ordered, {}, [](const PortText& text) { return !text.port.empty(); });
    for (const PortText& text : ordered) {
        if (!text.port.empty() && !ports.contains(Kitnet::IntfId(text.port)))
            throw CLI::ValidationError(option, text.port + " is not one of the interfaces");
        for (auto& [port, settings] : ports)
            if (text.port.empty() || text.port == port.name()) set(settings, text.value);
    }
}

std::string fault(const std::string& text, bool goodValue, const char* what) {
    const PortText parts(text);
    if (text.find(separator) != text.npos)
        if (std::string badName = portNameFault(parts.port); !badName.empty()) return badName;
    return goodValue ? "" : what + parts.value;
}

std::string nativeVlanFault(const std::string& text) {
    return fault(text, vlanOf(PortText(text).value) != 0, "not a VLAN from 1 to 4094: ");
}

std::string switchportModeFault(const std::string& text) {
    return fault(text, modes().contains(PortText(text).value), "not one of access, trunk, dot1q-tunnel: ");
}

/// Adds an option that can be repeated for several ports.
void addPortOption(CLI::App& command, const std::string& name, std::vector<std::string>& texts, const char* valueName,
                   std::string (*fault)(const std::string&), const std::string& what, const char* defaultText) {
    command.add_option(name, texts, what)
        ->type_name(std::string("[IFACE=]") + valueName)
        ->allow_extra_args(false)
        ->check(fault, "")
        ->default_str(defaultText)
        ->group("Ports");
}

}  // namespace

Ports PortOptions::of(const std::vector<std::string>& ports) const {
    Ports all;
    for (const std::string& port : ports) all[Kitnet::IntfId(port)];
    apply("--native-vlan", nativeVlans, all,
          [](PortSettings& port, const std::string& value) { port.nativeVlan = vlanOf(value); });
    apply("--switchport-mode", switchportModes, all,
          [](PortSettings& port, const std::string& value) { port.switchportMode = modes().at(value); });
    return all;
}

void addPortOptions(CLI::App& command, PortOptions& options) {
    addPortOption(command, "--native-vlan", options.nativeVlans, "VLAN", nativeVlanFault,
                  "VLAN of frames without a tag, for all interfaces or one", "1");
    addPortOption(command, "--switchport-mode", options.switchportModes, "MODE", switchportModeFault,
                  "Treatment of VLAN tags: access, trunk or dot1q-tunnel", "access");
}

std::string portNameFault(const std::string& name) {
    return Kitnet::IntfId::isValidName(name) ? "" : "not an interface name: " + name;
}

}  // namespace DhcpTool
