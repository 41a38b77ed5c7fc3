#pragma once

#include <algorithm>
#include <charconv>
#include <concepts>
#include <string>
#include <utility>
#include <vector>

#include "Kcore/CopyBytes.h"
#include "Kcore/TypeData.h"
#include "Kitnet/IpAddr.h"
#include "common/Printable.h"

namespace DhcpTool {

/// A number with a type of its own, such as a port. Addresses are numbers as well, but are printed as text.
template <class T>
concept NumberValue = !std::same_as<T, Kitnet::IpAddr> && requires(const T& v) {
    { v.value() } -> std::integral;
};

/// Appends a JSON object or array to a buffer of the caller, step by step. It keeps no tree and no copy, because that
/// would take most of the time of the output. The buffer is complete once the outermost bracket is closed: before that
/// it is longer than its text, so that a token need not change its size. Integers that a double cannot hold exactly,
/// those above 2 to the power of 53, become strings.
class JsonWriter {
public:
    explicit JsonWriter(std::string& out) : out_(out), end_(out.size()) {}

    /// `name` is printed as it is: ASCII without quotes, backslashes and control characters.
    JsonWriter& key(std::string_view name) {
        char* const next = grow(name.size() + 3);
        *next = '"';
        Kcore::copyBytes(next + 1, name.data(), name.size());
        next[name.size() + 1] = '"';
        next[name.size() + 2] = ':';
        separated_ = true;
        return *this;
    }
    void startObject() { open('{'); }
    void endObject() { close('}'); }
    void startArray() { open('['); }
    void endArray() { close(']'); }
    /// An object whose members `writeMembers()` writes.
    template <class Write>
    void object(Write writeMembers) {
        startObject();
        writeMembers();
        endObject();
    }
    /// An array with an object for each of `values`, whose members `writeMembers(value)` writes.
    template <class Values, class Write>
    void objects(Values&& values, Write writeMembers) {
        startArray();
        for (const auto& value : values) object([&] { writeMembers(value); });
        endArray();
    }
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
        Kcore::copyBytes(next + 1, text.data(), text.size());
        next[text.size() + 1] = '"';
    }
    /// A string whose text `append(std::string&)` writes: ASCII without quotes, backslashes and control characters.
    template <class Append>
    void built(Append append) {
        token_.clear();
        append(token_);
        plain(token_);
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
    /// Room for `bytes` bytes at the end of the text.
    char* room(std::size_t bytes) {
        constexpr std::size_t spare = 1024;
        if (out_.size() - end_ < bytes) out_.resize(end_ + bytes + spare);
        return out_.data() + end_;
    }
    /// Appends `bytes` bytes, with a comma in front unless it is the first key or value or a value after its key.
    char* grow(std::size_t bytes) {
        char* next = room(bytes + 1);
        if (!std::exchange(separated_, false)) {
            *next++ = ',';
            ++end_;
        }
        end_ += bytes;
        return next;
    }
    void literal(std::string_view text) { Kcore::copyBytes(grow(text.size()), text.data(), text.size()); }
    void open(char bracket) {
        *grow(1) = bracket;
        separated_ = true;
        ++depth_;
    }
    void close(char bracket) {
        *room(1) = bracket;
        ++end_;
        separated_ = false;
        if (--depth_ == 0) out_.resize(end_);
    }
    template <std::integral T>
    void number(T value);

    std::string& out_;
    std::string token_;      // a text that is being built
    std::size_t end_;        // of the text in `out_`
    unsigned depth_ = 0;     // open brackets
    bool separated_ = true;  // the next key or value needs no comma in front
};

template <std::integral T>
void JsonWriter::number(T value) {
    constexpr Kcore::U64 largest = Kcore::U64{1} << 53;
    if constexpr (std::same_as<T, bool>)
        literal(value ? "true" : "false");
    else {
        char digits[40];  // 20 are enough, but GCC 12 warns unless it is longer than what copyBytes() inlines
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
