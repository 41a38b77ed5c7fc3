// The interface-id in the encoding that the toggle selects. Bytes after the packet do not change what is read, what
// was written is read back, and a refused write leaves the packet unchanged.

#include "DhcpLib/Dhcp6Hdr/InterfaceId.h"
#include "Kcore/Exception.h"
#include "OptionsInput.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

namespace {

#ifdef DHCPLIB_INTERFACE_ID_TEXT
[[maybe_unused]] const int toggleIsOff = setenv("DHCPLIB_TOGGLE_DIR", DHCPLIB_TEST_DATA "/toggles-off", 1);
constexpr bool elements = false;
#else
constexpr bool elements = true;
#endif

struct Fields {
    explicit Fields(const Dhcp6InterfaceId& v)
        : intfName(v.intfName()), vrfName(v.vrfName()), ip(v.srcVtepIp()), mac(v.srcVtepMac()) {}
    bool operator==(const Fields&) const = default;

    Kcore::String intfName;
    L3::VrfName vrfName;
    Kitnet::IpGenAddr ip;
    Kitnet::EthAddr mac;
};

/// Empty if the data holds a VRF name of more than 100 bytes.
std::optional<Fields> read(const PktPtr& pkt, U16 offset) {
    try {
        return Fields(*Dhcp6InterfaceId::Dhcp6InterfaceIdIs(dhcp6OptionFactory(pkt, offset)));
    } catch (const Kcore::RangeException&) {
        return std::nullopt;
    }
}

std::size_t sizeOf(const Fields& f) {
    if (!elements) return f.intfName.size() + 1 + f.vrfName.size();
    const std::size_t ip = !f.ip.isUsable() ? 0 : f.ip.isV4() ? 6 : 18;
    return 2 + f.intfName.size() + 2 + f.vrfName.size() + ip + (f.mac.isZero() ? 0 : 8);
}

/// The fields that are read back after a write. The text encoding has no addresses, and all-zero addresses are not
/// written.
Fields readable(Fields f) {
    if (!elements || !f.ip.isUsable()) f.ip = {};
    if (!elements) f.mac = {};
    return f;
}

Kcore::String textFrom(const Octets& seed, std::size_t n) {
    std::string text;
    while (text.size() < n) text.push_back(static_cast<char>(seed[text.size() % seed.size()]));
    return text;
}

void checkWrite(const Octets& seed, std::size_t room) {
    const Octets before = hex("A5 00 12 00 00") + Octets(room, scratch);
    const PktPtr pkt = packet(before);
    const auto opt = dhcp6OptionFactory(pkt, 1);
    const auto view = dhcp6InterfaceIdFactory(opt);
    view->intfNameIs(textFrom(seed, seed[0] * 2u));
    view->vrfNameIs(textFrom(seed, seed[1] % 101));
    if (seed[2] % 3 == 1) view->srcVtepIpIs(Kitnet::IpAddr(seed[3] * 0x01010101u));
    if (seed[2] % 3 == 2) {
        const Octets image(16, seed[3]);
        view->srcVtepIpIs(Kitnet::Ip6Addr::fromBytes(image.data()));
    }
    Kitnet::EthAddr mac;
    mac.byteIs(5, seed[4] % 2);
    view->srcVtepMacIs(mac);

    const Fields fields(*view);
    const std::string error = internalErrorOf([&] { view->setInterfaceIdDataInPkt(); });
    const bool unset = fields.intfName.empty() || fields.vrfName.empty();
    expect((error == "Intf Name or Vrf Name is not set") == unset);
    const auto announced = interfaceIdBytes({fields.intfName.view(), fields.vrfName.view(), fields.ip, fields.mac});
    expect(announced.has_value() == (!unset && sizeOf(fields) <= (elements ? 255u : 65535u)));
    expect(!announced || *announced == sizeOf(fields));
    expect(Fields(*view) == fields);
    if (!error.empty()) {
        expect(bytesOf(*pkt) == before);
        expect(unset || sizeOf(fields) > room || (elements && fields.intfName.size() > 255));
        return;
    }
    const std::size_t size = sizeOf(fields);
    const Octets after = bytesOf(*pkt);
    if (!elements) expect(size <= room);
    if (size > 255) return;  // offsets of the elements wrap at 256
    expect(size <= room);
    expect(std::equal(after.begin(), after.begin() + 5, before.begin()));
    expect(std::count(after.begin() + 5 + static_cast<std::ptrdiff_t>(size), after.end(), scratch) ==
           static_cast<std::ptrdiff_t>(room - size));
    opt->lenIs(static_cast<U16>(size));
    const bool ambiguous =
        !elements && (fields.intfName.find(':') != Kcore::String::npos || fields.vrfName.view().back() == ':');
    expect(ambiguous || read(pkt, 1) == readable(fields));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    if (size < 7 || size > 4000) return 0;
    const U16 offset = data[0] % 8;
    const Octets bytes(data + 1, data + size);
    const auto fields = read(packet(bytes), offset);
    for (const PktPtr& pkt : packets(bytes)) {
        expect(read(pkt, offset) == fields);
        expect(bytesOf(*pkt) == bytes);
    }
    checkWrite(bytes, bytes[5] * 3u);
    return 0;
}
