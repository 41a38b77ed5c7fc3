// The views over a DHCPv6 option. Bytes after the packet do not change what is read, and reading changes no byte. A
// setter writes its own bytes, which a new view reads back, or throws and writes nothing.

#include <functional>

#include "DhcpLib/Dhcp6Hdr.h"
#include "Kcore/Exception.h"
#include "OptionsInput.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

namespace {

constexpr char noRoom[] = "length value exceeds pkt-length.";

std::string textOf(const Kcore::Node& view) {
    std::string text;
    for (const auto& attribute : view.typeData().attributes())
        attribute.appendText(text.append(attribute.name).append("="), &view);
    return text;
}

/// Values for the setters.
struct Values {
    U8 u8;
    U16 u16;
    U32 u32;
    U64 u64;
    Kitnet::Ip6Addr ip6;
    Kitnet::EthAddr mac;
    Kcore::String text;
};
Values valuesFrom(const U8* seed) {
    Values values;
    values.u8 = seed[0];
    values.u16 = static_cast<U16>(seed[0] << 8 | seed[1]);
    values.u32 = static_cast<U32>(values.u16 << 16 | values.u16);
    values.u64 = U64{values.u32} << 32 | values.u32;
    for (std::size_t i = 0; i < 16; ++i) values.ip6.byteIs(i, static_cast<U8>(seed[0] + i * seed[1]));
    for (std::size_t i = 0; i < 6; ++i) values.mac.byteIs(i, static_cast<U8>(seed[1] + i * seed[0]));
    values.text = std::string(seed[0] % 100, static_cast<char>(seed[1]));
    return values;
}

/// A setter and the bytes that it writes: `n` bytes from option offset `at`.
struct Setter {
    U32 at, n;
    std::function<void(Kcore::Node&, const Values&)> set;
};
template <class View, class Value>
Setter field(U32 at, void (View::*setter)(Value), std::remove_cvref_t<Value> Values::*value) {
    return {at, static_cast<U32>(sizeof(Value)),
            [=](Kcore::Node& view, const Values& values) { (static_cast<View&>(view).*setter)(values.*value); }};
}

struct Kind {
    std::function<Kcore::Ptr<Kcore::Node>(const Dhcp6OptionPtr&)> make;
    std::vector<Setter> setters;
};
using Opt = const Dhcp6OptionPtr&;

const std::vector<Kind>& kinds() {
    using V = Values;
    static const std::vector<Kind> all{
        {[](Opt o) { return Dhcp6Iana::Dhcp6IanaIs(o); }, {field<Dhcp6Ia>(4, &Dhcp6Ia::iaidIs, &V::u32)}},
        {[](Opt o) { return Dhcp6Iapd::Dhcp6IapdIs(o); }, {field<Dhcp6Ia>(4, &Dhcp6Ia::iaidIs, &V::u32)}},
        {[](Opt o) { return Dhcp6IaAddr::Dhcp6IaAddrIs(o); },
         {field(4, &Dhcp6IaAddr::pfxAddrIs, &V::ip6), field(24, &Dhcp6IaAddr::validLifetimeIs, &V::u32)}},
        {[](Opt o) { return Dhcp6IaPfx::Dhcp6IaPfxIs(o); },
         {field(8, &Dhcp6IaPfx::validLifetimeIs, &V::u32), field(12, &Dhcp6IaPfx::pfxLenIs, &V::u8),
          field(13, &Dhcp6IaPfx::pfxAddrIs, &V::ip6)}},
        {[](Opt o) { return Dhcp6RemoteId::Dhcp6RemoteIdIs(o); },
         {field<Dhcp6RemoteIdBase>(4, &Dhcp6RemoteId::entnoIs, &V::u32),
          field(18, &Dhcp6RemoteId::interfaceIdIs, &V::u64)}},
        {[](Opt o) { return Dhcp6RemoteIdIntfName::Dhcp6RemoteIdIntfNameIs(o); },
         {field<Dhcp6RemoteIdBase>(4, &Dhcp6RemoteIdIntfName::entnoIs, &V::u32)}},
        {[](Opt o) { return Dhcp6RemoteIdHostAndIntfName::Dhcp6RemoteIdHostAndIntfNameIs(o, 9); },
         {field<Dhcp6RemoteIdBase>(4, &Dhcp6RemoteIdHostAndIntfName::entnoIs, &V::u32)}},
        {[](Opt o) { return Dhcp6VirtualSubnetSelection::Dhcp6VirtualSubnetSelectionIs(o); },
         {field(4, &Dhcp6VirtualSubnetSelection::vssTypeIs, &V::u8)}},
        {[](Opt o) { return DhcpLinkLayerAddr::DhcpLinkLayerAddrIs(o); },
         {field(4, &DhcpLinkLayerAddr::llAddrTypeIs, &V::u16), field(6, &DhcpLinkLayerAddr::llAddrIs, &V::mac)}},
        {[](Opt o) { return Dhcp6VSI::Dhcp6VSIIs(o); }, {field(4, &Dhcp6VSI::entnoIs, &V::u32)}}};
    return all;
}

/// Null if the option holds a VRF name of more than 100 bytes.
Kcore::Ptr<Kcore::Node> make(const Kind& kind, const PktPtr& pkt, U16 offset) {
    try {
        return kind.make(dhcp6OptionFactory(pkt, offset));
    } catch (const Kcore::RangeException&) {
        expect(pkt->bytes() > offset + 105u);
        return {};
    }
}

void checkSetter(const Kind& kind, const Setter& setter, const Octets& bytes, U16 offset, const Values& values) {
    const PktPtr pkt = packet(bytes);
    const auto view = make(kind, pkt, offset);
    if (!view) return;
    const std::string cached = textOf(*view);
    const bool fits = offset + setter.at + setter.n <= bytes.size();
    expect(internalErrorOf([&] { setter.set(*view, values); }) == (fits ? "" : noRoom));
    Octets after = bytesOf(*pkt);
    expect(fits || (after == bytes && textOf(*view) == cached));
    if (!fits) return;
    const auto own = after.begin() + offset + setter.at;
    std::copy_n(bytes.begin() + offset + setter.at, setter.n, own);
    expect(after == bytes);
    if (const auto again = make(kind, pkt, offset)) expect(textOf(*again) == textOf(*view));
}

/// Checks a setter of a text: it writes the whole text or nothing.
template <class View, class Set>
void checkText(const Kcore::Ptr<View>& view, const PktPtr& pkt, const Octets& bytes, U32 at, const Octets& written,
               Set set) {
    const bool fits = at + written.size() <= bytes.size();
    expect(internalErrorOf([&] { set(*view); }) == (fits ? "" : noRoom));
    Octets expected = bytes;
    if (fits) overwrite(expected, at, written);
    expect(bytesOf(*pkt) == expected);
}

void checkTexts(const Octets& bytes, U16 offset, const Kcore::String& text) {
    const Octets image(text.begin(), text.end());
    const auto fresh = [&](auto factory, U32 at, const Octets& written, auto set) {
        const PktPtr pkt = packet(bytes);
        checkText(factory(dhcp6OptionFactory(pkt, offset)), pkt, bytes, offset + at, written, set);
    };
    Octets subOption = image;
    subOption.insert(subOption.begin(), {1, static_cast<U8>(text.size())});
    fresh(dhcp6RemoteIdFactory, 26, subOption, [&](auto& v) { v.subOptValueIs(text); });
    fresh(dhcp6RemoteIdIntfNameFactory, 18, image, [&](auto& v) { v.interfaceNameIs(text); });
    Octets padded = image;
    padded.resize(9);
    const auto named = [](Opt o) { return Dhcp6RemoteIdHostAndIntfName::Dhcp6RemoteIdHostAndIntfNameIs(o, 9); };
    fresh(named, 18, padded, [&](auto& v) { v.hostAndIntfNameIs(text); });
    const auto vss = [](Opt o) { return dhcp6VirtualSubnetSelectionFactory(o); };
    if (!text.empty() && make({vss, {}}, packet(bytes), offset))
        fresh(vss, Dhcp6Const::vrfName_offset, image, [&](auto& v) { v.vrfNameIs(text); });
}

/// A sub-option is the same alone and in its collection. An address goes into it at the low byte of the position.
void checkCableLabs(const Octets& bytes, U16 offset, const Values& values) {
    const PktPtr pkt = packet(bytes);
    const auto all = CableLabsSubOptions::CableLabsSubOptionsIs(pkt, offset);
    expect(all->pkt() == pkt && all->offset() == offset && all->typeData().name() == "CableLabsSubOptions");
    if (all->option().empty()) return;
    const auto first = (*all->option().begin()).second;
    const auto view = CableLabsSubOption::CableLabsSubOptionIs(pkt, first->offset());
    const Kcore::Node &alone = *view, &inside = *first;
    expect(textOf(alone) == textOf(inside));
    const Octets image(values.ip6.bytes(), values.ip6.bytes() + sizeof values.ip6);
    checkText(view, pkt, bytes, U32{view->offset()} + values.u16 % 256, image,
              [&](auto& v) { v.ip6AddrIs(values.ip6, values.u16); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    if (size < 3 || size > 4000) return 0;
    const U16 offset = data[0] % 16;
    const Values values = valuesFrom(data + 1);
    const Octets bytes(data + 3, data + size);
    for (const Kind& kind : kinds()) {
        std::string read;
        for (const PktPtr& pkt : packets(bytes)) {
            const auto view = make(kind, pkt, offset);
            const std::string here = view ? textOf(*view) : "raised";
            if (read.empty()) read = here;
            expect(here == read);
            expect(bytesOf(*pkt) == bytes);
        }
        for (const Setter& setter : kind.setters) checkSetter(kind, setter, bytes, offset, values);
    }
    checkTexts(bytes, offset, values.text);
    checkCableLabs(bytes, offset, values);
    return 0;
}
