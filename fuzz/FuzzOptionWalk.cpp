// The raw walkers find what a step-by-step model finds, in every kind of packet storage, and change nothing.

#include "OptionsInput.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

namespace {

using Places = std::map<U8, std::ptrdiff_t>;

/// Positions at which `walk` finds the codes of `expected`. A few more codes are requested, too.
template <class Walk>
Places placesFound(const Places& expected, const U8* start, Walk walk) {
    std::map<U8, DhcpSingleOption*> slots;
    for (const U8 code : hex("00 01 0C 32 35 52 C8 FF")) slots[code] = nullptr;
    for (const auto& [code, place] : expected) slots[code] = nullptr;
    std::vector<DhcpSingleOptionWithCode> wanted;
    wanted.reserve(slots.size());
    for (auto& [code, slot] : slots) wanted.push_back({code, &slot});
    walk(wanted);
    Places places;
    for (const auto& [code, slot] : slots)
        if (slot != nullptr) places[code] = reinterpret_cast<const U8*>(slot) - start;
    return places;
}

void checkPlaces(const PktPtr& pkt, U32 offset, const Model::Area& area) {
    bool ok = false;
    const Places expected(area.last.begin(), area.last.end());
    const Places places =
        placesFound(expected, pkt->data(), [&](auto& wanted) { ok = parseDhcpOptions(pkt, offset, wanted); });
    expect(places == expected && ok == area.failure.empty() && ok == dhcpOptionBasicCheck(pkt, offset));
    DhcpOptions* options = nullptr;
    DhcpSingleOption *info = nullptr, *end = nullptr, *packetEnd = nullptr;
    const std::string failed = assertionOf([&] { getDhcpOptions(pkt, offset, options, info, end, packetEnd); });
    expect(failed.empty() == ok);
    if (!ok) return;
    expect(reinterpret_cast<U8*>(end) - pkt->data() == places.at(255));
    expect((info != nullptr) == places.contains(82));
    if (info != nullptr) expect(reinterpret_cast<U8*>(info) - pkt->data() == places.at(82));
}

/// Without a packet only the byte count bounds the walk, so bytes are added for the largest lengths.
void checkSubOptions(const Octets& bytes, std::size_t total) {
    Octets roomy = bytes + Octets(total + 600, U8{0});
    Places expected;
    for (std::size_t p = 0, walked = 0;;) {
        auto* const here = reinterpret_cast<DhcpSingleOption*>(&roomy[p]);
        expected[roomy[p]] = static_cast<std::ptrdiff_t>(p);
        U8 added = 9;
        increaseAddedOptLen(added, roomy[p + 1]);
        expect(added == (roomy[p + 1] + 11u) % 256);
        walked += roomy[p + 1] + 2u;
        p += roomy[p] == 0 ? 1 : roomy[p + 1] + 2u;
        expect(getDhcpNextOpt(here) == static_cast<void*>(&roomy[p]));
        if (walked >= total) break;
    }
    expect(placesFound(expected, roomy.data(), [&](auto& wanted) {
               parseDhcpSubOptsInOption(reinterpret_cast<DhcpSingleOption*>(roomy.data()), total, wanted);
           }) == expected);
}

/// The address in the last option of that code of a message at byte 0.
Kitnet::IpAddr addressOption(const Octets& bytes, U8 code) {
    const Model::Area area = Model::walk(bytes, 0);
    const auto option = area.last.find(code);
    if (!area.failure.empty() || option == area.last.end() || Model::at(bytes, option->second + 1) != 4) return {};
    return Model::address(bytes, option->second + 2);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    const OptionsInput input(data, size);
    const Model::Area area = Model::walk(input.bytes, input.offset);
    const auto [name, type] = Model::messageType(input.bytes, input.offset);
    for (const PktPtr& pkt : packets(input.bytes)) {
        checkPlaces(pkt, input.offset, area);
        U8 found = 200;
        expect(getDhcpMsgTypeStringAndOpt(pkt, input.offset, found) == name);
        expect(getDhcpMsgType(pkt, input.offset) == name);
        expect(found == (type < 0 ? 200 : type));
        expect(getRequestedIpOption(pkt, BootpOption::bootpRequest) == addressOption(input.bytes, 50));
        expect(getServerId(pkt) == addressOption(input.bytes, 54));
        expect(bytesOf(*pkt) == input.bytes);
    }
    checkSubOptions(Octets(data, data + size), std::min<std::size_t>(size, 255));
    return 0;
}
