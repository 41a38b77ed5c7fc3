#include <gtest/gtest.h>

#include <sstream>

#include "DhcpLib/Dhcp6MessageBuilder.h"
#include "DhcpLib/DhcpLib.h"
#include "DhcpLib/DhcpSnoopingPamManager.h"
#include "DhcpLib/Toggle.h"
#include "FailingAllocations.h"
#include "Kcore/Bytes.h"
#include "Kcore/Encoding.h"
#include "KernelNetInfo/Addresses.h"
#include "Kitnet/UdpMend.h"
#include "ReadMessages.h"
#include "Tyk/Toggle.h"

using namespace DhcpLib;
using namespace DhcpTest;
using Kcore::String;

namespace {

/// A call on objects that were made for it, and the text of their state, which a failed call must not change.
struct Call {
    std::function<void()> act;
    std::function<std::string()> state = [] { return std::string(); };
};
/// A row makes its call anew for each allocation that fails.
struct Row {
    const char* name;
    std::function<Call()> prepare;
    bool mayGoOn = false;  ///< the call may do without the memory
};

std::string stateOf(const PktPtr& pkt) { return {pkt->data(), pkt->data() + pkt->bytes()}; }
template <class Items>
std::string stateOf(const Items& items) {
    return std::to_string(items.size()) + Kcore::textOf(items);
}

/// Runs the row's call with each of its allocations failing. Returns the number of failures.
int failEach(const Row& row, bool expectNoLeak) {
    SCOPED_TRACE(row.name);
    for (int failures = 0;; ++failures) {
        const long live = liveBlocks();
        Ending ending;
        {
            const Call call = row.prepare();
            const std::string before = call.state();
            ending = actWithFailure(failures, call.act);
            EXPECT_TRUE(ending != Ending::threw || call.state() == before) << "failure " << failures;
            // The first pass reads the toggles. Their trace lines are dropped without memory.
            EXPECT_TRUE(ending != Ending::wentOn || row.mayGoOn || !expectNoLeak) << "failure " << failures;
        }
        EXPECT_TRUE(!expectNoLeak || liveBlocks() == live) << "failure " << failures << ", " << liveBlocks() - live;
        if (ending == Ending::complete) return failures;
    }
}

/// Once at first, when static objects are made, too; then with the blocks counted.
template <std::size_t n>
void failEach(const Row (&rows)[n], int leastFailures) {
    int failures = 0;
    for (const bool expectNoLeak : {false, true})
        for (const Row& row : rows) failures += failEach(row, expectNoLeak);
    EXPECT_GE(failures, leastFailures);
}

const std::string longText(60, 'x');
const auto ip4 = Kitnet::IpAddr::fromText("10.0.0.1");
const auto ip6 = Kitnet::Ip6Addr::fromText("2001:db8::1");

const Octets info =
    hex("52 44 01 20 'c'*32 02 03 'abc' 09 0D 00 00 7E D9 08 01 06 'Et4711' 05 04 0A 00 05 01 97 04 'blue' 98 00");
const Octets discover = message(hex("35 01 01 0C 28 'h'*40 37 14 01*20 3C 28 'v'*40") + info + hex("FF"));
const Octets leaseActive = message(
    "35 01 0D 33 04 00 00 0E 10 5B 04 00 00 00 09 5C 0C 0A 00 00 01 0A 00 00 02 0A 00 00 03 36 04 0A 00 00 09 FF");

Octets option6(U16 code, const Octets& data) {
    Octets header{static_cast<U8>(code >> 8), static_cast<U8>(code), 0, static_cast<U8>(data.size())};
    return header + data;
}
const Octets iana = option6(3, hex("00*12") + option6(5, hex("20 01 0D B8 00*11 09 00*8")));
const Octets solicit = hex("01 00 00 01") + option6(1, hex("00 02 00 00 7E D9") + Octets(40, 'i')) +
                       option6(37, hex("00 00 7E D9 00 03 00 01 02*6 00*8 01 0D 'Ethernet1:100'")) + iana +
                       option6(15, hex("00 22 'u'*34 00 01 'z'")) + option6(17, hex("00 00 11 8B 00 01 00 22 'o'*34"));
const Octets relayed =
    hex("0C 00") + Octets(32, 1) + option6(18, hex("01 23 'i'*35 02 23 'v'*35")) + option6(9, solicit);

template <class Act>
bool isRefused(Act act) {
    try {
        act();
    } catch (const Kcore::RangeException&) {
        return true;
    }
    return false;
}

/// Reads all that a frame contains. The headers in front of the message end at `message`.
Row reads(const char* name, const Octets& bytes, void (*read)(std::string&, const PktPtr&, U32), U32 message) {
    return {name, [=] {
                const PktPtr pkt = packet(bytes);
                return Call{[=] {
                                std::string out;
                                read(out, pkt, message);
                                EXPECT_EQ(out.starts_with('+'), message != 0);
                            },
                            [pkt] { return stateOf(pkt); }};
            }};
}
/// Changes an object that is made by `make`, with a state that `show` gives.
template <class Make, class Act, class Show>
Row changes(const char* name, Make make, Act act, Show show) {
    return {name, [=] {
                const auto object = std::make_shared<decltype(make())>(make());
                return Call{[=] { act(*object); }, [=] { return show(*object); }};
            }};
}

/// No lines of the ring, which a failure drops.
struct Untraced {
    Untraced() { Tyk::RingTrace::levelIs(0); }
    ~Untraced() { Tyk::RingTrace::levelIs(1); }
};

TEST(AllocationFailure, OfEveryReader) {
    const Untraced untraced;
    const Octets frame4 = hex("02*6 04*6 08 00 45 00*8 11 00 00 0A 00 00 01 0A 00 00 02 00 44 00 43 00*4"),
                 frame6 = hex("33 33 00 01 00 02 02*6 86 DD 60 00 00 00 01 00 11 01") + Octets(32, 1) +
                          hex("02 22 02 23 01 00 00 00");
    const Row rows[] = {
        reads("DHCPv4 request", frame4 + discover, readV4, 42),
        reads("DHCPv4 lease", frame4 + leaseActive, readV4, 42),
        reads("DHCPv6 request", frame6 + solicit, readV6, 62),
        reads("DHCPv6 relay message", relayed, readV6, 0),
        {"addresses",
         [] {
             return Call{[] {
                 EXPECT_TRUE(isRefused([] { Kitnet::IpAddr::fromText("no address, but a long text"); }));
                 EXPECT_TRUE(isRefused([] { Kitnet::IpGenAddr::fromText("2001:db8::1::2 has a long text"); }));
                 EXPECT_TRUE(isRefused([] { Kitnet::IntfId(longText + " "); }));
                 EXPECT_TRUE(isRefused([] { Dhcp6MsgTypeInstance(longText); }));
                 EXPECT_EQ(Kcore::textOf(Kitnet::Ip6Addr::fromText("2001:db8:1111:2222:3333:4444:5555:6666")).size(),
                           38u);
             }};
         }},
        {"encoding",
         [] {
             return Call{[] {
                 std::string quoted;
                 Kcore::appendQuoted(quoted, longText);
                 Kcore::CharRange range(quoted);
                 String value;
                 EXPECT_TRUE(sequenceToValue(range, &value) && value == longText);
             }};
         }},
        {"getToggleState", [] { return Call{[] { EXPECT_TRUE(Tyk::getToggleState("absent", "absent.json", true)); }}; },
         true},
    };
    failEach(rows, 150);
}

TEST(AllocationFailure, OfEveryChangeOfAPacket) {
    const auto tight = [] { return packet(discover); };
    const auto shown = [](const PktPtr& pkt) { return stateOf(pkt); };
    const auto builder = [] { return Dhcp6MessageBuilder(Dhcp6MsgType::reply, Dhcp6Xid(1, 2, 3)); };
    const auto message6 = [] { return packet(relayed); };
    const Row rows[] = {
        changes(
            "newSharedHeadData", tight, [](const PktPtr& pkt) { pkt->newSharedHeadData(3); }, shown),
        changes(
            "newSharedTailData", tight, [](const PktPtr& pkt) { pkt->newSharedTailData(3); }, shown),
        changes(
            "setServerId", [] { return packet(leaseActive); },
            [](const PktPtr& pkt) { EXPECT_TRUE(setServerId(pkt, ip4)); }, shown),
        changes(
            "removeInfoOption", tight, [](const PktPtr& pkt) { EXPECT_EQ(removeInfoOption(pkt, 0).options, 1u); },
            shown),
        changes(
            "vendor block", tight, [](const PktPtr& pkt) { dhcpVendorSpecificDataFactory(pkt, 300, 9, 40); }, shown),
        changes(
            "Dhcp6MessageBuilder", builder,
            [](Dhcp6MessageBuilder& message) {
                EXPECT_TRUE(
                    message.addNested(message.add(Dhcp6OptionType::iana, 12), Dhcp6OptionType::iaAddress, 2000));
            },
            [](const Dhcp6MessageBuilder& message) {
                // The first addition may have succeeded.
                return stateOf(message.pkt()).substr(0, 4);
            }),
        changes(
            "setInterfaceIdDataInPkt", message6,
            [](const PktPtr& pkt) {
                const auto view = dhcp6InterfaceIdFactory(dhcp6OptionFactory(pkt, 34));
                view->intfNameIs(longText.substr(30));
                view->setInterfaceIdDataInPkt();
            },
            shown),
        changes(
            "remote-id texts", message6,
            [](const PktPtr& pkt) {
                const auto option = dhcp6OptionFactory(pkt, 34);
                dhcp6RemoteIdHostAndIntfNameFactory(option, 40)->hostAndIntfNameIs(longText);
            },
            shown),
        changes(
            "DUID", message6,
            [](const PktPtr& pkt) {
                const auto option = dhcp6OptionFactory(pkt, 34 + 78);
                dhcp6DuidFactory(option, 10)->duidTypeIs(2);
            },
            shown),
        {"buildDhcpLeaseQuery",
         [] { return Call{[] { EXPECT_EQ(buildDhcpLeaseQuery(false, ip4, {}, ip4, 7)->bytes(), 300u); }}; }},
        {"addVendorSpecificSubOption",
         [] {
             const auto bytes = std::make_shared<Octets>(hex("52 02 09 00") + Octets(80, scratch));
             return Call{[bytes] {
                             auto* const option = reinterpret_cast<DhcpSingleOption*>(bytes->data());
                             EXPECT_EQ(addVendorSpecificSubOption(option, 2, nullptr, longText, ip4), 2u + 5 + 62 + 6);
                         },
                         [bytes] { return std::string(bytes->begin(), bytes->end()); }};
         }},
    };
    failEach(rows, 30);
}

template <class Map>
Map filled(std::size_t size) {
    Map map;
    for (std::size_t i = 0; i < size; ++i)
        map.insertOrAssign(static_cast<U32>(i), String(longText + std::to_string(i)));
    return map;
}

TEST(AllocationFailure, OfEveryChangeOfACollection) {
    using Map = Kcore::FlatMap<U32, String>;
    const auto shown = [](const auto& items) { return stateOf(items); };
    const auto ofSize = [](std::size_t size) { return [size] { return filled<Map>(size); }; };
    const auto insert = [](Map& map) { map.insertOrAssign(1000, longText); };
    const auto bytesOfSize = [](std::size_t size) {
        return [size] {
            Kcore::Bytes bytes;
            bytes.resize(size);
            return bytes;
        };
    };
    const auto bytesShown = [](const Kcore::Bytes& bytes) { return std::string(bytes.begin(), bytes.end()); };
    const auto assign = [](Kcore::Bytes& bytes) {
        Kcore::Bytes other;
        other.append(std::string(500, 'o'));
        bytes = other;
    };
    struct Known {
        Kcore::Directory<U32, String> directory;
        Kcore::Observers<const U32&>::Observation observer =
            directory.observers().observe([](const U32&) { String tooLong(longText); });
    };
    const auto known = [] {
        auto it = std::make_shared<Known>();
        it->directory.entryIs(1, "one");
        return it;
    };
    const auto knownShown = [](const std::shared_ptr<Known>& it) { return stateOf(it->directory.entries()); };
    const auto leaseIps = [](std::set<Kitnet::IpAddr>& ips) {
        Kcore::Duration time;
        Kitnet::IpAddr server;
        bool present;
        EXPECT_TRUE(parseLeaseQueryOpts(packet(leaseActive), time, time, ips, server, present, present, present, 0));
    };
    const Row rows[] = {
        changes("insert, first", ofSize(0), insert, shown),
        changes("insert, index made", ofSize(8), insert, shown),
        changes("insert, index grows", ofSize(16), insert, shown),
        changes(
            "assign a new value", ofSize(20), [](Map& map) { map.insertOrAssign(3, longText); }, shown),
        changes(
            "remove entries", ofSize(20),
            [](Map& map) {
                for (U32 key = 0; key < 20; ++key) map.erase(key);
            },
            shown),
        changes(
            "assign a map", ofSize(20), [](Map& map) { map = filled<Map>(30); }, shown),
        changes(
            "append within", bytesOfSize(270), [](Kcore::Bytes& b) { b.append(longText); }, bytesShown),
        changes(
            "append to a block", bytesOfSize(544), [](Kcore::Bytes& b) { b.append(longText); }, bytesShown),
        changes(
            "resize", bytesOfSize(10), [](Kcore::Bytes& b) { b.resize(1000); }, bytesShown),
        changes("assign bytes", bytesOfSize(10), assign, bytesShown),
        changes("assign bytes over a block", bytesOfSize(300), assign, bytesShown),
        changes(
            "string", [] { return String(longText); }, [](String& s) { s = s + s + s.substr(5); },
            [](const String& s) { return s.str(); }),
        changes(
            "an observer of an added entry", known, [](const auto& it) { it->directory.entryIs(2, longText); },
            knownShown),
        changes(
            "an observer of a changed entry", known, [](const auto& it) { it->directory.entryIs(1, longText); },
            knownShown),
        changes(
            "an observer of a removed entry", known, [](const auto& it) { it->directory.entryDel(1); }, knownShown),
        changes(
            "parseLeaseQueryOpts", [] { return std::set{ip4}; }, leaseIps, shown),
        changes(
            "optionIs", [] { return dhcpMsgOptionsFactory(packet(hex("0C 01 61")), 0); },
            [](const auto& options) {
                options->optionIs(static_cast<DhcpOptionType>(100), options->option(DhcpOptionType::hostName));
            },
            [](const auto& options) { return std::to_string(options->option().size()); }),
        changes(
            "switchIntfConfigIs", [] { return Kcore::makeNode<Bridging::Config>(); },
            [](const auto& config) { config->switchIntfConfigIs(accessPort)->nativeVlanIs(Bridging::VlanId(9)); },
            [](const auto& config) { return std::to_string(config->switchIntfConfig().size()); }),
    };
    failEach(rows, 40);
}

/// Objects with observers and destructors, tracing at every level.
TEST(AllocationFailure, OfTracingAndInterfaces) {
    struct Level {
        Level() { Tyk::TraceHandle("Interface", false).levelIs(4); }
        ~Level() { Tyk::TraceHandle("Interface", false).levelIs(0); }
    } const level;
    const Tyk::TraceSink sink = [](const Tyk::TraceLine& line) { String copy(line.text); };
    struct Inputs {
        KernelNetInfo::Status::Ptr kni = Kcore::makeNode<KernelNetInfo::Status>();
        Interface::AllIntfStatusDir::Ptr all = Kcore::makeNode<Interface::AllIntfStatusDir>(kni);
        Interface::AllIntfStatusLocalDir::Ptr local = Kcore::makeNode<Interface::AllIntfStatusLocalDir>();
    };
    const Inputs inputs;
    const Kitnet::IntfId intf("absent0");
    const auto manager = [&] { return pamManagerFactory("pam", inputs.all, inputs.local, inputs.kni); };
    const auto desired = [](const PamManager::Ptr& pam) {
        return stateOf(pam->pamDesiredIntfDir()->intf()) +
               std::to_string(pam->ethDevPamCollection()->ethDevPam().size());
    };
    testing::internal::CaptureStderr();  // of lines for which the sink has no memory
    const auto before = Tyk::traceSinkIs(sink);
    const Row rows[] = {
        {"PamManager", [&] { return Call{[&] { EXPECT_TRUE(manager()->initialized()); }}; }, true},
        changes(
            "intfIs", manager, [&](const auto& pam) { pam->pamDesiredIntfDir()->intfIs(intf); }, desired),
        {"Status and Addresses",
         [] {
             return Call{[] {
                 EXPECT_FALSE(Kcore::makeNode<KernelNetInfo::Status>()->intfStatus().entries().empty());
                 Kcore::makeNode<KernelNetInfo::Addresses>();
             }};
         }},
        {"traceSinkIs", [] { return Call{[] { Tyk::traceSinkIs(Tyk::traceSinkIs({})); }}; }},
        {"fmtrace",
         [] {
             return Call{[] {
                 Tyk::fmtrace(Tyk::TraceHandle("Interface", false), 1, {}, "{} {}", longText, 7);
                 Tyk::TraceHelper(Tyk::TraceHandle("Interface", false), 1).stream() << 7;
             }};
         },
         true},
        {"RingTrace",
         [] {
             return Call{[] {
                 std::ostringstream out;
                 Tyk::RingTrace::dump(out);
                 Tyk::RingTrace::formatters();
             }};
         },
         true},
    };
    for (Row row : rows) {
        row.mayGoOn = true;  // without the memory for a line
        failEach(row, false);
        failEach(row, true);
    }
    Tyk::traceSinkIs(before);
    testing::internal::GetCapturedStderr();
}

}  // namespace
