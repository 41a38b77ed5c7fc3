#pragma once

#include <string_view>

namespace Kcore {

/// The characters that are still to be decoded. A decoder that succeeds advances the start past what it has read. One
/// that fails leaves the range unchanged.
class CharRange {
public:
    /// All characters of `text`, which must outlive the range.
    CharRange(std::string_view text) : rest_(text) {}
    /// All characters of `text`, which ends at its first null byte and must outlive the range.
    CharRange(const char* text) : rest_(text) {}

    /// The characters that are left.
    std::string_view rest() const { return rest_; }
    bool empty() const { return rest_.empty(); }
    /// Removes `token` from the front. Returns false and changes nothing if the range does not start with it.
    bool take(std::string_view token) {
        if (!rest_.starts_with(token)) return false;
        rest_.remove_prefix(token.size());
        return true;
    }
    /// Removes the leading characters that satisfy `wanted` and returns them.
    template <class Predicate>
    std::string_view takeWhile(Predicate wanted) {
        std::size_t n = 0;
        while (n < rest_.size() && wanted(rest_[n])) ++n;
        const std::string_view taken = rest_.substr(0, n);
        rest_.remove_prefix(n);
        return taken;
    }

private:
    std::string_view rest_;
};

}  // namespace Kcore
