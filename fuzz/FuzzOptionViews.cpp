// Views and collections over DHCPv4 options. Bytes behind the packet do not change what they hold, and reading changes
// no byte. A setter writes its own bytes, or throws and writes nothing.

#include "OptionsInput.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

namespace {

/// Calls `see(view)` for every view that is reachable from the options at `offset`.
template <class See>
void forEachView(const PktPtr& pkt, U16 offset, See see) {
    const auto options = dhcpMsgOptionsFactory(pkt, offset);
    for (const auto& [code, option] : options->option()) {
        see(*option);
        const auto subOptions = dhcpInformationSubOptionsFactory(option);
        for (const auto& [subCode, subOption] : subOptions->option()) {
            see(*subOption);
            const auto block = dhcpVendorSpecificSubOptFactory(subOption)->quorvaSpecificOpt();
            if (!block) continue;
            expect(block->entno() == Constants::quorvaEntNum);
            for (const auto& [itemCode, item] : block->option()) see(*item);
        }
    }
}

std::string everything(const PktPtr& pkt, U16 offset) {
    std::string text;
    forEachView(pkt, offset, [&](auto& view) {
        for (const auto& attribute : view.typeData().attributes().subspan(1))
            attribute.appendText(text.append(attribute.name), static_cast<const Kcore::Node*>(&view));
    });
    return text;
}

/// Expects that `act` writes `expected` at `at` and nothing else; if that does not fit, that it throws and writes
/// nothing.
template <class Act>
void checkWrite(Kitnet::Pkt& pkt, U32 at, const Octets& expected, Act act) {
    Octets whole = bytesOf(pkt);
    const std::string error = internalErrorOf(act);
    const bool fits = at + expected.size() <= whole.size();
    expect(error == (fits ? "" : "length value exceeds pkt-length."));
    if (fits) overwrite(whole, at, expected);
    expect(bytesOf(pkt) == whole);
}

void checkSetters(const PktPtr& pkt, U16 offset, const Octets& values) {
    const auto options = dhcpMsgOptionsFactory(pkt, offset);
    std::size_t i = 0;
    for (const auto& [code, option] : options->option()) {
        DhcpMsgOption& view = *option;
        const U8 value = values[i++ % values.size()];
        checkWrite(*pkt, view.offset(), {value}, [&] { view.optIs(value); });
        Octets expected = bytesOf(*pkt);
        const U8 len = view.len();
        const bool fits = view.offset() + 2u + value <= pkt->bytes();
        expect(internalErrorOf([&] { view.lenIs(value); }).empty() == fits);
        expect(view.len() == (fits ? value : len));
        if (fits) expected[view.offset() + 1u] = value;
        expect(bytesOf(*pkt) == expected);
        const Octets data(view.len(), value);
        checkWrite(*pkt, view.offset() + 2u, data, [&] { view.dataIs(data.data()); });
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    if (size < 2) return 0;
    const auto offset = static_cast<U16>(data[0] % 64);
    const Octets bytes(data + 1, data + size);
    const std::string views = everything(packet(bytes), offset);
    for (const PktPtr& pkt : packets(bytes)) {
        expect(Model::placesIn(*dhcpMsgOptionsFactory(pkt, offset)) == Model::optionsOf(bytes, offset));
        expect(everything(pkt, offset) == views);
        expect(magicCookieFactory(pkt, offset)->isDhcpMagicCookie() == (Model::number(bytes, offset) == 0x63825363));
        const std::string failed = assertionOf([&] { dhcpHdrWrapperFactory(pkt, offset)->xid(); });
        expect(failed.empty() == (bytes.size() >= offset + std::size_t{34}));
        expect(bytesOf(*pkt) == bytes);
        checkSetters(pkt, offset, bytes);
    }
    return 0;
}
