#pragma once

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <limits>
#include <string>

#include "Kcore/Types.h"

namespace DhcpTool {

/// Adds an option whose value is a time from `least` to `most` seconds. CLI::Range would take "nan".
template <class Value>
CLI::Option* addSeconds(CLI::App& command, const std::string& name, Value& value, double least, double most,
                        const std::string& what) {
    return command.add_option(name, value, what)
        ->type_name("SECONDS")
        ->check(
            [least, most](const std::string& text) {
                char* end = nullptr;
                const double seconds = std::strtod(text.c_str(), &end);
                const bool isNumber = !text.empty() && *end == '\0';
                return isNumber && seconds >= least && seconds <= most ? "" : "not a time in range: " + text;
            },
            "");
}

/// Adds --count, a number from 1 on.
inline CLI::Option* addCount(CLI::App& command, Kcore::U64& count, const std::string& what) {
    return command.add_option("--count", count, what)
        ->type_name("N")
        ->check(CLI::Range(Kcore::U64{1}, std::numeric_limits<Kcore::U64>::max()));
}

}  // namespace DhcpTool
