#pragma once

/// The DHCPv4 message model: enumerations, views of the BOOTP header and of options.
#include "DhcpLib/DhcpHdr/Enums.h"
#include "DhcpLib/DhcpHdr/Header.h"
#include "DhcpLib/DhcpHdr/Options.h"
#include "DhcpLib/DhcpHdr/VendorBlock.h"
