#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

#include "Kcore/Exception.h"
#include "Kcore/String.h"

namespace Tyk {

using String = Kcore::String;  ///< a byte string without a bound

/// A byte string of at most `N` bytes. It is read like a `String` and converts to one. Construction from more bytes
/// throws Kcore::RangeException "Tyk::String::bytes > maxLength() not allowed". So does assignment, which then changes
/// nothing.
template <std::size_t N>
class BoundedString {
public:
    /// The largest number of bytes.
    static constexpr std::size_t maxLength() { return N; }

    BoundedString() = default;
    /// A copy of `bytes`. Throws Kcore::RangeException if they are too many.
    template <class Bytes>
    requires std::convertible_to<const Bytes&, std::string_view> BoundedString(const Bytes& bytes)
        : bytes_(checked(bytes)) {}

    std::size_t size() const { return bytes_.size(); }
    bool empty() const { return bytes_.empty(); }
    const char* data() const { return bytes_.data(); }
    const char* begin() const { return bytes_.begin(); }
    const char* end() const { return bytes_.end(); }
    /// All bytes. Valid as long as the string.
    operator std::string_view() const { return bytes_; }
    /// All bytes. Valid as long as the string.
    std::string_view view() const { return bytes_; }
    /// The same bytes as an unbounded string.
    const String& string() const { return bytes_; }

    /// Requires: `i` < size().
    char operator[](std::size_t i) const { return bytes_[i]; }
    /// Throws Kcore::RangeException if `i` is not below size().
    char at(std::size_t i) const { return bytes_.at(i); }
    /// Position of the first `what` at or after `from`; String::npos if there is none.
    template <class What>
    std::size_t find(const What& what, std::size_t from = 0) const {
        return bytes_.find(what, from);
    }
    /// As String::substr.
    String substr(std::size_t pos, std::size_t count = String::npos) const { return bytes_.substr(pos, count); }
    /// As String::substrOrEmpty.
    String substrOrEmpty(std::size_t pos, std::size_t count = String::npos) const {
        return bytes_.substrOrEmpty(pos, count);
    }

    std::size_t hash() const { return bytes_.hash(); }
    void appendText(std::string& out) const { bytes_.appendText(out); }

    friend bool operator==(const BoundedString& a, const BoundedString& b) { return a.bytes_ == b.bytes_; }
    /// Compares the bytes.
    template <class Bytes>
    requires std::convertible_to<const Bytes&, std::string_view>
    friend bool operator==(const BoundedString& a, const Bytes& b) { return a.view() == std::string_view(b); }
    friend std::strong_ordering operator<=>(const BoundedString& a, const BoundedString& b) {
        return a.bytes_ <=> b.bytes_;
    }

private:
    template <class Bytes>
    static const Bytes& checked(const Bytes& bytes) {
        if (std::string_view(bytes).size() > N) Kcore::throwException("Tyk::String::bytes > maxLength() not allowed");
        return bytes;
    }

    String bytes_;
};

namespace Detail {

template <class T>
inline constexpr bool isBoundedString = false;
template <std::size_t N>
inline constexpr bool isBoundedString<BoundedString<N>> = true;

}  // namespace Detail

/// The bytes of both; the result is not bounded.
template <std::convertible_to<std::string_view> A, std::convertible_to<std::string_view> B>
requires(Detail::isBoundedString<A> || Detail::isBoundedString<B>) String operator+(const A& a, const B& b) {
    return String(std::string_view(a)) + String(std::string_view(b));
}

}  // namespace Tyk
