#pragma once

#include "message/Message.h"
#include "message/OptionTable.h"

namespace DhcpTool {

/// Appends the readable value of an option: by its layout if the data fits, else as 0x and hexadecimal. `info` may be
/// null. Nothing for an option without data. `pkt` holds the option. Nested options of an association, status codes
/// included, follow its fields.
void appendValue(std::string& out, const OptionInfo* info, const Item& item, const Message& message);

/// "NoAddrsAvail "text"".
void appendStatus(std::string& out, const Status6& status);

/// What is wrong: "option 51 has a wrong length at byte 298".
void appendFault(std::string& out, const Fault& fault);

/// "relay-info" or "option 200".
void appendOptionName(std::string& out, const OptionInfo* info, U16 code);

}  // namespace DhcpTool
