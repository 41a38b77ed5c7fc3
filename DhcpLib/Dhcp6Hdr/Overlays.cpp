#include "DhcpLib/Dhcp6Hdr/Overlays.h"

#include "DhcpLib/Walk.h"

namespace DhcpLib {

Kcore::String Dhcp6UserClassOption::userClassData(U16 index) const {
    const Wire::ByteView packet = bytes();
    const U32 first = position(Dhcp6Const::optdata_offset), total = optionLen().value();
    U16 item = index < knownIndex_ ? U16{0} : knownIndex_;
    for (U32 at = item == 0 ? 0 : knownAt_; at + sizeof(U16) <= total && packet.has(first + at, sizeof(U16)); ++item) {
        const U32 dataAt = at + U32{sizeof(U16)};
        const U32 len = std::min<U32>(packet.load<U16>(first + at), total - dataAt);
        if (item == index) {
            knownIndex_ = index;
            knownAt_ = at;
            return packet.text(first + dataAt, len);
        }
        at = dataAt + len;
    }
    return {};
}

namespace {

/// Size of the vendor options. Wraps for an option of less than 4 bytes (docs/compatibility.md#short-vendor-option).
U16 vendorBytes(const Dhcp6OptionNrc& option) {
    return static_cast<U16>(option.optionLen().value() - Dhcp6Const::entno_size);
}

constexpr U32 nowhere = 0xffffffff;
constexpr U32 askedOnce = nowhere - 1;  // value of `searchedTo_` after the first look-up, which remembers nothing

}  // namespace

U32 Dhcp6VendorSpecificInformationOption::placeOf(U16 code) const {
    if (const U32* const known = places_.find(code)) return *known;
    const U32 total = vendorBytes(*this);
    const U32 first = position(Dhcp6Const::entno_offset + Dhcp6Const::entno_size);
    // A single look-up allocates nothing: places are remembered from the second one on.
    const bool remembers = searchedTo_ != 0;
    const U32 start = searchedTo_ == askedOnce ? 0 : searchedTo_;
    if (!remembers) searchedTo_ = askedOnce;
    U32 found = nowhere;
    const auto inside = [&](U32 cursor) { return cursor + Option6Shape::headerBytes <= total; };
    walkItems<Option6Shape, U32>(bytes(), first, start, inside, [&](const auto& head, U32 next) {
        if (remembers) {
            places_.insert(head.code, head.at - first);
            searchedTo_ = next;
        }
        if (head.code == code) found = head.at - first;
        return found == nowhere;
    });
    return found;
}

Kcore::String Dhcp6VendorSpecificInformationOption::vendorOptionData(U16 code) const {
    const U32 place = placeOf(code);
    if (place == nowhere) return {};
    const U32 total = vendorBytes(*this), dataAt = place + Option6Shape::headerBytes;
    const U32 first = position(Dhcp6Const::entno_offset + Dhcp6Const::entno_size);
    const U16 len = bytes().load<U16>(first + place + Dhcp6Const::optlen_offset);
    return bytes().text(first + dataAt, std::min<U32>(len, total - std::min(total, dataAt)));
}

}  // namespace DhcpLib
