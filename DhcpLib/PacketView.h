#pragma once

#include "DhcpLib/Constants.h"
#include "DhcpLib/Wire.h"
#include "Kcore/Ptr.h"
#include "Kcore/TypeData.h"
#include "KitSlab/Slab.h"

namespace DhcpLib {

using PktPtr = Kcore::Ptr<Kitnet::Pkt>;

/// A position in a packet as option views and every DHCPv6 view take it: 16 bits wide, it wraps at 65536, by contract.
constexpr U16 packetPosition(U32 pos) { return static_cast<U16>(pos); }

/// Base of the views that look at a packet through a position of their own. A view keeps its packet alive and never
/// copies its bytes. Positions are not followed when the packet grows at its head: make new views then.
class DHCPLIB_EXPORT PacketView : public Kcore::Node, public KitSlab::SlabObject {
public:
    ~PacketView() override;
    const PktPtr& pkt() const { return pkt_; }

protected:
    explicit PacketView(const PktPtr& pkt) : pkt_(pkt) {}
    Wire::ByteView bytes() const { return Wire::ByteView(*pkt_); }

private:
    PktPtr pkt_;
};

}  // namespace DhcpLib
