#pragma once

#include <array>
#include <charconv>
#include <string>
#include <string_view>
#include <type_traits>

#include "Kcore/CharRange.h"
#include "Kcore/Exception.h"
#include "Kcore/String.h"

namespace Kcore {

/// One row of an EnumTable.
template <class E>
struct EnumMember {
    E value;                ///< the enumerator
    std::string_view name;  ///< its name
};

/// The names of an enumeration. Specialise it beside the enumeration with `static constexpr std::string_view name` and
/// `static constexpr EnumMember<E> members[]`.
template <class E>
struct EnumTable;

/// An enumeration with an EnumTable.
template <class E>
concept NamedEnum = std::is_enum_v<E> && requires {
    EnumTable<E>::members[0].name;
};

/// The member's name; empty if `e` is not a member.
template <NamedEnum E>
constexpr std::string_view enumName(E e) {
    for (const auto& member : EnumTable<E>::members)
        if (member.value == e) return member.name;
    return {};
}

/// The member's name; the decimal number if `e` is not a member.
template <NamedEnum E>
String stringValue(E e) {
    if (const std::string_view name = enumName(e); !name.empty()) return name;
    return std::to_string(static_cast<std::underlying_type_t<E>>(e));
}

/// Decodes the longest member name at the start of `range`: true and the range advanced past it, or false and nothing
/// changed. The name must not be followed by a letter, digit or underscore.
template <NamedEnum E>
bool sequenceToValue(CharRange& range, E* value) {
    CharRange ahead = range;
    const std::string_view word = ahead.takeWhile(
        [](char c) { return c == '_' || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); });
    for (const auto& member : EnumTable<E>::members) {
        if (member.name != word) continue;
        *value = member.value;
        range = ahead;
        return true;
    }
    return false;
}

namespace Detail {

[[noreturn]] DHCPPLATFORM_EXPORT void noSuchMember(std::string_view enumeration, unsigned number);
/// The message quotes `name`, which may come from a packet.
[[noreturn]] DHCPPLATFORM_EXPORT void noSuchMember(std::string_view enumeration, std::string_view name);

}  // namespace Detail

/// The member with this number. Throws RangeException if there is none.
template <NamedEnum E>
E enumInstance(unsigned number) {
    for (const auto& member : EnumTable<E>::members)
        if (static_cast<U64>(member.value) == number) return member.value;
    Detail::noSuchMember(EnumTable<E>::name, number);
}

/// The member with this name. Throws RangeException if there is none.
template <NamedEnum E>
E enumInstance(const String& name) {
    for (const auto& member : EnumTable<E>::members)
        if (member.name == name.view()) return member.value;
    Detail::noSuchMember(EnumTable<E>::name, name.view());
}

}  // namespace Kcore
