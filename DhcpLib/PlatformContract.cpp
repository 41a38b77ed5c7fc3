// Checks the platform layer with which the library is built. The rest of the library compiles with a complete layer
// only, but its messages do not say what is missing.

#include "DhcpLib/PlatformContract.h"

#include "Bridging/Config.h"
#include "Interface/EthDevPam.h"
#include "Kcore/Bytes.h"
#include "Kcore/Exception.h"
#include "Kcore/String.h"
#include "Kitnet/Kitnet.h"
#include "L3/VrfName.h"
#include "Tyk/Exception.h"
#include "Tyk/TraceHandle.h"

namespace DhcpLib::Platform {

template struct PacketBuffer<Kitnet::Pkt>;
template struct PacketManager<Kitnet::Pkt::Manager, Kitnet::Pkt>;
template struct CountedPointer<Kcore::Ptr<Kitnet::Pkt>, Kitnet::Pkt>;
template struct WireInteger<Kitnet::NetU16, U16>;
template struct WireInteger<Kitnet::NetU32, U32>;
template struct WireInteger<Kitnet::UdpPort, U16>;
template struct WireInteger<Kitnet::IpProtocolNumber, U8>;
template struct Ip4Address<Kitnet::IpAddr>;
template struct Ip6Address<Kitnet::Ip6Addr>;
template struct MacAddress<Kitnet::EthAddr>;
template struct AnyAddress<Kitnet::IpGenAddr, Kitnet::IpAddr, Kitnet::Ip6Addr>;
template struct InterfaceName<Kitnet::IntfId>;
template struct VlanNumber<Bridging::VlanId>;
template struct VlanNumber<Bridging::VlanIdOrNone>;
template struct VlanSettings<Bridging::Config, Kitnet::IntfId>;
template struct ClearableString<Kcore::String>;
template struct ByteString<L3::VrfName>;
template struct ByteBuffer<Kcore::Bytes>;
template struct Exception<Kcore::RangeException>;
template struct Exception<Tyk::InternalException>;
template struct TraceName<Tyk::TraceHandle>;
template struct PacketAccess<Interface::EthDevPam, Interface::PamFrame>;

}  // namespace DhcpLib::Platform
