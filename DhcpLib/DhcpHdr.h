#pragma once

/// The DHCPv4 message model: constants, enumerations, the BOOTP header, options and the collections over them.
#include "DhcpLib/DhcpHdr/Const.h"
#include "DhcpLib/DhcpHdr/Enums.h"
#include "DhcpLib/DhcpHdr/Header.h"
#include "DhcpLib/DhcpHdr/Options.h"
#include "DhcpLib/DhcpHdr/VendorBlock.h"
