// Views and collections over DHCPv4 options. Bytes after the packet do not change what they hold, and reading changes
// no byte. A setter writes its own bytes, or throws and writes nothing.

#include "HeaderFields.h"
#include "OptionsInput.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

namespace {

template <class View>
bool isSame(const View& a, const View& b) {
    return a.offset() == b.offset() && a.opt() == b.opt() && a.len() == b.len() && a.dataText() == b.dataText();
}

/// Calls `see(view)` for every view that is reachable from the options at `offset`.
template <class See>
void forEachView(const PktPtr& pkt, U16 offset, See see) {
    const auto options = DhcpMsgOptions::DhcpMsgOptionsIs(pkt, offset);
    for (const auto& [code, option] : options->option()) {
        expect(isSame(*option, *DhcpMsgOption::DhcpMsgOptionIs(pkt, option->offset())));
        see(*option);
        const auto subOptions = DhcpInformationSubOptions::DhcpInformationSubOptionsIs(option);
        for (const auto& [subCode, subOption] : subOptions->option()) {
            expect(isSame(*subOption, *DhcpInformationSubOption::DhcpInformationSubOptionIs(pkt, subOption->offset())));
            see(*subOption);
            const auto block = DhcpVendorSpecificSubOpt::DhcpVendorSpecificSubOptIs(subOption)->quorvaSpecificOpt();
            if (!block) continue;
            expect(block->entno() == Constants::quorvaEntNum);
            for (const auto& [itemCode, item] : block->option()) {
                using Item = QuorvaSpecificSubOptionSubOpt;
                expect(isSame(*item, *Item::QuorvaSpecificSubOptionSubOptIs(pkt, item->offset())));
                see(*item);
            }
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
        const Octets head{1, 2, 3, 4, value};
        checkWrite(*pkt, view.offset(), head,
                   [&] { DhcpVendorSpecificData::DhcpVendorSpecificDataIs(pkt, view.offset(), 0x01020304, value); });
        const Octets data(view.len(), value);
        checkWrite(*pkt, view.offset() + 2u, data, [&] { view.dataIs(data.data()); });
    }
}

/// Writes each field of the header, and expects the 34 bytes in their places.
void checkHeader(const PktPtr& pkt, U16 offset) {
    Octets expected = bytesOf(*pkt);
    if (expected.size() < offset + sizeof(DhcpHdr)) return;
    const Octets image(expected.rbegin(), expected.rbegin() + sizeof(DhcpHdr));
    const DhcpHdr wanted = DhcpHdr::fromBytes(image.data());
    DhcpHdrWrapper view(pkt, offset);
    writeFields(view, wanted);
    overwrite(expected, offset, image);
    expect(bytesOf(*pkt) == expected && *view.header() == wanted && view.header()->hash() == wanted.hash());
    expect(Octets(wanted.bytes(), wanted.bytes() + sizeof wanted) == image);
    expect((wanted.bootpOp() == BootpOpType::bootpOpUnknown) == (image[0] != 1 && image[0] != 2));

    const Flags flags(wanted.flags());
    Flags again;
    again.broadcastIs(flags.broadcast());
    again.mbzIs(flags.mbz());
    expect(again == flags && again.hash() == flags.hash() && static_cast<bool>(flags) == (wanted.flagsU16() != 0));
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
        expect(MagicCookie::MagicCookieIs(pkt, offset)->isDhcpMagicCookie() ==
               (Model::number(bytes, offset) == 0x63825363));
        const std::string failed = assertionOf([&] { DhcpHdrWrapper::DhcpHdrWrapperIs(pkt, offset)->xid(); });
        expect(failed.empty() == (bytes.size() >= offset + std::size_t{34}));
        expect(bytesOf(*pkt) == bytes);
        checkSetters(pkt, offset, bytes);
        checkHeader(pkt, offset);
    }
    return 0;
}
