#pragma once

/// Functions that walk, read and rewrite the DHCPv4 options area.
#include "DhcpLib/OptionParser/InfoRemoval.h"
#include "DhcpLib/OptionParser/LeaseQuery.h"
#include "DhcpLib/OptionParser/OptionLookup.h"
#include "DhcpLib/OptionParser/OptionWalk.h"
#include "DhcpLib/OptionParser/Profiling.h"
#include "DhcpLib/OptionParser/RelayInfo.h"
#include "DhcpLib/OptionParser/RelayRewrite.h"
#include "DhcpLib/OptionParser/ServerId.h"
#include "DhcpLib/OptionParser/VendorSubOption.h"
