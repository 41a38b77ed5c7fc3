#include "Options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <functional>
#include <iostream>
#include <map>
#include <set>

#include "ConfigFile.h"
#include "Reason.h"
#include "cli/Program.h"
#include "cli/Suggestion.h"

namespace DhcpRelay {

namespace {

constexpr Cli::ExitMeaning exits[] = {
    {done, "The program ended because it was told to, or --check found no error."},
    {failed, "The program failed: no privileges, or no socket."},
    {badUsage, "The options or the configuration file are wrong."},
};
constexpr Cli::Example examples[] = {
    {"Relay between clients on two links, one of them with VLANs, and two servers:",
     "dhcprelay -c eth1 -c eth2 --vlans eth1=10,20-29 -s 192.0.2.1 -s 2001:db8::1"},
    {"Check a configuration file:", "dhcprelay --config /etc/dhcprelay.json --check"},
};
constexpr Cli::Program program{8, exits, examples, "dhcptool(1)"};

/// The options as they are written.
struct Written {
    std::vector<std::string> clients, servers, trusted, vlans, giaddrs, linkAddresses;
    std::string serverInterface, linkSelection;
    bool noVssControl = false;
};

[[noreturn]] void refuse(const std::string& option, const std::string& value, const std::string& why) {
    throw UsageError("--" + option + " " + value + ": " + why);
}

void addRelaying(CLI::App& app, Settings& s, Written& w) {
    const char* const group = "Who talks to whom";
    app.add_flag("-4,--ipv4", s.ipv4, "Relay DHCPv4 (default: if a server has such\nan address)")->group(group);
    app.add_flag("-6,--ipv6", s.ipv6, "Relay DHCPv6 (likewise)")->group(group);
    app.add_option("-c,--client", w.clients, "Link with clients; repeat for more")
        ->type_name("LINK")
        ->allow_extra_args(false)
        ->group(group);
    app.add_option("-s,--server", w.servers, "Address of a server, or of the next relay;\nrepeat for more")
        ->type_name("ADDRESS")
        ->allow_extra_args(false)
        ->group(group);
    app.add_option("--server-interface", w.serverInterface, "Take replies from this interface alone")
        ->type_name("LINK")
        ->group(group);
    app.add_option("--trust", w.trusted, "Client link behind which relays, or switches\nthat add option 82, stand")
        ->type_name("LINK")
        ->allow_extra_args(false)
        ->group(group);
    app.add_option(
           "--vlans", w.vlans,
           "Serve these tagged VLANs on a client link:\n'10,20-29' or 'all'. Untagged frames are\nalways served")
        ->type_name("LINK=LIST")
        ->allow_extra_args(false)
        ->group(group);
    app.add_option("--native-vlan", s.nativeVlan, "VLAN of untagged frames (default 1)")
        ->type_name("VLAN")
        ->check(CLI::Range(1, 4094).description(""))
        ->group(group);
}

void addIdentity(CLI::App& app, Settings& s, Written& w) {
    const char* const group = "What servers are told";
    app.add_option("--giaddr", w.giaddrs, "DHCPv4 relay address (default: the client\nlink's first)")
        ->type_name("[LINK[:VLAN]=]ADDRESS")
        ->allow_extra_args(false)
        ->group(group);
    app.add_option("--link-address", w.linkAddresses, "DHCPv6 link-address (default: the client\nlink's first global)")
        ->type_name("[LINK[:VLAN]=]ADDRESS")
        ->allow_extra_args(false)
        ->group(group);
    app.add_option("--circuit-id", s.circuitId, "DHCPv4 port: %i link, %v VLAN\n(default '%i:%v')")
        ->type_name("TEXT")
        ->group(group);
    app.add_option("--interface-id", s.interfaceId, "DHCPv6 port, likewise (default '%i:%v')")
        ->type_name("TEXT")
        ->group(group);
    app.add_option("--remote-id", s.remoteId,
                   "DHCPv4 remote-id: as above, and %m the\nlink's MAC address (default '%m')")
        ->type_name("TEXT")
        ->group(group);
    app.add_option("--link-selection", w.linkSelection,
                   "Sub-option 5: an address, or 'auto' for\nthe client link's own")
        ->type_name("ADDRESS")
        ->group(group);
    app.add_flag("--server-id-override", s.serverIdOverride,
                 "Sub-option 11: clients renew through the\nrelay (needs --link-selection)")
        ->group(group);
    app.add_option("--vrf", s.vrf, "Virtual subnet selection: the VRF's name\n(DHCPv4: needs --link-selection)")
        ->type_name("NAME")
        ->group(group);
    app.add_flag("--no-vss-control", w.noVssControl, "Leave sub-option 152 out")->group(group);
}

void addLimits(CLI::App& app, Settings& s) {
    const char* const group = "Policy and limits";
    static const std::map<std::string, InfoPolicy> untrusted{{"discard", InfoPolicy::discard},
                                                             {"replace", InfoPolicy::replace}};
    static const std::map<std::string, InfoPolicy> trusted{
        {"discard", InfoPolicy::discard}, {"replace", InfoPolicy::replace}, {"keep", InfoPolicy::keep}};
    app.add_option("--option82", s.untrustedInfo,
                   "A client's own option 82: discard the request\nor replace it (default discard)")
        ->type_name("discard|replace")
        ->transform(CLI::Transformer(untrusted).description(""))
        ->check(CLI::IsMember(untrusted).description(""))
        ->group(group);
    app.add_option("--trusted-option82", s.trustedInfo,
                   "The same on trusted links: discard, replace\nor keep (default keep)")
        ->type_name("discard|replace|keep")
        ->transform(CLI::Transformer(trusted).description(""))
        ->check(CLI::IsMember(trusted).description(""))
        ->group(group);
    app.add_option("--hop-limit", s.hopLimit4, "Relays that a DHCPv4 request may pass\n(default 16)")
        ->type_name("N")
        ->check(CLI::Range(1, 255).description(""))
        ->group(group);
    app.add_option("--hop-limit6", s.hopLimit6, "The same for DHCPv6 (default 8)")
        ->type_name("N")
        ->check(CLI::Range(1, 32).description(""))
        ->group(group);
    app.add_option("--mtu", s.mtu,
                   "Leave option 82 out of larger requests\n(default: that of --server-interface, or 1500)")
        ->type_name("BYTES")
        ->check(CLI::Range(576, 65535).description(""))
        ->group(group);
    app.add_option("--rate", s.rate, "Requests a second that a link may send,\n0 for no limit (default 1000)")
        ->type_name("N")
        ->check(CLI::Range(0, 1000000).description(""))
        ->group(group);
    app.add_option("--remember", s.rememberSeconds, "How long to remember where a transaction came\nfrom (default 60)")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 3600).description(""))
        ->group(group);
    app.add_option("--transactions", s.transactions, "How many of each link (default 16384)")
        ->type_name("N")
        ->check(CLI::Range(16, 1048576).description(""))
        ->group(group);
}

void addReports(CLI::App& app, Settings& s) {
    const char* const group = "Reports";
    static const std::map<std::string, StatsFormat> formats{{"text", StatsFormat::text}, {"json", StatsFormat::json}};
    app.add_option("--stats", s.statsSeconds, "Print the counters every so often; SIGUSR1\nprints them, too")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 86400).description(""))
        ->group(group);
    app.add_option("--stats-format", s.statsFormat, "'text' (default), or 'json': an object a line")
        ->type_name("text|json")
        ->transform(CLI::Transformer(formats).description(""))
        ->check(CLI::IsMember(formats).description(""))
        ->group(group);
    app.add_flag("-v,--verbose", s.verbose, "Print a line for each message")->group(group);
    app.add_flag("--check", s.checkOnly, "Check the settings and end")->configurable(false)->group(group);
    app.add_flag_callback(
           "--list-reasons",
           [] {
               for (const ReasonMember& row : Kcore::EnumTable<Reason>::members)
                   if (row.kind != ReasonKind::silent)
                       std::cout << row.name << (row.kind == ReasonKind::drop ? "\tdrop\t" : "\tremark\t") << row.text
                                 << '\n';
               throw CLI::Success();
           },
           "Print why messages are dropped, and end")
        ->configurable(false)
        ->group(group);
}

IntfId linkOf(const std::string& option, const std::string& value, std::string_view name) {
    if (!IntfId::isValidName(name)) refuse(option, value, "no name of an interface");
    return IntfId(name);
}

ClientLink& clientOf(Settings& s, const std::string& option, const std::string& value, std::string_view name) {
    for (ClientLink& client : s.clients)
        if (client.name.name() == name) return client;
    refuse(option, value, "no --client has this name");
}

U16 vlanOf(const std::string& option, const std::string& value, std::string_view text) {
    U16 vlan = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), vlan);
    if (error != std::errc() || end != text.data() + text.size() || vlan < 1 || vlan > 4094)
        refuse(option, value, "no VLAN, which is a number from 1 to 4094");
    return vlan;
}

void takeClients(Settings& s, const Written& w) {
    if (w.clients.empty()) throw UsageError("no --client");
    std::set<std::string> names;
    for (const std::string& name : w.clients) {
        if (!names.insert(name).second) refuse("client", name, "named twice");
        s.clients.push_back({linkOf("client", name, name), false, {}});
    }
    for (const std::string& name : w.trusted) clientOf(s, "trust", name, name).trusted = true;
    for (const std::string& entry : w.vlans) {
        const std::size_t sign = entry.find('=');
        if (sign == entry.npos) refuse("vlans", entry, "not of the form LINK=LIST");
        VlanSet& vlans = clientOf(s, "vlans", entry, std::string_view(entry).substr(0, sign)).taggedVlans;
        std::istringstream list(entry.substr(sign + 1));
        for (std::string item; std::getline(list, item, ',');) {
            const std::string range = item == "all" ? "1-4094" : item;
            const std::size_t dash = range.find('-');
            const U16 first = vlanOf("vlans", entry, std::string_view(range).substr(0, dash));
            const U16 last =
                dash == range.npos ? first : vlanOf("vlans", entry, std::string_view(range).substr(dash + 1));
            if (first > last) refuse("vlans", entry, "a range that ends before it starts");
            for (unsigned vlan = first; vlan <= last; ++vlan) vlans.set(vlan);
        }
        if (vlans.none()) refuse("vlans", entry, "no VLAN");
    }
}

void takeServers(Settings& s, const Written& w) {
    if (w.servers.empty()) throw UsageError("no --server");
    std::set<IpGenAddr> seen;
    for (const std::string& text : w.servers) {
        IpGenAddr server;
        if (!IpGenAddr::parse(text, &server) || !server.isUsable()) refuse("server", text, "no address of a host");
        if ((server.isV4() && server.v4Addr().value() >> 28 >= 0xe) ||
            (server.isV6() && server.v6Addr().byte(0) == 0xff))
            refuse("server", text, "not the address of one host, so that replies could not be told from forged ones");
        if (!seen.insert(server).second) refuse("server", text, "named twice");
        if (server.isV4())
            s.servers4.push_back(server.v4Addr());
        else
            s.servers6.push_back(server.v6Addr());
    }
    if (!w.serverInterface.empty())
        s.serverInterface = linkOf("server-interface", w.serverInterface, w.serverInterface);
    for (const Ip6Addr& server : s.servers6)
        if (server.byte(0) == 0xfe && (server.byte(1) & 0xc0) == 0x80 && !s.serverInterface)
            refuse("server", Kcore::textOf(server), "a link-local address needs --server-interface");
    if (!s.ipv4 && !s.ipv6) {
        s.ipv4 = !s.servers4.empty();
        s.ipv6 = !s.servers6.empty();
    }
    if (s.ipv4 && s.servers4.empty()) throw UsageError("--ipv4, but no --server with an IPv4 address");
    if (s.ipv6 && s.servers6.empty()) throw UsageError("--ipv6, but no --server with an IPv6 address");
}

/// Reads [LINK[:VLAN]=]ADDRESS.
RelayAddress relayAddressOf(Settings& s, const std::string& option, const std::string& entry) {
    RelayAddress result;
    const std::size_t sign = entry.find('=');
    const std::string text = sign == entry.npos ? entry : entry.substr(sign + 1);
    if (sign != entry.npos) {
        const std::string_view port = std::string_view(entry).substr(0, sign);
        const std::size_t colon = port.find(':');
        result.link = clientOf(s, option, entry, port.substr(0, colon)).name;
        if (colon != port.npos) result.vlan = vlanOf(option, entry, port.substr(colon + 1));
    }
    const bool v4 = option == "giaddr";
    if (!IpGenAddr::parse(text, &result.address) || result.address.isV4() != v4 || !result.address.isUsable())
        refuse(option, entry, v4 ? "no IPv4 address" : "no IPv6 address");
    return result;
}

void takeIdentity(Settings& s, const Written& w) {
    for (const std::string& entry : w.giaddrs) s.giaddrs.push_back(relayAddressOf(s, "giaddr", entry));
    for (const std::string& entry : w.linkAddresses)
        s.linkAddresses.push_back(relayAddressOf(s, "link-address", entry));
    s.linkSelectionIsLinks = w.linkSelection == "auto";
    if (!w.linkSelection.empty() && !s.linkSelectionIsLinks && !IpAddr::parse(w.linkSelection, &s.linkSelection))
        refuse("link-selection", w.linkSelection, "neither an IPv4 address nor 'auto'");
    s.vssControl = !w.noVssControl;
    if (s.serverIdOverride && w.linkSelection.empty())
        throw UsageError("--server-id-override without --link-selection");
    if (s.ipv4 && !s.vrf.empty() && w.linkSelection.empty()) throw UsageError("--vrf without --link-selection");
    // What option 82 holds beside the two: sub-options 5, 11, 151 and 152, and the vendor's.
    constexpr std::size_t longestId = 64, longestVrf = 64;
    for (const auto& [option, text] : {std::pair<std::string, const std::string&>{"circuit-id", s.circuitId},
                                       {"interface-id", s.interfaceId},
                                       {"remote-id", s.remoteId}})
        if (text.empty() || text.size() > longestId) refuse(option, text, "not 1 to 64 bytes long");
    if (s.vrf.size() > longestVrf) refuse("vrf", s.vrf, "longer than 64 bytes");
}

}  // namespace

std::optional<Settings> settingsOf(int argc, const char* const* argv) {
    Settings settings;
    Written written;
    CLI::App app("Relays DHCPv4 and DHCPv6 between clients on links and servers.", "dhcprelay");
    Cli::describe(app, program);
    app.config_formatter(std::make_shared<JsonConfig>());
    app.set_config("--config", "",
                   "Read options from a JSON file: the long names\nbelow, arrays where one may be repeated;\nthe "
                   "command line goes first")
        ->type_name("FILE");
    app.allow_config_extras(CLI::config_extras_mode::capture);  // refused below, by their names
    app.allow_extras();
    app.footer(
        "Messages go to stderr, counters to stdout. \"dhcprelay: ready\" tells that clients are served; a missing link "
        "is "
        "waited for. SIGTERM and SIGINT end the program.");
    addRelaying(app, settings, written);
    addIdentity(app, settings, written);
    addLimits(app, settings);
    addReports(app, settings);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        app.exit(help);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what());
    }
    if (!app.remaining().empty()) throw UsageError(app.remaining().front() + ": no such option" + Cli::optionHint(app));
    takeClients(settings, written);
    takeServers(settings, written);
    takeIdentity(settings, written);
    return settings;
}

}  // namespace DhcpRelay
