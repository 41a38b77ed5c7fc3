#include "DhcpLib/Dhcp6Hdr/Overlays.h"

#include "DhcpLib/Walk.h"

namespace DhcpLib {

bool Dhcp6UserClassOption::hasItemAt(U32 at) const {
    return at + sizeof(U16) <= optionLen().value() &&
           bytes().has(position(Dhcp6Const::optdata_offset) + at, sizeof(U16));
}

U32 Dhcp6UserClassOption::behindItem(U32 at) const {
    const U32 dataAt = at + U32{sizeof(U16)};
    return dataAt +
           std::min<U32>(bytes().load<U16>(position(Dhcp6Const::optdata_offset) + at), optionLen().value() - dataAt);
}

/// Items that are read in ascending order are found from the furthest one on, without an allocation. In any other order
/// a search from the first item would make reading all of them quadratic.
void Dhcp6UserClassOption::rememberPlaces() const {
    for (U32 at = places_.empty() ? 0 : behindItem(places_.back()); places_.size() < knownIndex_; at = behindItem(at))
        places_.push_back(at);
}

Kcore::String Dhcp6UserClassOption::userClassData(U16 index) const {
    if (index < knownIndex_) rememberPlaces();
    const bool known = index < knownIndex_;
    U32 at = known ? places_[index] : knownAt_;
    for (U16 item = known ? index : knownIndex_; item != index && hasItemAt(at); ++item) at = behindItem(at);
    if (!hasItemAt(at)) return {};
    if (!known) {
        knownIndex_ = index;
        knownAt_ = at;
    }
    const U32 dataAt = at + U32{sizeof(U16)};
    return bytes().text(position(Dhcp6Const::optdata_offset) + dataAt, behindItem(at) - dataAt);
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
