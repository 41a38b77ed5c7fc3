#include "DhcpLib/Dhcp6Hdr/Overlays.h"

#include "DhcpLib/Walk.h"

namespace DhcpLib {

Kcore::String Dhcp6UserClassOption::userClassData(U16 index) const {
    const Wire::ByteView packet = bytes();
    U32 at = position(Dhcp6Const::optdata_offset);
    for (U16 left = optionLen().value(); left >= sizeof(U16) && packet.has(at, sizeof(U16)); --index) {
        const U16 len = std::min(packet.load<U16>(at), static_cast<U16>(left - sizeof(U16)));
        at += U32{sizeof(U16)};
        if (index == 0) return packet.text(at, len);
        at += len;
        left = static_cast<U16>(left - sizeof(U16) - len);
    }
    return {};
}

Kcore::String Dhcp6VendorSpecificInformationOption::vendorOptionData(U16 code) const {
    const Wire::ByteView packet = bytes();
    const U32 first = position(Dhcp6Const::entno_offset + Dhcp6Const::entno_size);
    // Wraps for a length below 4 (docs/compatibility.md#short-vendor-option).
    const U16 total = static_cast<U16>(optionLen().value() - Dhcp6Const::entno_size);
    std::string_view data;
    const auto inside = [&](U32 cursor) { return cursor + Option6Shape::headerBytes <= total; };
    walkItems<Option6Shape, U32>(packet, first, 0, inside, [&](const auto& head, U32) {
        if (head.code != code) return true;
        data = packet.text(head.dataAt(), std::min<U32>(head.len, first + total - head.dataAt()));
        return false;
    });
    return data;
}

}  // namespace DhcpLib
