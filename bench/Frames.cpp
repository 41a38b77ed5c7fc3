#include "Frames.h"

#include <algorithm>
#include <random>
#include <stdexcept>

#include "DhcpLib/Constants.h"

namespace DhcpBench {

namespace {

constexpr U32 address(U32 a, U32 b, U32 c, U32 d) { return a << 24 | b << 16 | c << 8 | d; }
constexpr U32 relay = address(10, 4, 0, 1), server = address(10, 9, 0, 2), leased = address(10, 4, 0, 99);
constexpr Path fromClient{0, address(255, 255, 255, 255), 68, 67};
constexpr Path fromRelay{relay, server, 67, 67};
constexpr Path fromServer{server, relay, 67, 67};

Path tagged(Path path, U16 vlan) {
    path.vlan = vlan;
    return path;
}

Input inputOf(const Octets& message, const Path& path) {
    Octets frame = frameOf(message, path);
    auto pkt = Kitnet::globalPktManager().newPkt(frame);
    const auto messageAt = static_cast<U32>(frame.size() - message.size());
    return {std::move(frame), std::move(pkt), messageAt};
}

/// An option 82 with all sub-options that a relay writes.
Octets relayInformation() {
    Octets items, vendor = bigEndian(DhcpLib::Constants::quorvaEntNum), bytes;
    appendItem(items, 1, octets("Ethernet7/2"));
    appendItem(items, 2, bigEndian(address(10, 250, 0, 3)));
    vendor.push_back(static_cast<U8>(items.size()));
    vendor.insert(vendor.end(), items.begin(), items.end());

    appendItem(bytes, 1, octets("Ethernet7/2"));
    appendItem(bytes, 2, octets("02:00:5e:77:00:01"));
    appendItem(bytes, 9, vendor);
    appendItem(bytes, 5, bigEndian(relay));
    appendItem(bytes, 11, bigEndian(address(10, 4, 0, 254)));
    appendItem(bytes, 151, octets(std::string_view("\0blue", 5)));
    appendItem(bytes, 152, {});
    return bytes;
}

Message discover() {
    return Message(Op::request)
        .xid(0x5eed0001)
        .option(53, Octets{1})
        .option(61, Octets{1, 2, 0, 0x5e, 0x10, 0, 2})
        .option(12, "printer-3rd-floor")
        .option(60, "udhcp 1.35.0")
        .option(55, Octets{1, 3, 6, 12, 15, 26, 28, 42, 51, 54, 58, 59, 119})
        .option(57, Octets{5, 0xdc});
}

Message acknowledgement() {
    return Message(Op::reply)
        .xid(0x5eed0002)
        .yiaddr(leased)
        .giaddr(relay)
        .option(53, Octets{5})
        .option(54, server)
        .option(51, 43200)
        .option(58, 21600)
        .option(59, 37800)
        .option(1, address(255, 255, 252, 0))
        .option(3, relay)
        .option(6, Octets{10, 9, 0, 53, 10, 9, 1, 53})
        .option(12, "printer-3rd-floor")
        .option(15, "example.net")
        .option(28, address(10, 4, 3, 255))
        .option(42, address(10, 9, 0, 123));
}

Message leaseActive() {
    return Message(Op::reply)
        .ciaddr(leased)
        .giaddr(relay)
        .option(53, Octets{13})
        .option(54, server)
        .option(51, 1800)
        .option(91, 611)
        .option(92, Octets{10, 4, 0, 99, 10, 4, 0, 120, 10, 4, 1, 7});
}

/// `n` options with different codes and little data. Option 53 comes first.
Message smallOptions(std::size_t n) {
    Message message(Op::request);
    message.option(53, Octets{1});
    for (U32 i = 1, left = static_cast<U32>(n) - 1; left > 0; ++i) {
        const auto code = static_cast<U8>(i * 101 % 254 + 1);  // each code once, in a mixed order
        if (code == 53) continue;
        const bool isAddress = code == 51 || code == 54 || code == 91 || code == 92;
        message.option(code, code == 82 ? Octets{1, 1, 'p'} : isAddress ? bigEndian(leased) : Octets{7});
        --left;
    }
    return message;
}

Message padded() { return discover().pads(1100).option(50, leased); }

/// Random messages as on a busy relay; the same ones in every run.
class Mixture {
public:
    Input next() {
        const bool isReply = below(3) == 0, isRelayed = below(2) == 0;
        std::vector<std::pair<U8, Octets>> options = isReply ? replyOptions() : requestOptions();
        for (std::size_t i = options.size(); i > 1; --i) std::swap(options[i - 1], options[below(i)]);

        Message message(isReply ? Op::reply : Op::request);
        message.xid(static_cast<U32>(random_())).giaddr(isReply || isRelayed ? relay : 0);
        message.option(53, Octets{static_cast<U8>(isReply ? 5 : below(2) == 0 ? 1 : 3)});
        for (const auto& [code, data] : options) message.option(code, data);
        if (isRelayed) message.option(82, relayInformation());
        const Path fromHost = below(3) == 0 ? tagged(fromClient, static_cast<U16>(1 + below(4000))) : fromClient;
        return inputOf(message.finished(), isReply ? fromServer : isRelayed ? fromRelay : fromHost);
    }

private:
    std::size_t below(std::size_t n) { return random_() % n; }
    Octets letters(std::size_t atLeast, std::size_t span) {
        Octets text(atLeast + below(span));
        std::ranges::generate(text, [&] { return static_cast<U8>('a' + below(26)); });
        return text;
    }
    std::vector<std::pair<U8, Octets>> requestOptions() {
        std::vector<std::pair<U8, Octets>> options{{61, {1, 2, 0, 0x5e, 0x10, 0, static_cast<U8>(below(256))}}};
        if (below(2) == 0) options.emplace_back(50, bigEndian(leased));
        if (below(5) != 0) options.emplace_back(12, letters(3, 18));
        if (below(4) != 0) options.emplace_back(60, letters(4, 20));
        Octets wanted(5 + below(14));
        std::ranges::generate(wanted, [&] { return static_cast<U8>(1 + below(253)); });
        options.emplace_back(55, wanted);
        if (below(2) == 0) options.emplace_back(57, Octets{5, 0xdc});
        return options;
    }
    std::vector<std::pair<U8, Octets>> replyOptions() {
        std::vector<std::pair<U8, Octets>> options{
            {54, bigEndian(server)}, {51, bigEndian(3600)}, {15, letters(4, 20)}};
        for (const U8 code : {U8{1}, U8{3}, U8{28}, U8{42}, U8{58}, U8{59}})
            if (below(4) != 0) options.emplace_back(code, bigEndian(leased));
        return options;
    }

    std::minstd_rand random_{41};
};

Case mixed() {
    Case result{"mixed", {}};
    Mixture mixture;
    for (int i = 0; i < 512; ++i) result.inputs.push_back(mixture.next());
    return result;
}

Case single(std::string name, const Octets& message, const Path& path) {
    Case result{std::move(name), {}};
    result.inputs.push_back(inputOf(message, path));
    return result;
}

}  // namespace

const std::vector<Case>& typicalCases() {
    static const std::vector<Case> cases = {
        single("discover", discover().finished(), fromClient),
        single("tagged", discover().finished(), tagged(fromClient, 120)),
        single("relayed", discover().giaddr(relay).option(82, relayInformation()).finished(), fromRelay),
        single("ack", acknowledgement().finished(), fromServer),
        single("relayedack", acknowledgement().option(82, relayInformation()).finished(), fromServer),
        single("leaseactive", leaseActive().finished(), fromServer),
        mixed(),
        single("252options", smallOptions(252).finished(), fromClient),
        single("1100pads", padded().finished(), fromClient),
    };
    return cases;
}

const std::vector<Case>& growingCases() {
    static const std::vector<Case> cases = [] {
        std::vector<Case> growing;
        for (const std::size_t n : {5U, 10U, 20U, 50U, 100U, 250U})
            growing.push_back(single(std::to_string(n), smallOptions(n).finished(0), fromClient));
        return growing;
    }();
    return cases;
}

const Case& caseOf(std::string_view name) {
    const auto found = std::ranges::find(typicalCases(), name, &Case::name);
    if (found == typicalCases().end()) throw std::out_of_range("no case " + std::string(name));
    return *found;
}

}  // namespace DhcpBench
