#include "Kitnet/IntfId.h"

#include <algorithm>

namespace Kitnet {

namespace {

/// Kinds of interfaces whose short name is their first two letters and the number.
constexpr std::string_view shortened[] = {"Ethernet", "Port-Channel", "Management", "Vlan", "Loopback", "Vxlan"};
constexpr std::size_t shortBytes = 2;

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr bool isNameChar(char c) { return isLetter(c) || isDigit(c) || c == '-' || c == '_' || c == '.' || c == '/'; }

}  // namespace

bool IntfId::isValidName(std::string_view name) {
    return !name.empty() && name.size() <= maxNameBytes && isLetter(name.front()) &&
           std::all_of(name.begin(), name.end(), [](char c) { return isNameChar(c); });
}

void IntfId::handleInitialized(std::string_view name) {
    if (!isValidName(name)) refuseText(typeName, name);
    assign(name);
}

void IntfId::assign(std::string_view name) {
    *this = {};
    std::copy(name.begin(), name.end(), name_);
    size_ = static_cast<U8>(name.size());
}

bool IntfId::parse(std::string_view text, IntfId* value) {
    if (!text.empty() && !isValidName(text)) return false;
    value->assign(text);
    return true;
}

Kcore::String IntfId::shortName() const {
    for (const std::string_view kind : shortened)
        if (name().starts_with(kind) && name().size() > kind.size() && isDigit(name()[kind.size()]))
            return Kcore::String(kind.substr(0, shortBytes)) + Kcore::String(name().substr(kind.size()));
    return name();
}

}  // namespace Kitnet
