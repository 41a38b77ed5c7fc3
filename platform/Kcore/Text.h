#pragma once

#include <charconv>
#include <chrono>
#include <concepts>
#include <ostream>
#include <string>
#include <string_view>

#include "Kcore/Duration.h"
#include "Kcore/Enum.h"
#include "Kcore/Ptr.h"
#include "Kcore/String.h"

namespace Kcore {

/// A type that defines its own text form.
template <class T>
concept SelfPrinting = requires(const T& v, std::string& out) {
    v.appendText(out);
};

/// Collections are printed element by element.
template <class T>
concept PrintableRange = !SelfPrinting<T> && !std::convertible_to<const T&, std::string_view> && requires(const T& v) {
    v.begin() != v.end();
    v.size();
};

/// Appends the text form of `value`: numbers in decimal, flags as "true" and "false", byte strings unchanged, durations
/// in seconds, enumerations by name, null pointers as "null", collections in brackets. Trace lines, attribute tables
/// and stream output all use it.
template <class T>
void appendText(std::string& out, const T& value) {
    if constexpr (SelfPrinting<T>)
        value.appendText(out);
    else if constexpr (std::same_as<T, bool>)
        out.append(value ? "true" : "false");
    else if constexpr (std::same_as<T, char>)
        out.push_back(value);
    else if constexpr (std::is_integral_v<T>) {
        char digits[24];
        out.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    } else if constexpr (NamedEnum<T>)
        out.append(stringValue(value).view());
    else if constexpr (std::same_as<T, Duration>)
        appendText(out, value.count());
    else if constexpr (std::convertible_to<const T&, std::string_view>)
        out.append(std::string_view(value));
    else if constexpr (PrintableRange<T>) {
        out.push_back('[');
        std::string_view gap;
        for (const auto& element : value) {
            out.append(gap);
            appendText(out, element);
            gap = ", ";
        }
        out.push_back(']');
    } else if constexpr (requires { value.first, value.second; }) {
        appendText(out, value.first);
        out.push_back(':');
        appendText(out, value.second);
    } else if constexpr (requires { *value; }) {
        if (!value)
            out.append("null");
        else if constexpr (SelfPrinting<std::remove_cvref_t<decltype(*value)>>)
            appendText(out, *value);
        else
            out.append("present");
    } else
        static_assert(sizeof(T) == 0, "a type is printed by a member appendText(std::string&) const");
}

/// The text form of `value`; see appendText().
template <class T>
std::string textOf(const T& value) {
    std::string out;
    appendText(out, value);
    return out;
}

/// Writes the text form of `value`.
template <class T>
requires(SelfPrinting<T> && !std::same_as<T, String>) || NamedEnum<T> std::ostream& operator<<(std::ostream& out,
                                                                                               const T& value) {
    return out << textOf(value);
}

}  // namespace Kcore
