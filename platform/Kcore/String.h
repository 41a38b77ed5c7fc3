#pragma once

#include <compare>
#include <concepts>
#include <cstring>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "Kcore/CopyBytes.h"
#include "Kcore/Counter.h"
#include "Kcore/Export.h"
#include "Kcore/Hash.h"

namespace Kcore {

/// A string of any bytes, zero included; not terminated. It changes only as a whole. Up to `inlineCapacity` bytes are
/// stored in the object, longer strings in a block that copies share.
class DHCPPLATFORM_EXPORT String {
public:
    static constexpr std::size_t inlineCapacity = 30;            ///< number of bytes that need no allocation
    static constexpr std::size_t npos = std::string_view::npos;  ///< "to the end", and "not found"

    String() : size_(0) {}
    /// A copy of `bytes`, which may contain null bytes.
    String(std::string_view bytes) { assign(bytes); }
    /// A copy of the text up to its first null byte.
    String(const char* text) : String(std::string_view(text)) {}
    /// A copy of `bytes`.
    String(const std::string& bytes) : String(std::string_view(bytes)) {}
    /// A copy of `size` bytes.
    String(const char* bytes, std::size_t size) : String(std::string_view(bytes, size)) {}
    /// From another byte string type, such as a bounded one.
    template <class Bytes>
    requires(!std::derived_from<Bytes, String> && std::convertible_to<const Bytes&, std::string_view>)
        String(const Bytes& bytes)
        : String(std::string_view(bytes)) {}
    String(const String& other) { copyFrom(other); }
    String(String&& other) noexcept { takeFrom(other); }
    ~String() {
        if (isShared()) letGo();
    }

    String& operator=(const String& other) { return *this = String(other); }
    String& operator=(String&& other) noexcept {
        if (this == &other) return *this;
        if (isShared()) letGo();
        takeFrom(other);
        return *this;
    }
    /// Makes the string empty. Costs less than assigning an empty one.
    void clear() {
        if (isShared()) letGo();
        size_ = 0;
    }

    std::size_t size() const { return isShared() ? shared()->size : size_; }
    bool empty() const { return size_ == 0; }
    const char* data() const { return isShared() ? shared()->bytes() : inline_; }
    const char* begin() const { return data(); }
    const char* end() const { return data() + size(); }
    /// All bytes. Valid as long as the string.
    operator std::string_view() const { return view(); }
    /// All bytes. Valid as long as the string.
    std::string_view view() const { return {data(), size()}; }
    /// A copy as std::string.
    std::string str() const { return std::string(view()); }

    /// Requires: `i` < size().
    char operator[](std::size_t i) const { return data()[i]; }
    /// Throws RangeException if `i` is not below size().
    char at(std::size_t i) const;
    /// Position of the first `what` at or after `from`; npos if there is none.
    std::size_t find(std::string_view what, std::size_t from = 0) const { return view().find(what, from); }
    /// Position of the first `what` at or after `from`; npos if there is none.
    std::size_t find(char what, std::size_t from = 0) const { return view().find(what, from); }
    /// At most `count` bytes from `pos`. Throws RangeException if `pos` is beyond size().
    String substr(std::size_t pos, std::size_t count = npos) const;
    /// As substr, but empty if `pos` is beyond size().
    String substrOrEmpty(std::size_t pos, std::size_t count = npos) const;

    std::size_t hash() const { return hashBytes(data(), size()); }
    void appendText(std::string& out) const { out.append(view()); }

    friend bool operator==(const String& a, const String& b) { return a.view() == b.view(); }
    /// Compares the bytes.
    template <class T>
    requires(!std::same_as<T, String> && std::convertible_to<const T&, std::string_view>) friend bool operator==(
        const String& a, const T& b) {
        return a.view() == std::string_view(b);
    }
    friend std::strong_ordering operator<=>(const String& a, const String& b) {
        return a.view().compare(b.view()) <=> 0;  // libc++ 14 has no <=> of views
    }
    /// The bytes of both.
    friend String operator+(const String& a, const String& b) { return joined(a, b); }

private:
    struct Shared {
        Counter uses{1};
        U32 size;
        char* bytes() { return reinterpret_cast<char*>(this + 1); }
    };
    static constexpr U8 sharedMark = 0xff;

    bool isShared() const { return size_ == sharedMark; }
    Shared* shared() const {
        Shared* block;
        std::memcpy(&block, inline_, sizeof block);
        return block;
    }
    void assign(std::string_view bytes) {
        if (bytes.size() > inlineCapacity) return assignShared(bytes, {});
        size_ = static_cast<U8>(bytes.size());
        copyBytes(inline_, bytes.data(), bytes.size());
    }
    void copyFrom(const String& other) {
        copyStorage(other);
        size_ = other.size_;
        if (isShared()) shared()->uses.increment();
    }
    void takeFrom(String& other) {
        copyStorage(other);
        size_ = std::exchange(other.size_, U8{0});
    }
// The copy includes bytes that a short string does not use; GCC warns about that.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
    void copyStorage(const String& other) { std::memcpy(inline_, other.inline_, sizeof inline_); }
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
    void assignShared(std::string_view head, std::string_view tail);
    void letGo();
    static String joined(std::string_view a, std::string_view b);

    alignas(void*) char inline_[inlineCapacity + 1];
    U8 size_;  // number of inline bytes, or `sharedMark`
};
static_assert(sizeof(String) == 32);

/// Writes the bytes unchanged.
DHCPPLATFORM_EXPORT std::ostream& operator<<(std::ostream& out, const String& s);

}  // namespace Kcore
