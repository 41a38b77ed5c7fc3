// The DHCPv6 options area. The collections hold what a model of the walk finds, the extractors stay inside the option
// and the packet, nested options and relay chains lie inside each other, and nothing is written.

#include <map>

#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/OptionParser.h"
#include "OptionsInput.h"

using namespace DhcpLib;
using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

namespace {

struct Place {
    U32 at, len;
    bool operator==(const Place&) const = default;
};
using Places = std::map<U32, Place>;

U32 numberAt(const Octets& bytes, U32 at) {
    const auto byte = [&](U32 i) { return i < bytes.size() ? U32{bytes[i]} : 0u; };
    return byte(at) << 8 | byte(at + 1);
}

/// The walk in 64-bit arithmetic, for packets in which positions do not wrap.
Places model(const Octets& bytes, U32 offset, bool cableLabs) {
    Places places;
    for (U32 cursor = 0; offset + cursor + 2 <= bytes.size();) {
        const U32 at = offset + cursor, code = numberAt(bytes, at), len = numberAt(bytes, at + 2);
        const U32 next = (cursor + len + 4) % 65536;
        if (cableLabs)
            places.insert_or_assign(code, Place{at, len});
        else if (code == 0 || next > bytes.size())
            break;
        else
            places.insert({code, Place{at, len}});
        if (next <= cursor) break;
        cursor = next;
    }
    return places;
}

template <class Collection>
Places placesOf(const Collection& collection) {
    Places places;
    for (const auto& [type, view] : collection.option()) places[view->opt()] = {view->offset(), view->len()};
    return places;
}

/// Results of the extractors for some indexes, and for codes that occur in the packet.
std::string extracts(const Dhcp6Options& options, const Octets& bytes) {
    std::string all;
    const std::string_view packet(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const auto note = [&](const Kcore::String& data, U16 len) {
        expect(data.size() <= len && packet.find(data.view()) != packet.npos);
        all.append(data.view()).push_back('|');
    };
    if (const auto userClass = options.userClassOption())
        for (U16 index = 0; index < 8; ++index) note(userClass->userClassData(index), userClass->optionLen().value());
    if (const auto vendor = options.vendorSpecificInformationOption()) {
        const U16 len = vendor->optionLen().value();
        for (U32 at = 0; at < bytes.size(); at += static_cast<U32>(bytes.size() / 64 + 1))
            note(vendor->vendorOptionData(static_cast<U16>(numberAt(bytes, at))), len < 4 ? U16{0xffff} : len);
    }
    return all;
}

void checkInside(const std::vector<Dhcp6Option::Ptr>& options, U32 first, U32 end) {
    for (const auto& option : options) {
        expect(option->offset() >= first && option->opt() != 0);
        first = option->offset() + 4u + option->len();
    }
    expect(options.empty() || first <= end);
}

void checkChain(const PktPtr& pkt, U16 offset) {
    const auto chain = dhcp6RelayChain(pkt, {offset, pkt->bytes()});
    expect(chain.size() <= Constants::dhcp6HopCountLimit + 1u);
    for (std::size_t i = 0; i < chain.size(); ++i) {
        const Dhcp6MessagePlace& outer = i == 0 ? chain[0] : chain[i - 1];
        const U8 type = Dhcp6HdrBase(pkt, outer.offset).msg();
        expect(i == 0 || ((type == 12 || type == 13) && chain[i].offset >= outer.offset + 38));
        expect(chain[i].end <= outer.end && chain[i].end >= chain[i].offset + 4u);
        checkInside(dhcp6MessageOptions(pkt, chain[i]), chain[i].offset + 4u, chain[i].end);
    }
    if (!dhcp6OptionBasicCheck(pkt, offset)) return;
    const auto options = dhcp6MessageOptions(pkt, {offset, pkt->bytes()});
    expect(!chain.empty());
    expect(options.empty() || options.back()->offset() + 4u + options.back()->len() == pkt->bytes());
    for (const auto& option : options) {
        const U32 end = option->offset() + 4u + option->len();
        checkInside(dhcp6NestedOptions(*dhcp6IanaFactory(option)), option->offset() + 16u, end);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    if (size < 1 || size > 60000) return 0;
    const U16 offset = data[0] % 64;
    const Octets bytes(data + 1, data + size);
    const Places options = model(bytes, offset, false), subOptions = model(bytes, offset, true);
    std::string extracted;
    for (const PktPtr& pkt : packets(bytes)) {
        const Dhcp6Options collection(pkt, offset);
        expect(placesOf(collection) == options);
        expect(placesOf(CableLabsSubOptions(pkt, offset)) == subOptions);
        const std::string here = extracts(collection, bytes);
        if (extracted.empty()) extracted = here;
        expect(here == extracted);
        checkChain(pkt, offset);
        expect(bytesOf(*pkt) == bytes);
    }
    return 0;
}
