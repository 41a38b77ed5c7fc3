#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "Kcore/Exception.h"

namespace DhcpTool {

/// Adds an option whose value is an address.
template <class Address, class Value>
CLI::Option* addAddress(CLI::App& command, const std::string& name, Value& value, const std::string& what) {
    return command
        .add_option_function<std::string>(
            name, [&value](const std::string& text) { value = Address::fromText(text); }, what)
        ->type_name("ADDR")
        ->check(
            [](const std::string& text) -> std::string {
                try {
                    Address::fromText(text);
                } catch (const Kcore::RangeException&) {
                    return "no address: " + text;
                }
                return {};
            },
            "");
}

}  // namespace DhcpTool
