#pragma once

#include <algorithm>
#include <array>
#include <type_traits>
#include <utility>
#include <vector>

namespace Kcore {

/// A vector that stores up to `N` values in itself and only more of them in allocated memory. For small values that are
/// copied as bytes. Pointers into it are valid until it changes.
template <class T, std::size_t N>
class SmallVector {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    using const_iterator = const T*;  ///< iterator over constant values

    SmallVector() = default;
    SmallVector(const SmallVector&) = default;
    /// Leaves `other` empty.
    SmallVector(SmallVector&& other) noexcept
        : few_(other.few_), many_(std::move(other.many_)), size_(std::exchange(other.size_, 0)) {}
    ~SmallVector() = default;
    SmallVector& operator=(const SmallVector&) = default;
    SmallVector& operator=(SmallVector&& other) noexcept {
        few_ = other.few_;
        many_ = std::move(other.many_);
        size_ = std::exchange(other.size_, 0);
        return *this;
    }

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    const T* begin() const { return size_ <= N ? few_.data() : many_.data(); }
    const T* end() const { return begin() + size_; }
    /// Requires: `i` is below size().
    const T& operator[](std::size_t i) const { return begin()[i]; }
    T& operator[](std::size_t i) { return size_ <= N ? few_[i] : many_[i]; }
    /// The last value. Requires: there is one.
    const T& back() const { return begin()[size_ - 1]; }

    /// Appends a value. If there is no memory, throws std::bad_alloc and changes nothing.
    void push_back(T value) {
        if (size_ < N) {
            few_[size_] = value;
        } else {
            if (size_ == N) many_.assign(few_.begin(), few_.end());
            many_.push_back(value);
        }
        ++size_;
    }
    /// Removes the last value. Requires: there is one.
    void pop_back() {
        if (size_ > N) many_.pop_back();
        if (--size_ == N) std::copy_n(many_.begin(), N, few_.begin());
    }
    /// Removes all values; keeps the memory.
    void clear() { size_ = 0; }

private:
    std::array<T, N> few_{};  // the values, if there are at most N
    std::vector<T> many_;     // otherwise they are here
    std::size_t size_ = 0;
};

}  // namespace Kcore
