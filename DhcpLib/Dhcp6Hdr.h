#pragma once

/// The DHCPv6 message model: constants, enumerations, views of message headers and options.
#include "DhcpLib/Dhcp6Hdr/Const.h"
#include "DhcpLib/Dhcp6Hdr/Duid.h"
#include "DhcpLib/Dhcp6Hdr/Enums.h"
#include "DhcpLib/Dhcp6Hdr/Headers.h"
#include "DhcpLib/Dhcp6Hdr/IdentityAssociation.h"
#include "DhcpLib/Dhcp6Hdr/Nested.h"
#include "DhcpLib/Dhcp6Hdr/Options.h"
#include "DhcpLib/Dhcp6Hdr/RelayIdentification.h"
#include "DhcpLib/Dhcp6Hdr/VendorInformation.h"
