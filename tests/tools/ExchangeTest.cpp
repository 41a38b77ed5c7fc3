#include <gtest/gtest.h>

#include "exchange/ExchangeTracker.h"
#include "follow/ExchangeLine.h"
#include "stats/BoundedTable.h"
#include "stats/Histogram.h"

namespace DhcpTool {

namespace {

using enum MessageKind;
using namespace std::chrono_literals;

constexpr char server1[] = "\12\0\0\1";
const Kitnet::IpAddr leased(0x0a000064), giaddr(0x0a140001);

/// A message that a row of the tests describes, between the client 1 and the server 10.0.0.1 or 02:...:01.
struct Message : Event {
    Message(Nanoseconds after, MessageKind what) {
        time = 1'000'000s + after;
        kind = what;
        xid = 7;
        vlan = 10;
        by("\2\0\0\0\0\1");
        if (roleOf(what).fromServer && what != forceRenew) from(server1);
    }
    Message& by(const char* mac) {
        client = {mac, 6};
        clientMac = Kitnet::EthAddr::fromBytes(reinterpret_cast<const U8*>(mac));
        if (!roleOf(kind).fromServer) sourceMac = *clientMac;
        return *this;
    }
    /// Sent by a server, or naming it in a request.
    Message& from(const char* id) {
        serverId = {id, 4};
        if (!roleOf(kind).fromServer) return *this;
        source = Kitnet::IpAddr::fromBytes(reinterpret_cast<const U8*>(id));
        sourceMac.byteIs(5, static_cast<U8>(id[3]));
        return *this;
    }
    /// The copy between relay agent and server.
    Message& relayed(bool withInfo = true) {
        relays = 1;
        relay = giaddr;
        relayInfo = withInfo;
        return *this;
    }
    /// What the relay agent sends on the client's link.
    Message& delivered() {
        relay = giaddr;
        return *this;
    }
    Message& with(U32 transaction) {
        xid = transaction;
        return *this;
    }
    Message& address(const Kitnet::IpGenAddr& ip, std::optional<U32> seconds = std::nullopt) {
        assigned.push_back({ip, std::nullopt, seconds});
        return *this;
    }
    Message& status(U16 code, std::string_view said) {
        statuses.push_back({code, said});
        return *this;
    }
    Message& at(std::string_view id) {
        port = id;
        return *this;
    }
    Message& using_(const Kitnet::IpAddr& ip) {
        ciaddr = ip;
        destination = Kitnet::IpAddr(0x0a000001);
        return *this;
    }
};

struct Row {
    const char* name;
    std::vector<Message> messages;
    std::vector<std::string> lines;  ///< in the order of the exchanges' ends
};

std::vector<std::string> linesOf(const std::vector<Message>& messages, const TrackerSettings& settings = {}) {
    std::vector<std::string> lines;
    ExchangeTracker tracker(settings, [&](const Exchange& exchange) {
        appendExchange(lines.emplace_back(), exchange, marksOf(exchange), false);
    });
    for (const Message& message : messages) tracker.take(message);
    tracker.finish();
    return lines;
}

class Exchanges : public testing::TestWithParam<Row> {};

TEST_P(Exchanges, AreReportedAs) { EXPECT_EQ(linesOf(GetParam().messages), GetParam().lines); }

const std::string client1 = "02:00:00:00:00:01 vlan 10 ", client2 = "02:00:00:00:00:02 vlan 10 ";
const std::string by1 = " server 10.0.0.1 (00:00:00:00:00:01)";

INSTANTIATE_TEST_SUITE_P(
    Dhcp4, Exchanges,
    testing::Values(
        Row{"ClientsWithTheSameTransactionId",
            {Message(0ms, discover), Message(1ms, discover).by("\2\0\0\0\0\2"), Message(2ms, offer)},
            {client2 + "DISCOVER ! DISCOVER not answered, no server answers in this VLAN",
             client1 + "DISCOVER -> OFFER 2.00ms" + by1 + " ! OFFER not followed by a REQUEST"}},
        Row{"BothSidesOfARelayAgent",
            {Message(0ms, discover).at("1/7"), Message(1ms, discover).relayed(), Message(3ms, offer).relayed(),
             Message(4ms, offer).delivered(), Message(5ms, request), Message(6ms, request).relayed(),
             Message(8ms, ack).relayed(), Message(9ms, ack).delivered()},
            {client1 + "port \"1/7\" DISCOVER -> OFFER 4.00ms -> REQUEST (reboot) 1.00ms -> ACK 4.00ms server 10.0.0.1 "
                       "relay 10.20.0.1 >1.00ms <1.00ms"}},
        Row{"RetransmissionsButNoCopies",
            {Message(0s, discover), Message(1ms, discover), Message(3s, discover), Message(3001ms, offer),
             Message(3002ms, request).from(server1), Message(3003ms, ack), Message(3004ms, ack).address(leased)},
            {client1 + "DISCOVER x2 in 3.00s -> OFFER 1.00ms -> REQUEST 1.00ms -> ACK 1.00ms address 10.0.0.100" + by1 +
             " ! DISCOVER sent 2 times"}},
        Row{"AnsweredTwice",
            {Message(0ms, discover).relayed(), Message(1ms, offer).relayed(), Message(90ms, offer).relayed()},
            {client1 + "DISCOVER -> OFFER 1.00ms x2 in 89.0ms server 10.0.0.1 relay 10.20.0.1"
                       " ! OFFER not followed by a REQUEST; OFFER from 10.0.0.1 2 times"}},
        Row{"DeclineWithItsOwnTransaction",
            {Message(0ms, request).from(server1), Message(1ms, ack).address(leased),
             Message(2s, decline).with(8).address(leased), Message(4s, discover).with(8)},
            {client1 + "REQUEST -> ACK 1.00ms -> DECLINE 1.99s address 10.0.0.100" + by1 +
                 " ! 10.0.0.100 declined, another host uses it",
             client1 + "DISCOVER ! DISCOVER not answered, 10.0.0.1 answers others"}},
        Row{"RenewalsWithOneTransaction",
            {Message(0s, request).using_(leased), Message(1ms, ack), Message(10s, request).using_(leased),
             Message(20s, release)},
            {client1 + "REQUEST (renew) -> ACK 1.00ms" + by1,
             client1 + "REQUEST (renew) ! REQUEST (renew) not answered, 10.0.0.1 answers others", client1 + "RELEASE"}},
        Row{"RelayAgentWithoutOption82",
            {Message(0ms, discover).at("a"), Message(1ms, discover).relayed().at("b"),
             Message(2ms, offer).relayed(false)},
            {client1 +
             "port \"b\" DISCOVER -> OFFER 1.00ms server 10.0.0.1 relay 10.20.0.1 >1.00ms ! OFFER not followed by "
             "a REQUEST; OFFER lacks the option 82 of its request; relay agent changes circuit-id \"a\" to "
             "\"b\"; OFFER does not pass the relay agent"}},
        Row{"AnswerAlone",
            {Message(0ms, leaseActive)},
            {client1 + "LEASEACTIVE" + by1 + " ! LEASEACTIVE without a request"}}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Dhcp6, Exchanges,
    testing::Values(
        Row{"NewTransactionBehindTheAdvertise",
            {Message(0ms, solicit6), Message(1ms, advertise6), Message(2ms, request6).with(8).from(server1),
             Message(3ms, reply6).with(8).address(leased, 0xffffffff), Message(4s, release6).with(9),
             Message(5s, reply6).with(9).status(3, "none")},
            {client1 +
                 "SOLICIT -> ADVERTISE 1.00ms -> REQUEST 1.00ms -> REPLY 1.00ms address 10.0.0.100 lease infinite" +
                 by1,
             client1 + "RELEASE -> REPLY 1.00s" + by1 + " ! REPLY NoBinding \"none\""}},
        Row{"Reconfigure",
            {Message(0ms, reconfigure6).with(0), Message(1ms, infoRequest6), Message(2ms, reply6),
             Message(3ms, confirm6).with(9)},
            {client1 + "RECONFIGURE -> INFORMATION-REQUEST 1.00ms -> REPLY 1.00ms" + by1,
             client1 + "CONFIRM ! CONFIRM not answered, 10.0.0.1 answers others"}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ExchangeTracker, EndsExchangesByTheirOwnClock) {
    const std::vector<Message> messages{Message(0s, discover), Message(40s, discover).with(8), Message(-99999h, ack),
                                        Message(99999h, nak), Message(10s, discover).with(9)};
    const auto lines = linesOf(messages);
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_TRUE(lines[0].starts_with(client1 + "DISCOVER ! "));
    for (Nanoseconds extreme : {Nanoseconds::max(), Nanoseconds::min()}) {
        Message odd(0s, offer);
        odd.time = extreme;
        EXPECT_EQ(linesOf({Message(0s, discover), odd}).size(), extreme == Nanoseconds::min() ? 1u : 2u);
    }
}

TEST(ExchangeTracker, BoundsOpenExchanges) {
    std::vector<Message> messages(40, Message(0s, discover));
    for (U32 at = 0; at < messages.size(); ++at) messages[at].xid = at;
    std::size_t reported = 0;
    ExchangeTracker ofOneClient({}, [&](const Exchange& exchange) { reported += exchange.incomplete ? 1 : 0; });
    for (const Message& message : messages) ofOneClient.take(message);
    EXPECT_EQ(reported, messages.size() - 16);

    std::vector<std::string> macs;
    for (char at = 0; at < 40; ++at) macs.push_back(std::string("\2\0\0\0\1", 5) + at);
    for (std::size_t at = 0; at < macs.size(); ++at) messages[at].by(macs[at].c_str());
    messages.insert(messages.begin() + 1, Message(0s, offer).with(0).by(macs[0].c_str()));
    messages.insert(messages.begin() + 2, Message(0s, ack).with(0).by(macs[0].c_str()));
    const auto lines = linesOf(messages, {.mostOpen = 10});
    ASSERT_EQ(lines.size(), 40u);
    EXPECT_NE(lines[0].find("ACK"), std::string::npos) << "a finished exchange makes room first";
    EXPECT_NE(lines[1].find("not followed to its end"), std::string::npos);
}

TEST(Histogram, IsAtMostOnePointSixPercentOff) {
    for (Nanoseconds time = 1100ns; time < 1000s; time = time * 21 / 20) {
        Histogram histogram;
        histogram.add(time);
        EXPECT_NEAR(static_cast<double>(histogram.percentile(0.5).count()) / static_cast<double>(time.count()), 1,
                    0.016);
    }
    Histogram times;
    for (int at = 1; at <= 100; ++at) times.add(at < 99 ? 1ms : 1s);
    for (const Nanoseconds odd : {Nanoseconds::min(), Nanoseconds(-1)}) times.add(odd);
    EXPECT_EQ(times.count(), 100u);
    EXPECT_LT(times.percentile(0.98), 2ms);
    EXPECT_GT(times.percentile(0.99), 900ms);
    times.add(Nanoseconds::max());
    EXPECT_EQ(times.bars().back(), 1u);
    EXPECT_EQ(times.bars()[9], 98u) << "from 1 ms on";
}

TEST(BoundedTable, KeepsFrequentKeysAndLosesNoCount) {
    struct Tally {
        U64 count = 0;
        U64 weight() const { return count; }
        void add(const Tally& other) { count += other.count; }
    };
    BoundedTable<Tally> table(10);
    for (int at = 0; at < 1000; ++at) {
        ++table.row("frequent").count;
        ++table.row(std::to_string(at)).count;
    }
    const auto top = table.top(1);
    EXPECT_EQ(top.front()->first, "frequent");
    EXPECT_EQ(top.front()->second.count, 1000u);
    EXPECT_LE(table.size(), 10u);
    EXPECT_EQ(table.rest(1).count, 1000u);
}

}  // namespace

}  // namespace DhcpTool
