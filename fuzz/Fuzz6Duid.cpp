// The DUID view. A setter for a field that the DUID type has writes that field, and a new view reads it back. Every
// other setter throws its text. Bytes after the packet do not change what is read.

#include "DhcpLib/Dhcp6Hdr/Duid.h"
#include "OptionsInput.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

namespace {

struct Duid {
    explicit Duid(const Dhcp6Duid& v)
        : type(v.duidType()),
          hardwareType(v.hardwareType()),
          time(v.duidTime()),
          mac(v.llAddr()),
          uuid(v.uuid()),
          entno(v.entno()),
          entId(v.entId()) {}
    bool operator==(const Duid&) const = default;

    U16 type, hardwareType;
    U32 time;
    Kitnet::EthAddr mac;
    Kcore::String uuid;
    U32 entno;
    Kcore::String entId;
};

struct Field {
    U32 at, n;
    std::string refusal;  ///< what the setter must throw if the field fits into the packet
    void (*set)(Dhcp6Duid&, U8 value, std::size_t n);
};

std::vector<Field> fieldsOf(U16 type, std::size_t optionLen, std::size_t textBytes) {
    const bool timed = type == 1, linked = timed || type == 3, uuid = type == 4, en = type == 2;
    const auto unless = [](bool allowed, const char* refusal) { return std::string(allowed ? "" : refusal); };
    const std::size_t entIdBytes = (optionLen + 65536 - 6) % 65536;
    const U32 text = static_cast<U32>(textBytes);
    return {{2, 2, unless(linked, "DuidHardwareType is set for a invalid duidType"),
             [](Dhcp6Duid& v, U8 value, std::size_t) { v.hardwareTypeIs(static_cast<U16>(value * 257)); }},
            {4, 4, unless(timed, "DuidTime is set for invalid duidType"),
             [](Dhcp6Duid& v, U8 value, std::size_t) { v.duidTimeIs(value * 0x01010101u); }},
            {timed ? 8u : 4u, 6, unless(linked, "DuidllAddr is set for invalid duidType"),
             [](Dhcp6Duid& v, U8 value, std::size_t) {
                 const Octets mac(6, value);
                 v.llAddrIs(Kitnet::EthAddr::fromBytes(mac.data()));
             }},
            {2, 4, unless(en, "Duidentno is set for a invalid duidType"),
             [](Dhcp6Duid& v, U8 value, std::size_t) { v.entnoIs(value * 0x01010101u); }},
            {2, text,
             !uuid ? "Duiduuid is set for a invalid duidType"
                   : unless(textBytes == 16, "Duiduuid is set for a invalid length"),
             [](Dhcp6Duid& v, U8 value, std::size_t n) { v.uuidIs(std::string(n, static_cast<char>(value))); }},
            {6, text,
             !en ? "DuidentId is set for a invalid duidType"
                 : unless(textBytes == entIdBytes, "entId's length is mismatch with the client-ID's optionLength"),
             [](Dhcp6Duid& v, U8 value, std::size_t n) { v.entIdIs(std::string(n, static_cast<char>(value))); }}};
}

void checkSetters(const Octets& bytes, U16 optionAt, U16 inside, U8 value) {
    const auto duidOf = [&](const PktPtr& pkt) { return dhcp6DuidFactory(dhcp6OptionFactory(pkt, optionAt), inside); };
    const auto probe = duidOf(packet(bytes));
    // Most inputs choose the length, so that one that fits occurs.
    for (const std::size_t textBytes :
         {std::size_t{16}, std::size_t{probe->opt()->len()} - 6, std::size_t{value} % 20}) {
        if (textBytes > 70000) continue;
        for (const Field& field : fieldsOf(probe->duidType(), probe->opt()->len(), textBytes)) {
            const PktPtr pkt = packet(bytes);
            const auto view = duidOf(pkt);
            const Duid cached(*view);
            const std::size_t at = optionAt + (inside + field.at) % 256;
            const bool fits = at + field.n <= bytes.size();
            const std::string refusal = !field.refusal.empty() ? field.refusal
                                        : fits                 ? ""
                                                               : "length value exceeds pkt-length.";
            expect(internalErrorOf([&] { field.set(*view, value, textBytes); }) == refusal);
            Octets expected = bytes;
            if (refusal.empty()) std::fill_n(expected.begin() + static_cast<std::ptrdiff_t>(at), field.n, value);
            expect(bytesOf(*pkt) == expected);
            expect(refusal.empty() || Duid(*view) == cached);
            // A field whose offset wraps may overlap the option's header or the DUID type; so may a DUID that starts in
            // the header.
            const bool apart = inside >= Dhcp6Const::optdata_offset && inside + field.at < 256;
            if (refusal.empty() && apart) expect(Duid(*duidOf(pkt)) == Duid(*view));
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    if (size < 4 || size > 60000) return 0;
    const U16 optionAt = data[0] % 8, inside = static_cast<U16>(data[1] + (data[2] & 1) * 256);
    const U8 value = data[3];
    const Octets bytes(data + 4, data + size);
    const auto duidOf = [&](const PktPtr& pkt) {
        return Duid(*dhcp6DuidFactory(dhcp6OptionFactory(pkt, optionAt), inside));
    };
    const Duid read = duidOf(packet(bytes));
    for (const PktPtr& pkt : packets(bytes)) {
        expect(duidOf(pkt) == read);
        expect(bytesOf(*pkt) == bytes);
    }
    checkSetters(bytes, optionAt, inside, value);
    return 0;
}
