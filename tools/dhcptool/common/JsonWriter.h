#pragma once

#include <algorithm>
#include <charconv>
#include <concepts>
#include <string>
#include <utility>
#include <vector>

#include "Kcore/TypeData.h"
#include "Kitnet/IpAddr.h"
#include "common/Printable.h"

namespace DhcpTool {

/// A number with a type of its own, such as a port. Addresses are numbers as well, but are printed as text.
template <class T>
concept NumberValue = !std::same_as<T, Kitnet::IpAddr> && requires(const T& v) {
    { v.value() } -> std::integral;
};

/// Appends a JSON text to a buffer of the caller, step by step. It keeps no tree and no copy, because that would take
/// most of the time of the output. Integers that a double cannot hold exactly, those above 2 to the power of 53, become
/// strings.
class JsonWriter {
public:
    explicit JsonWriter(std::string& out) : out_(out) {}

    /// `name` is printed as it is: ASCII without quotes, backslashes and control characters.
    JsonWriter& key(std::string_view name) {
        char* const next = grow(name.size() + 3);
        *next = '"';
        *std::copy(name.begin(), name.end(), next + 1) = '"';
        next[name.size() + 2] = ':';
        separated_ = true;
        return *this;
    }
    void startObject() { open('{'); }
    void endObject() { close('}'); }
    void startArray() { open('['); }
    void endArray() { close(']'); }
    void null() { literal("null"); }
    /// Requires: valid UTF-8.
    void string(std::string_view text);
    void hex(std::string_view bytes) {
        char* const next = grow(2 * bytes.size() + 2);
        *next = '"';
        *writeHex(next + 1, bytes) = '"';
    }
    /// ASCII without quotes, backslashes and control characters.
    void plain(std::string_view text) {
        char* const next = grow(text.size() + 2);
        *next = '"';
        *std::copy(text.begin(), text.end(), next + 1) = '"';
    }
    /// A string whose text `append(std::string&)` writes: ASCII without quotes, backslashes and control characters.
    template <class Append>
    void built(Append append) {
        *grow(1) = '"';
        append(out_);
        out_.push_back('"');
    }

    /// Flags, numbers and seconds become JSON values, texts strings, byte strings hex, enumerations their names,
    /// addresses their text form, declared objects JSON objects, null pointers null, maps JSON objects, sets lists in
    /// ascending order.
    template <class T>
    void value(const T& value);
    template <class T>
    void member(std::string_view name, const T& memberValue) {
        key(name);
        value(memberValue);
    }

private:
    /// Appends room for `bytes` bytes, behind a comma unless the key or value is the first one or follows its key. One
    /// growth for all parts of a token: this is where most of the time goes.
    char* grow(std::size_t bytes) {
        const std::size_t at = out_.size();
        out_.resize(at + bytes + (separated_ ? 0 : 1));
        char* const next = out_.data() + at;
        if (std::exchange(separated_, false)) return next;
        *next = ',';
        return next + 1;
    }
    void literal(std::string_view text) { std::copy(text.begin(), text.end(), grow(text.size())); }
    void open(char bracket) {
        *grow(1) = bracket;
        separated_ = true;
    }
    void close(char bracket) {
        out_.push_back(bracket);
        separated_ = false;
    }
    template <std::integral T>
    void number(T value);

    std::string& out_;
    bool separated_ = true;  // the next key or value needs no comma in front
};

template <std::integral T>
void JsonWriter::number(T value) {
    constexpr Kcore::U64 largest = Kcore::U64{1} << 53;
    if constexpr (std::same_as<T, bool>)
        literal(value ? "true" : "false");
    else {
        char digits[24];
        const std::string_view text(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
        if constexpr (sizeof(T) == sizeof(largest))
            if (value > T{largest}) return plain(text);
        literal(text);
    }
}

template <class T>
void JsonWriter::value(const T& value) {
    if constexpr (std::integral<T>)
        number(value);
    else if constexpr (std::same_as<T, std::string_view>)
        string(value);
    else if constexpr (std::same_as<T, Kcore::Duration>)
        number(value.count());
    else if constexpr (std::same_as<T, Kcore::String>)
        hex(value);
    else if constexpr (NumberValue<T>)
        number(value.value());
    else if constexpr (Kcore::Declared<T>) {
        startObject();
        Kcore::forEachAttribute(value, [&](std::string_view name, const auto& a) { member(name, a); });
        endObject();
    } else if constexpr (requires { value.get(); }) {
        if (value)
            this->value(*value);
        else
            null();
    } else if constexpr (requires { typename T::value_type::first_type; }) {
        startObject();
        for (const auto& [name, mapped] : value) member(Kcore::textOf(name), mapped);
        endObject();
    } else if constexpr (Kcore::PrintableRange<T>) {
        std::vector<typename T::value_type> elements(value.begin(), value.end());
        std::sort(elements.begin(), elements.end());
        startArray();
        for (const auto& element : elements) this->value(element);
        endArray();
    } else
        built([&](std::string& out) { Kcore::appendText(out, value); });
}

}  // namespace DhcpTool
