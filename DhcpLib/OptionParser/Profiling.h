#pragma once

#include "DhcpLib/PacketView.h"
#include "Kcore/String.h"

namespace DhcpLib {

/// Reads the options by which 802.1X device profiling classifies a client, from the message whose BOOTP header starts
/// at `offset`: host name (12) and vendor class identifier (60) as raw bytes, empty if absent; parameter request list
/// (55) as decimal numbers separated by commas. The list is appended to `paramReqList`
/// (docs/compatibility.md#outputs-accumulate), which becomes empty if the option is absent or empty. Returns false and
/// changes no output if the options area is malformed.
DHCPLIB_EXPORT bool parseDot1xProfilingOpts(const PktPtr& pkt, Kcore::String& hostName, Kcore::String& paramReqList,
                                            Kcore::String& vendorClassId, U32 offset);

}  // namespace DhcpLib
