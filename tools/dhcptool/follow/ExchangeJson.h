#pragma once

#include "common/JsonWriter.h"
#include "exchange/Marks.h"

namespace DhcpTool {

/// Writes a JSON object for an exchange; docs/dhcptool.schema.json describes it.
void writeExchange(JsonWriter& json, const Exchange& exchange, const std::vector<Mark>& marks);

}  // namespace DhcpTool
