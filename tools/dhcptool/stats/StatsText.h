#pragma once

#include <string>

#include "stats/Statistics.h"

namespace DhcpTool {

struct StatsTextSettings {
    std::size_t top = 10;  ///< rows of each table
    bool blocks = false;   ///< block characters in histograms, else ASCII
};

/// The statistics as tables of at most 80 columns, unless a name is long. Ends with a newline.
std::string statsText(const Statistics& statistics, const StatsTextSettings& settings);

/// Whether the locale of the environment has UTF-8 as its character set.
bool localeIsUtf8();

}  // namespace DhcpTool
