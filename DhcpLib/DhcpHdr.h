#pragma once

/// The DHCPv4 message model: enumerations, the BOOTP header, options and the collections over them.
#include "DhcpLib/DhcpHdr/Enums.h"
#include "DhcpLib/DhcpHdr/Header.h"
#include "DhcpLib/DhcpHdr/Options.h"
#include "DhcpLib/DhcpHdr/VendorBlock.h"
