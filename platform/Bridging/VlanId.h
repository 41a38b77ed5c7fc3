#pragma once

#include <compare>

#include "Kcore/Encoding.h"
#include "Kcore/Exception.h"
#include "Kcore/Types.h"

namespace Bridging {

using Kcore::appendText;
using Kcore::operator<<;

/// A VLAN number with an upper bound. `Self` gives the bound (`maxValue`) and the message of the exception for larger
/// numbers (`refusal`). 0 by default.
template <class Self>
class VlanNumber {
public:
    constexpr VlanNumber() = default;
    /// Throws RangeException if `value` is above the bound.
    constexpr explicit VlanNumber(unsigned value) { valueIs(value); }

    /// The number.
    constexpr Kcore::U16 value() const { return value_; }
    constexpr void valueIs(unsigned value) {
        if (value > Self::maxValue) Kcore::throwException(Self::refusal);
        value_ = static_cast<Kcore::U16>(value);
    }

    std::size_t hash() const { return Kcore::hashOf(value_); }
    void appendText(std::string& out) const { Kcore::appendText(out, value_); }
    static bool parse(std::string_view text, Self* vlan) {
        Kcore::CharRange range(text);
        unsigned number = 0;
        if (!Kcore::sequenceToValue(range, &number) || !range.empty() || number > Self::maxValue) return false;
        vlan->valueIs(number);
        return true;
    }

    friend constexpr bool operator==(const Self& a, const Self& b) { return a.value_ == b.value_; }
    friend constexpr std::strong_ordering operator<=>(const Self& a, const Self& b) { return a.value_ <=> b.value_; }

private:
    Kcore::U16 value_ = 0;
};

/// A VLAN identifier: 0 to 4095, the 12 bits of the tag.
class VlanId : public VlanNumber<VlanId> {
public:
    static constexpr std::string_view typeName = "Bridging::VlanId";
    static constexpr unsigned maxValue = 4095;  ///< the largest number
    /// Message of the exception for a larger number.
    static constexpr std::string_view refusal = "Bridging::VlanId::value > 4095 not allowed";
    using VlanNumber::VlanNumber;
};

/// A VLAN identifier from 1 to 4094, or 0 for none. 4095 is reserved (IEEE 802.1Q).
class VlanIdOrNone : public VlanNumber<VlanIdOrNone> {
public:
    static constexpr std::string_view typeName = "Bridging::VlanIdOrNone";
    static constexpr unsigned maxValue = 4094;  ///< the largest number
    /// Message of the exception for a larger number.
    static constexpr std::string_view refusal = "Bridging::VlanIdOrNone::value > 4094 not allowed";
    using VlanNumber::VlanNumber;
    /// The same number; 0 for none.
    constexpr operator VlanId() const { return VlanId(value()); }
};

}  // namespace Bridging
