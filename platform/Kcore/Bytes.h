#pragma once

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>
#include <vector>

#include "Kcore/CopyBytes.h"

namespace Kcore {

/// A growable byte string, used to assemble options. The data of one option fits without an allocation. An operation
/// that throws leaves the byte string as it was.
class Bytes {
public:
    static constexpr std::size_t inlineCapacity = 272;  ///< number of bytes that need no allocation

    Bytes() = default;
    Bytes(const Bytes& other) { append(other.span()); }
    Bytes& operator=(const Bytes& other) {
        if (this == &other) return *this;
        if (other.size_ > inlineCapacity) {
            more_.reserve(other.size_);  // throws before the first change
            more_.assign(other.begin(), other.end());
        } else {
            more_.clear();
            copyBytes(inline_, other.data(), other.size_);
        }
        size_ = other.size_;
        return *this;
    }

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    const U8* data() const { return more_.empty() ? inline_ : more_.data(); }
    U8* data() { return more_.empty() ? inline_ : more_.data(); }
    const U8* begin() const { return data(); }
    const U8* end() const { return data() + size_; }
    /// All bytes. Valid until the next change.
    std::span<const U8> span() const { return {data(), size_}; }
    /// Requires: `i` < size().
    U8 operator[](std::size_t i) const { return data()[i]; }
    U8& operator[](std::size_t i) { return data()[i]; }

    void clear() {
        size_ = 0;
        more_.clear();
    }
    /// New bytes are zero.
    void resize(std::size_t n) {
        if (n > inlineCapacity || !more_.empty())
            spill(n);
        else if (n > size_)
            std::memset(inline_ + size_, 0, n - size_);
        size_ = n;
    }
    /// Appends one byte.
    void push_back(U8 byte) { append({&byte, 1}); }
    /// Adds `n` bytes, which the caller sets, and returns the first of them.
    U8* grow(std::size_t n) {
        const std::size_t at = size_;
        if (at + n <= inlineCapacity && more_.empty()) [[likely]]
            size_ += n;
        else
            resize(at + n);
        return data() + at;
    }
    /// `bytes` may be a part of this byte string.
    void append(std::span<const U8> bytes) {
        if (bytes.empty()) return;
        const std::size_t at = size_, total = size_ + bytes.size();
        std::vector<U8> left;
        if (total > inlineCapacity || !more_.empty()) left = spill(total);
        size_ = total;
        copyBytes(data() + at, bytes.data(), bytes.size());
    }
    /// As above, for the bytes of a text.
    void append(std::string_view bytes) { append({reinterpret_cast<const U8*>(bytes.data()), bytes.size()}); }

    friend bool operator==(const Bytes& a, const Bytes& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end());
    }

private:
    /// Makes room for `n` bytes. Returns the storage that they left, so that references to it stay valid for now.
    std::vector<U8> spill(std::size_t n) {
        std::vector<U8> left;
        if (more_.empty() || n > more_.capacity()) {
            left.reserve(std::max(n, 2 * std::max(size_, inlineCapacity)));
            left.assign(begin(), end());
            left.swap(more_);
        }
        more_.resize(n);
        return left;
    }

    std::vector<U8> more_;  // holds all bytes once the inline buffer is too small
    std::size_t size_ = 0;
    U8 inline_[inlineCapacity];
};

}  // namespace Kcore
