#pragma once

#include "DhcpLib/Constants.h"
#include "DhcpLib/Wire.h"
#include "Kcore/Ptr.h"
#include "Kcore/TypeData.h"
#include "KitSlab/Slab.h"

namespace DhcpLib {

/// The functions of the library treat a null packet as an empty one.
using PktPtr = Kcore::Ptr<Kitnet::Pkt>;

/// Position in a packet as option views and all DHCPv6 views hold it: 16 bits wide
/// (docs/compatibility.md#positions-wrap-at-65536).
constexpr U16 packetPosition(U32 pos) { return static_cast<U16>(pos); }

/// Base of the views that hold a packet and a position in it. A view keeps its packet alive. It may remember
/// fields that it has read: what another view or Wire::store() changes is not visible in it. A null packet is treated
/// as an empty one. The position is not adjusted when the packet grows at its head: create new views then.
class DHCPLIB_EXPORT PacketView : public Kcore::Node, public KitSlab::SlabObject {
public:
    ~PacketView() override;
    /// The packet; may be null.
    const PktPtr& pkt() const { return pkt_; }

protected:
    explicit PacketView(const PktPtr& pkt) : pkt_(pkt) {}
    Wire::ByteView bytes() const { return Wire::ByteView(pkt_.get()); }
    /// The packet for a setter. Throws Tyk::InternalException "length value exceeds pkt-length." for a null packet.
    Kitnet::Pkt& writablePkt() const {
        if (!pkt_) [[unlikely]]
            Wire::throwNoRoom();
        return *pkt_;
    }

private:
    PktPtr pkt_;
};

}  // namespace DhcpLib
