#pragma once

#include "DhcpLib/PacketView.h"
#include "Kcore/String.h"

namespace DhcpLib {

/// What 802.1X device profiling compares, of the message whose BOOTP header starts at `offset`: host name (12) and
/// vendor class identifier (60), byte by byte as they stand, empty where absent; and the parameter request list (55) as
/// decimal numbers with commas between, appended to what `paramReqList` holds, or empty where absent or of length 0.
/// False, and every output as it was, where the options cannot be walked.
DHCPLIB_EXPORT bool parseDot1xProfilingOpts(const PktPtr& pkt, Kcore::String& hostName, Kcore::String& paramReqList,
                                            Kcore::String& vendorClassId, U32 offset);

}  // namespace DhcpLib
