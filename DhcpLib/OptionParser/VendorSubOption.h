#pragma once

#include "DhcpLib/DhcpHdr/VendorBlock.h"
#include "DhcpLib/OptionParser/OptionWalk.h"
#include "Kcore/Bytes.h"
#include "Kitnet/IpGenAddr.h"
#include "Kitnet/NetInteger.h"

namespace DhcpLib {

/// The vendor-specific sub-option (9, RFC 4243) carries enterprise blocks one after the other. The system's own block
/// is marked with Constants::quorvaEntNum and holds up to two data items, in this order:
///   1  name of the interface on which the request arrived; left out when empty
///   2  source tunnel endpoint, 4 or 16 bytes in network order; left out when all zero or unset

/// An enterprise block as it lies in the packet: number, length, then `len` data bytes.
struct DhcpVendorSpecificEntOption {
    Kitnet::NetU32 entNum;
    U8 len;

    U8* data() { return reinterpret_cast<U8*>(this) + sizeof(DhcpVendorSpecificEntOption); }
    const U8* data() const { return reinterpret_cast<const U8*>(this) + sizeof(DhcpVendorSpecificEntOption); }
};
static_assert(sizeof(DhcpVendorSpecificEntOption) == vendorBlockHeaderBytes &&
              alignof(DhcpVendorSpecificEntOption) == 1);

/// Whether a block with these contents would hold anything.
inline bool isVendorDataPresent(const Kcore::String& intfName, const Kitnet::IpGenAddr& srcVtep) {
    return !intfName.empty() || srcVtep.isUsable();
}

/// Writes code, length and `len` bytes of `data` into `buf` at `pos`, growing it where needed; `pos` becomes its size.
DHCPLIB_EXPORT void setInfoData(Kcore::Bytes& buf, U32& pos, U8 subType, U8 len, const U8* data);

/// The block behind `block`. Requires: the block's length byte is readable.
DHCPLIB_EXPORT DhcpVendorSpecificEntOption* getNextVendorSpecificEntOpt(DhcpVendorSpecificEntOption* block);
/// Finds the system's block among the blocks from `first` on; the walk ends when those passed take `totalLen` bytes or
/// more. The first block is always examined. Requires: what the lengths name is readable.
DHCPLIB_EXPORT bool isVendorSpecificQuorvaEntno(DhcpVendorSpecificEntOption* first, std::size_t totalLen,
                                                DhcpVendorSpecificEntOption** found);
/// Writes the system's enterprise number into `buf` at `pos`; `pos` becomes its size.
DHCPLIB_EXPORT void addQuorvaEnterpriseNum(Kcore::Bytes& buf, U32& pos);
/// Data bytes of the system's block with these contents, its header not counted.
DHCPLIB_EXPORT U32 quorvaVendorSpecificSubOptLen(const Kcore::String& intfName, const Kitnet::IpGenAddr& srcVtep);
/// Writes a sub-option's length byte at `pos`: `len`, and with `addQuorva` the system's whole block on top of it.
/// `pos` becomes the buffer's size, which is returned.
DHCPLIB_EXPORT U32 addVendorSpecificSubOptLen(Kcore::Bytes& buf, U32& pos, U8 len, bool addQuorva,
                                              const Kcore::String& intfName, const Kitnet::IpGenAddr& srcVtep);
/// Writes the system's whole block at `pos`, without the sub-option's own code and length.
DHCPLIB_EXPORT void addQuorvaVendorSpecificSubOpt(Kcore::Bytes& buf, U32& pos, const Kcore::String& intfName,
                                                  const Kitnet::IpGenAddr& srcVtep);
/// What adding the vendor data costs option 82, a new sub-option's header included where none exists yet.
/// `legacyLen` counts instead of the block while the toggle DhcpRelayTunnelEncapReplies is off.
DHCPLIB_EXPORT U32 getVendorSpecificSubOptionLenAdd(Kcore::String intfName, Kitnet::IpGenAddr srcVtep,
                                                    Kcore::String existingVendorData, U32 legacyLen);
/// Writes the system's block behind the data of `existingVsSubOpt`, or as a new sub-option 9 at `dataPos` of option
/// 82's data, and returns the bytes it took; option 82's own length is the caller's. Writes nothing, and returns 0,
/// without contents. Requires: that many bytes are writable there.
DHCPLIB_EXPORT std::size_t addVendorSpecificSubOption(DhcpSingleOption* infoOpt, std::size_t dataPos,
                                                      DhcpSingleOption* existingVsSubOpt, Kcore::String intfName,
                                                      Kitnet::IpGenAddr srcVtep);
/// The system's whole block as it stands in sub-option 9.
Kcore::Bytes quorvaBlock(const Kcore::String& intfName, const Kitnet::IpGenAddr& srcVtep);
/// Bytes of other enterprises' blocks in front of the system's. Requires: `vsView` has found a block.
DHCPLIB_EXPORT U32 calculateNonQuorvaVendorLen(Kcore::Ptr<DhcpInformationSubOption>& vsSubOpt,
                                               Kcore::Ptr<DhcpVendorSpecificSubOpt>& vsView);
/// Reads the system's block out of a sub-option 9; what it does not hold leaves its output as it is. While the toggle
/// is off, the interface name out of the legacy text (the enterprise number in decimal, a length byte, the name).
/// Requires: what the lengths name is readable (within Pkt::guardBytes of a roomy packet's end it is).
DHCPLIB_EXPORT void parseVendorSpecificSubOpt(DhcpSingleOption* vsSubOpt, Kcore::String& intfName,
                                              Kitnet::IpGenAddr& srcVtepIp);
/// As above for the sub-option at `at` of a packet, bounded by the packet.
DHCPLIB_EXPORT void parseVendorSpecificSubOpt(Wire::ByteView bytes, U32 at, Kcore::String& intfName,
                                              Kitnet::IpGenAddr& srcVtepIp);

/// The decimal text of the enterprise number, which opens the legacy layout.
DHCPLIB_EXPORT const Kcore::String& quorvaEntNumText();

}  // namespace DhcpLib
