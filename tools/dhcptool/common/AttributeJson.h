#pragma once

#include <concepts>
#include <nlohmann/json.hpp>

#include "Kcore/TypeData.h"
#include "Kitnet/IpAddr.h"
#include "common/Ascending.h"
#include "common/Printable.h"

namespace DhcpTool {

using Json = nlohmann::ordered_json;

/// A number with a type of its own, such as a port. Addresses are numbers as well, but are printed as text.
template <class T>
concept NumberValue = !std::same_as<T, Kitnet::IpAddr> && requires(const T& v) {
    { v.value() } -> std::integral;
};

/// The attributes of an object by name, in declared order. Flags, numbers and seconds become JSON values, texts become
/// strings, byte strings become hex, enumerations their names, addresses their text form, declared objects JSON
/// objects, null pointers null, maps JSON objects, sets lists in ascending order.
template <class T>
Json jsonOf(const T& value) {
    if constexpr (std::integral<T> || std::same_as<T, std::string_view>)
        return value;
    else if constexpr (std::same_as<T, Kcore::Duration>)
        return value.count();
    else if constexpr (std::same_as<T, Kcore::String>)
        return hex(value);
    else if constexpr (NumberValue<T>)
        return value.value();
    else if constexpr (Kcore::Declared<T>) {
        Json object = Json::object();
        Kcore::forEachAttribute(value,
                                [&](std::string_view name, const auto& a) { object[std::string(name)] = jsonOf(a); });
        return object;
    } else if constexpr (requires { value.get(); })
        return value ? jsonOf(*value) : Json();
    else if constexpr (requires { typename T::value_type::first_type; }) {
        Json object = Json::object();
        for (const auto& [key, mapped] : value) object[Kcore::textOf(key)] = jsonOf(mapped);
        return object;
    } else if constexpr (Kcore::PrintableRange<T>) {
        Json list = Json::array();
        for (const auto& element : ascending(value)) list.push_back(jsonOf(element));
        return list;
    } else
        return Kcore::textOf(value);
}

}  // namespace DhcpTool
