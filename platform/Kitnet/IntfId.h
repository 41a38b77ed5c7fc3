#pragma once

#include <cstring>

#include "Kitnet/WireBytes.h"

namespace Kitnet {

/// The name of an interface, stored in the object: names also come from the network, so no table keeps them. 1 to 63
/// characters, first a letter, then letters, digits, '-', '_', '.' and '/'. Empty by default.
class DHCPPLATFORM_EXPORT IntfId {
public:
    static constexpr std::string_view typeName = "Kitnet::IntfId";
    static constexpr std::size_t maxNameBytes = 63;  ///< the longest name, in bytes

    IntfId() = default;
    /// Throws RangeException if `name` is not valid.
    explicit IntfId(std::string_view name) { handleInitialized(name); }
    /// Throws as the constructor does, and then changes nothing.
    void handleInitialized(std::string_view name);
    /// Whether `name` could be the name of an interface.
    static bool isValidName(std::string_view name);

    /// The name. Valid as long as the object.
    std::string_view name() const { return {name_, size_}; }
    /// Whether there is no name.
    bool isEmpty() const { return size_ == 0; }
    /// "Et1" for "Ethernet1", and likewise for the other numbered kinds; any other name is its own short name.
    Kcore::String shortName() const;

    /// Hashes whole words: the bytes after the name are zero.
    std::size_t hash() const { return Kcore::hashBytes(name_, wordCount() * sizeof(U64)); }
    void appendText(std::string& out) const { out.append(name()); }
    /// As handleInitialized, but returns false instead of raising. The empty text is the empty identifier.
    static bool parse(std::string_view text, IntfId* value);

    friend bool operator==(const IntfId& a, const IntfId& b) {
        if (a.size_ != b.size_) return false;
        U64 differing = 0;
        for (std::size_t i = 0; i < a.wordCount(); ++i) differing |= a.word(i) ^ b.word(i);
        return differing == 0;
    }
    friend std::strong_ordering operator<=>(const IntfId& a, const IntfId& b) {
        return a.name().compare(b.name()) <=> 0;
    }

private:
    /// Requires: a valid or empty name.
    void assign(std::string_view name);
    /// Eight bytes of the object: of the name and, in the last word, the size.
    U64 word(std::size_t i) const {
        U64 word;
        std::memcpy(&word, reinterpret_cast<const char*>(this) + i * sizeof word, sizeof word);
        return word;
    }
    std::size_t wordCount() const { return (size_ + sizeof(U64) - 1) / sizeof(U64); }

    alignas(U64) char name_[maxNameBytes] = {};
    U8 size_ = 0;
};
static_assert(sizeof(IntfId) == 64 && std::is_trivially_copyable_v<IntfId>);

}  // namespace Kitnet
