#pragma once

#include "common/JsonWriter.h"
#include "stats/Statistics.h"

namespace DhcpTool {

/// Writes a JSON object for the statistics; docs/dhcptool.schema.json describes it. `top`: rows of each list.
void writeStatistics(JsonWriter& json, const Statistics& statistics, std::size_t top);

}  // namespace DhcpTool
