#pragma once

#include <charconv>
#include <string>

#include "Kcore/CharRange.h"
#include "Kcore/Export.h"
#include "Kcore/TypeData.h"

namespace Kcore {

/// Appends `bytes` in quotes. What is not printable ASCII becomes a backslash, `x` and two hexadecimal digits.
DHCPPLATFORM_EXPORT void appendQuoted(std::string& out, std::string_view bytes);
/// Decodes what appendQuoted() writes: true and the range advanced past it, or false and nothing changed.
DHCPPLATFORM_EXPORT bool sequenceToValue(CharRange& range, String* value);
/// Decodes "true" or "false", as above.
DHCPPLATFORM_EXPORT bool sequenceToValue(CharRange& range, bool* value);

/// Decodes a decimal number, as above; false if it does not fit into `T`.
template <class T>
requires(std::is_integral_v<T> && !std::same_as<T, bool>) bool sequenceToValue(CharRange& range, T* value) {
    const std::string_view text = range.rest();
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *value);
    if (error != std::errc{}) return false;
    range.take(text.substr(0, static_cast<std::size_t>(end - text.data())));
    return true;
}

/// A type that parses its own text form with `static bool parse(std::string_view, T*)`. In an encoding the text ends at
/// a comma or brace.
template <class T>
requires requires(std::string_view text, T* value) {
    { T::parse(text, value) } -> std::same_as<bool>;
}
bool sequenceToValue(CharRange& range, T* value) {
    CharRange ahead = range;
    const std::string_view text = ahead.takeWhile([](char c) { return c != ',' && c != '}'; });
    if (!T::parse(text, value)) return false;
    range = ahead;
    return true;
}

/// Encodes a value type from its declaration: "Name{first=1,second="ab"}". Derived attributes are left out. All others
/// must be data members, so that the text can be decoded.
template <Declared T>
void appendEncoded(std::string& out, const T& value) {
    out.append(T::declaration().name).push_back('{');
    std::string_view gap;
    const auto append = [&]<class Access>(const Attribute<Access>& attribute) {
        if constexpr (!isDerived<Access>) {
            const auto& member = valueOf(attribute.access, value);
            using Member = std::remove_cvref_t<decltype(member)>;
            out.append(gap).append(attribute.name).push_back('=');
            if constexpr (std::same_as<Member, String>)
                appendQuoted(out, member);
            else if constexpr (Declared<Member>)
                appendEncoded(out, member);
            else
                appendText(out, member);
            gap = ",";
        }
    };
    T::declaration().attributes.apply([&](const auto&... attribute) { (append(attribute), ...); });
    out.push_back('}');
}

/// The encoding of `value`; see appendEncoded().
template <Declared T>
std::string encoded(const T& value) {
    std::string out;
    appendEncoded(out, value);
    return out;
}

/// Decodes the output of `appendEncoded`: true and the range advanced past it, or false and nothing changed.
template <Declared T>
requires std::is_copy_constructible_v<T>
bool sequenceToValue(CharRange& range, T* value) {
    CharRange ahead = range;
    T read = *value;
    bool good = ahead.take(T::declaration().name) && ahead.take("{");
    std::string_view gap;
    const auto readOne = [&]<class Access>(const Attribute<Access>& attribute) {
        if constexpr (!isDerived<Access>) {
            good = good && ahead.take(gap) && ahead.take(attribute.name) && ahead.take("=") &&
                   sequenceToValue(ahead, &(read.*attribute.access));
            gap = ",";
        }
    };
    T::declaration().attributes.apply([&](const auto&... attribute) { (readOne(attribute), ...); });
    if (!good || !ahead.take("}")) return false;
    *value = read;
    range = ahead;
    return true;
}

}  // namespace Kcore
