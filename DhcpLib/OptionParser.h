#pragma once

/// Free functions over the DHCPv4 options area: walking it, and reading and rewriting what relays and snooping need.
#include "DhcpLib/OptionParser/BasicCheck.h"
#include "DhcpLib/OptionParser/InfoRemoval.h"
#include "DhcpLib/OptionParser/LeaseQuery.h"
#include "DhcpLib/OptionParser/OptionLookup.h"
#include "DhcpLib/OptionParser/OptionWalk.h"
#include "DhcpLib/OptionParser/Profiling.h"
#include "DhcpLib/OptionParser/RelayInfo.h"
#include "DhcpLib/OptionParser/RelayRewrite.h"
#include "DhcpLib/OptionParser/ServerId.h"
#include "DhcpLib/OptionParser/VendorSubOption.h"
