#include "filter/FilterOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>

#include "cli/Suggestion.h"
#include "common/AddressOption.h"
#include "common/HexBytes.h"

namespace DhcpTool {

namespace {

constexpr char filterGroup[] = "Filters (a message has to match all of them)";

/// The bytes of "0x0102", "01:02" or "0102"; unset if it is something else.
std::optional<std::string> bytesOf(std::string_view text) {
    if (text.starts_with("0x")) text.remove_prefix(2);
    return text.empty() ? std::nullopt : bytesOfHex(text);
}

std::optional<std::string> textOrBytes(std::string_view text) {
    return text.starts_with("0x") ? bytesOf(text) : std::optional<std::string>(text);
}

std::optional<U32> xidOf(std::string_view text) {
    const bool isHex = text.starts_with("0x");
    if (isHex) text.remove_prefix(2);
    U32 xid = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, xid, isHex ? 16 : 10);
    return stop == end && error == std::errc{} ? std::optional(xid) : std::nullopt;
}

std::string lowerCase(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// An error message for a type that no message has; empty if there is one.
std::string typeFault(const std::string& text) {
    const std::vector<std::string> names = typeNames();
    std::string name = lowerCase(text);
    if (name.starts_with("dhcp")) name.erase(0, 4);
    if (std::ranges::count(names, name) != 0) return {};
    const auto meant = Cli::closest(name, names);
    return "no message type: " + text + (meant ? " (did you mean " + *meant + "?)" : "");
}

/// Adds an option whose text `parse` turns into an optional value.
template <class Value, class Parse>
void addParsed(CLI::App& command, const std::string& name, std::optional<Value>& value, Parse parse,
               const char* typeName, const char* what, const char* fault) {
    command
        .add_option_function<std::string>(
            name, [&value, parse](const std::string& text) { value = parse(text); }, what)
        ->type_name(typeName)
        ->group(filterGroup)
        ->check([parse, fault](const std::string& text) { return parse(text) ? "" : fault + (": " + text); }, "");
}

}  // namespace

void addFilterOptions(CLI::App& command, Filter& filter) {
    addAddress<Kitnet::EthAddr>(command, "--mac", filter.mac, "MAC of the client, or of the frame's sender or receiver")
        ->group(filterGroup);
    addAddress<Kitnet::IpGenAddr>(command, "--ip", filter.ip, "Address anywhere in the message or its IP header")
        ->group(filterGroup);
    addParsed(command, "--xid", filter.xid, xidOf, "XID", "Transaction id: 0x and hexadecimal, or decimal",
              "not a transaction id");
    command
        .add_option_function<std::string>(
            "--type", [&filter](const std::string& text) { filter.type = lowerCase(text); },
            "Message type, such as discover, ack, solicit or relayForward")
        ->type_name("TYPE")
        ->check(typeFault, "")
        ->group(filterGroup);
    command.add_option("--vlan", filter.vlan, "VLAN of the frame")
        ->type_name("VLAN")
        ->check(CLI::Range(1, 4094))
        ->group(filterGroup);
    addParsed(command, "--circuit-id", filter.circuitId, textOrBytes, "ID",
              "Circuit-id (option 82) or interface-id: text, or 0x and hexadecimal", "not hexadecimal");
    addParsed(command, "--duid", filter.duid, bytesOf, "DUID",
              "DUID of client or server, or DHCPv4 client-id: hexadecimal", "not hexadecimal");
    addAddress<Kitnet::IpGenAddr>(command, "--server", filter.server,
                                  "Address of the server: option 54, its override, or IP header")
        ->group(filterGroup);
}

}  // namespace DhcpTool
