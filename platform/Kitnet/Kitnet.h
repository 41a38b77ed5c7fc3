#pragma once

#include "Kitnet/BigEndian.h"
#include "Kitnet/EthAddr.h"
#include "Kitnet/IntfId.h"
#include "Kitnet/IpAddr.h"
#include "Kitnet/IpGenAddr.h"
#include "Kitnet/IpHdr.h"
#include "Kitnet/NetInteger.h"
#include "Kitnet/Pkt.h"
#include "Kitnet/SockFilter.h"
#include "Kitnet/UdpMend.h"
