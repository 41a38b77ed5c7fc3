#include "Options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <functional>
#include <iostream>
#include <map>
#include <set>

#include "ConfigFile.h"
#include "PortName.h"
#include "Reason.h"
#include "cli/Program.h"
#include "cli/Suggestion.h"

namespace DhcpRelay {

namespace {

constexpr Cli::ExitMeaning exits[] = {
    {done, "SIGTERM or SIGINT ended the program, or --check found no error."},
    {failed, "The program failed, for example because a privilege is missing or a port is in use."},
    {badUsage, "The options or the configuration file are wrong."},
};
constexpr Cli::Example examples[] = {
    {"Relay between clients on two links, one of them with VLANs, and two servers:",
     "dhcprelay -c eth1 -c eth2 --vlans eth1=10,20-29 -s 192.0.2.1 -s 2001:db8::1"},
    {"Check a configuration file:", "dhcprelay --config /etc/dhcprelay.json --check"},
};
constexpr Cli::Program program{8, exits, examples, "dhcptool(1)"};

/// Option values that are checked and converted after parsing.
struct Written {
    std::vector<std::string> clients, servers, replySources, trusted, vlans, giaddrs, linkAddresses;
    std::string serverInterface, linkSelection;
    bool noVssControl = false;
};

[[noreturn]] void refuse(const std::string& option, const std::string& value, const std::string& why) {
    throw UsageError("--" + option + " " + value + ": " + why);
}

/// A group of options in --help. The texts contain line breaks, so that each line fits 80 columns.
class Group {
public:
    Group(CLI::App& app, const char* name) : app_(app), name_(name) {}

    CLI::Option* flag(const char* names, bool& value, const char* text) {
        return app_.add_flag(names, value, text)->group(name_);
    }
    CLI::Option* action(const char* names, std::function<void()> run, const char* text) {
        return app_.add_flag_callback(names, std::move(run), text)->configurable(false)->group(name_);
    }
    void text(const char* name, std::string& value, const char* type, const char* text) {
        const auto isGiven = [](const std::string& given) { return given.empty() ? "must not be empty" : ""; };
        app_.add_option(name, value, text)->type_name(type)->check(isGiven, "")->group(name_);
    }
    /// May be repeated.
    void list(const char* names, std::vector<std::string>& values, const char* type, const char* text) {
        app_.add_option(names, values, text)->type_name(type)->allow_extra_args(false)->group(name_);
    }
    template <class Number>
    void number(const char* name, Number& value, const char* type, U32 least, U32 most, const char* text) {
        app_.add_option(name, value, text)
            ->type_name(type)
            ->check(CLI::Range(least, most).description(""))
            ->group(name_);
    }
    template <class Enum>
    void choice(const char* name, Enum& value, const char* type, const std::map<std::string, Enum>& choices,
                const char* text) {
        app_.add_option(name, value, text)
            ->type_name(type)
            ->transform(CLI::Transformer(choices).description(""))
            ->transform(CLI::IsMember(choices).description(""))  // CLI11 runs the last one first
            ->group(name_);
    }

private:
    CLI::App& app_;
    const char* const name_;
};

void addRelaying(CLI::App& app, Settings& s, Written& w) {
    Group group(app, "Links and servers");
    group.flag("-4,--ipv4", s.ipv4, "Relay DHCPv4 (default: if a server has such\nan address)");
    group.flag("-6,--ipv6", s.ipv6, "Relay DHCPv6 (likewise)");
    group.list("-c,--client", w.clients, "LINK", "Link with clients; repeat for more");
    group.list("-s,--server", w.servers, "ADDRESS", "Address of a server, or of the next relay;\nrepeat for more");
    group.list(
        "--accept-replies-from", w.replySources, "ADDRESS",
        "Also accept replies from this address, but\nsend nothing to it: that of a server behind\nthe next relay");
    group.text("--server-interface", w.serverInterface, "LINK",
               "Accept replies only from this interface\n(default: not from untrusted client links)");
    group.list("--trust", w.trusted, "LINK", "Client link with trusted relays, or switches\nthat add option 82");
    group.list("--vlans", w.vlans, "LINK=LIST",
               "Serve these tagged VLANs on a client link:\n'10,20-29' or 'all'. Untagged frames are\nalways served");
    group.number("--native-vlan", s.nativeVlan, "VLAN", 1, 4094, "VLAN of untagged frames (default 1)");
}

void addIdentity(CLI::App& app, Settings& s, Written& w) {
    Group group(app, "Contents of relayed requests");
    const char* const port = "[LINK[:VLAN]=]ADDRESS";
    group.list("--giaddr", w.giaddrs, port, "DHCPv4 relay address (default: the client\nlink's first)");
    group.list("--link-address", w.linkAddresses, port,
               "DHCPv6 link-address (default: the client\nlink's first global)");
    group.text("--circuit-id", s.circuitId, "TEXT", "DHCPv4 port: %i link, %v VLAN\n(default '%i:%v')");
    group.text("--interface-id", s.interfaceId, "TEXT", "DHCPv6 port, likewise (default '%i:%v')");
    group.text("--remote-id", s.remoteId, "TEXT",
               "DHCPv4 remote-id: as above, and %m the\nlink's MAC address (default '%m')");
    group.text("--link-selection", w.linkSelection, "ADDRESS",
               "Sub-option 5: an address, or 'auto' for\nthe client link's own");
    group.flag("--server-id-override", s.serverIdOverride,
               "Sub-option 11: clients renew through the\nrelay (needs --link-selection)");
    group.text("--vrf", s.vrf, "NAME", "Virtual subnet selection: the VRF's name\n(DHCPv4: needs --link-selection)");
    group.flag("--no-vss-control", w.noVssControl, "Leave sub-option 152 out");
}

void addLimits(CLI::App& app, Settings& s) {
    Group group(app, "Policy and limits");
    static const std::map<std::string, InfoPolicy> untrusted{{"discard", InfoPolicy::discard},
                                                             {"replace", InfoPolicy::replace}};
    static const std::map<std::string, InfoPolicy> trusted{
        {"discard", InfoPolicy::discard}, {"replace", InfoPolicy::replace}, {"keep", InfoPolicy::keep}};
    group.choice("--option82", s.untrustedInfo, "discard|replace", untrusted,
                 "A client's own option 82: discard the request\nor replace it (default discard)");
    group.choice("--trusted-option82", s.trustedInfo, "discard|replace|keep", trusted,
                 "The same on trusted links: discard, replace\nor keep (default keep)");
    group.number("--hop-limit", s.hopLimit4, "N", 1, 255, "Most relays that a DHCPv4 request may pass\n(default 16)");
    group.number("--hop-limit6", s.hopLimit6, "N", 1, 32, "The same for DHCPv6 (default 8)");
    group.number("--mtu", s.mtu, "BYTES", 576, 65535,
                 "Leave option 82 out of larger requests\n(default: that of --server-interface, or 1500)");
    group.number("--rate", s.rate, "N", 0, 1000000,
                 "Requests per second that a link may send,\n0 for no limit (default 1000)");
    group.number("--remember", s.rememberSeconds, "SECONDS", 1, 3600,
                 "How long to remember the port of a transaction\n(default 60)");
    group.number("--transactions", s.transactions, "N", 16, 1048576,
                 "How many transactions to remember for each\nlink (default 16384)");
}

void printReasons() {
    for (const ReasonMember& row : Kcore::EnumTable<Reason>::members)
        if (row.kind != ReasonKind::silent)
            std::cout << row.name << (row.kind == ReasonKind::drop ? "\tdrop\t" : "\tremark\t") << row.text << '\n';
    throw CLI::Success();
}

void addReports(CLI::App& app, Settings& s) {
    Group group(app, "Reports");
    static const std::map<std::string, StatsFormat> formats{{"text", StatsFormat::text}, {"json", StatsFormat::json}};
    group.number("--stats", s.statsSeconds, "SECONDS", 1, 86400,
                 "Print the counters at this interval. SIGUSR1\nprints them as well");
    group.choice("--stats-format", s.statsFormat, "text|json", formats,
                 "'text' (default), or 'json': one object per line");
    group.flag("-v,--verbose", s.verbose, "Print a line for each message");
    group.flag("--check", s.checkOnly, "Check the settings and exit")->configurable(false);
    group.action("--list-reasons", printReasons, "Print why messages are dropped, and exit");
}

IntfId linkOf(const std::string& option, const std::string& value, std::string_view name) {
    if (!IntfId::isValidName(name)) refuse(option, value, "not the name of an interface");
    return IntfId(name);
}

ClientLink& clientOf(Settings& s, const std::string& option, const std::string& value, std::string_view name) {
    for (ClientLink& client : s.clients)
        if (client.name.name() == name) return client;
    refuse(option, value, "not a --client");
}

U16 vlanOf(const std::string& option, const std::string& value, std::string_view text) {
    U16 vlan = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), vlan);
    if (error != std::errc() || end != text.data() + text.size() || vlan < 1 || vlan > 4094)
        refuse(option, value, "not a VLAN number from 1 to 4094");
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

/// An address of one host that is not in `seen` yet.
IpGenAddr hostOf(const std::string& option, const std::string& text, const Settings& s, std::set<IpGenAddr>& seen) {
    IpGenAddr host;
    if (!IpGenAddr::parse(text, &host) || !host.isUsable()) refuse(option, text, "not the address of a host");
    if ((host.isV4() && host.v4Addr().value() >> 28 >= 0xe) || (host.isV6() && host.v6Addr().byte(0) == 0xff))
        refuse(option, text, "not the address of one host, so that replies could not be told from forged ones");
    if (host.isV6() && isLinkLocal(host.v6Addr()) && !s.serverInterface)
        refuse(option, text, "a link-local address needs --server-interface");
    if (!seen.insert(host).second) refuse(option, text, "named twice");
    return host;
}

void takeServers(Settings& s, const Written& w) {
    if (w.servers.empty()) throw UsageError("no --server");
    if (!w.serverInterface.empty())
        s.serverInterface = linkOf("server-interface", w.serverInterface, w.serverInterface);
    std::set<IpGenAddr> seen;
    for (const std::string& text : w.servers) {
        const IpGenAddr server = hostOf("server", text, s, seen);
        if (server.isV4())
            s.servers4.push_back(server.v4Addr());
        else
            s.servers6.push_back(server.v6Addr());
    }
    for (const std::string& text : w.replySources)
        s.replySources.push_back(hostOf("accept-replies-from", text, s, seen));
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
        refuse(option, entry, v4 ? "not an IPv4 address" : "not an IPv6 address");
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
    // Leaves room in the 255 bytes of option 82 for the other sub-options.
    constexpr std::size_t longestId = 64, longestVrf = 64;
    for (const auto& [option, text] : {std::pair<std::string, const std::string&>{"circuit-id", s.circuitId},
                                       {"interface-id", s.interfaceId},
                                       {"remote-id", s.remoteId}}) {
        if (text.size() > longestId) refuse(option, text, "longer than 64 bytes");
        PortName(option, text);  // throws if the format is wrong
    }
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
                   "Read options from a JSON file: the long names\nbelow, arrays where one may be repeated.\nThe "
                   "command line overrides them")
        ->type_name("FILE");
    app.allow_config_extras(CLI::config_extras_mode::capture);  // refused below, by their names
    app.allow_extras();
    app.footer(
        "Messages go to stderr, counters to stdout. The message \"dhcprelay: ready\" means that clients are served. "
        "The "
        "program waits for a missing link. SIGTERM and SIGINT end it.");
    addRelaying(app, settings, written);
    addIdentity(app, settings, written);
    addLimits(app, settings);
    addReports(app, settings);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        Cli::answer(app, help);
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
