#pragma once

#include "DhcpLib/DhcpHdr/VendorBlock.h"
#include "DhcpLib/OptionParser/OptionWalk.h"
#include "Kcore/Bytes.h"
#include "Kitnet/IpGenAddr.h"
#include "Kitnet/NetInteger.h"

namespace DhcpLib {

/// The vendor-specific sub-option (9, RFC 4243) contains blocks of several enterprises. The own block has the
/// enterprise number Constants::quorvaEntNum and up to two data items, in this order:
///    1  name of the interface on which the request arrived; left out if empty
///    2  source tunnel address, 4 or 16 bytes in network order; left out if all zero or unset

/// A vendor block in the packet: enterprise number, length, then `len` data bytes.
struct DhcpVendorSpecificEntOption {
    Kitnet::NetU32 entNum;  ///< IANA enterprise number
    U8 len;                 ///< number of data bytes

    /// The first data byte. Requires: it is in the packet.
    U8* data() { return reinterpret_cast<U8*>(this) + sizeof(DhcpVendorSpecificEntOption); }
    /// The first data byte. Requires: it is in the packet.
    const U8* data() const { return reinterpret_cast<const U8*>(this) + sizeof(DhcpVendorSpecificEntOption); }

    static constexpr auto declaration() {
        return Kcore::declare("DhcpVendorSpecificEntOption",
                              Kcore::attribute("entNum", &DhcpVendorSpecificEntOption::entNum),
                              Kcore::attribute("len", &DhcpVendorSpecificEntOption::len));
    }
};
static_assert(sizeof(DhcpVendorSpecificEntOption) == vendorBlockHeaderBytes &&
              alignof(DhcpVendorSpecificEntOption) == 1);

/// Whether a block with these contents would have an item.
inline bool isVendorDataPresent(const Kcore::String& intfName, const Kitnet::IpGenAddr& srcVtep) {
    return !intfName.empty() || srcVtep.isUsable();
}

/// Writes code, length and `len` bytes of `data` into `buf` at `pos`, growing it if necessary, and sets `pos` to the
/// buffer's size.
DHCPLIB_EXPORT void setInfoData(Kcore::Bytes& buf, U32& pos, U8 subType, U8 len, const U8* data);

/// The block after `block`. Requires: the block's length byte is readable.
DHCPLIB_EXPORT DhcpVendorSpecificEntOption* getNextVendorSpecificEntOpt(DhcpVendorSpecificEntOption* block);
/// Finds the own block among the blocks from `first` on. The walk ends when the blocks passed have `totalLen` bytes or
/// more. The first block is always examined (docs/compatibility.md#first-item-always-read). Requires: all bytes that
/// the lengths announce are readable. Returns false if `first` is null.
DHCPLIB_EXPORT bool isVendorSpecificQuorvaEntno(DhcpVendorSpecificEntOption* first, std::size_t totalLen,
                                                DhcpVendorSpecificEntOption** found);
/// Writes the own enterprise number into `buf` at `pos` and sets `pos` to the buffer's size.
DHCPLIB_EXPORT void addQuorvaEnterpriseNum(Kcore::Bytes& buf, U32& pos);
/// Number of data bytes of an own block with these contents, without its header.
DHCPLIB_EXPORT U32 quorvaVendorSpecificSubOptLen(const Kcore::String& intfName, const Kitnet::IpGenAddr& srcVtep);
/// Writes a sub-option's length byte at `pos`: `len`, plus the size of the whole own block if `addQuorva`. Sets `pos`
/// to the buffer's size and returns it.
DHCPLIB_EXPORT U32 addVendorSpecificSubOptLen(Kcore::Bytes& buf, U32& pos, U8 len, bool addQuorva,
                                              const Kcore::String& intfName, const Kitnet::IpGenAddr& srcVtep);
/// Writes the whole own block at `pos`, without the sub-option's code and length.
DHCPLIB_EXPORT void addQuorvaVendorSpecificSubOpt(Kcore::Bytes& buf, U32& pos, const Kcore::String& intfName,
                                                  const Kitnet::IpGenAddr& srcVtep);
/// Number of bytes that adding the vendor data costs option 82, including the header of a new sub-option 9 if there is
/// none yet. With the toggle DhcpRelayTunnelEncapReplies off, `legacyLen` counts in place of the block.
DHCPLIB_EXPORT U32 getVendorSpecificSubOptionLenAdd(Kcore::String intfName, Kitnet::IpGenAddr srcVtep,
                                                    Kcore::String existingVendorData, U32 legacyLen);
/// Writes the own block after the data of `existingVsSubOpt`, or as a new sub-option 9 at `dataPos` of option
/// 82's data, and returns the bytes that it takes. The caller adds them to the length of option 82. Writes nothing and
/// returns 0 if the block would be empty, if the sub-option would pass 255 bytes, or if both options are null.
/// Requires: the bytes are writable.
DHCPLIB_EXPORT std::size_t addVendorSpecificSubOption(DhcpSingleOption* infoOpt, std::size_t dataPos,
                                                      DhcpSingleOption* existingVsSubOpt, Kcore::String intfName,
                                                      Kitnet::IpGenAddr srcVtep);
/// The whole own block as in sub-option 9.
DHCPLIB_EXPORT Kcore::Bytes quorvaBlock(const Kcore::String& intfName, const Kitnet::IpGenAddr& srcVtep);
/// Number of bytes of other enterprises' blocks in front of the own one: all of the sub-option's data if `vsView` is
/// null or has found no such block. 0 if `vsSubOpt` is null.
DHCPLIB_EXPORT U32 calculateNonQuorvaVendorLen(Kcore::Ptr<DhcpInformationSubOption>& vsSubOpt,
                                               Kcore::Ptr<DhcpVendorSpecificSubOpt>& vsView);
/// Reads the own block of a sub-option 9. Outputs whose item is absent stay unchanged. With the toggle off, reads the
/// interface name from the text layout (docs/compatibility.md#vendor-text-layout). Requires: all bytes that the lengths
/// announce are readable, as they are within Pkt::guardBytes of the end of a roomy packet. A null `vsSubOpt` has no
/// block.
DHCPLIB_EXPORT void parseVendorSpecificSubOpt(DhcpSingleOption* vsSubOpt, Kcore::String& intfName,
                                              Kitnet::IpGenAddr& srcVtepIp);
/// The same for the sub-option at position `at` of a packet; reads stay inside the packet.
DHCPLIB_EXPORT void parseVendorSpecificSubOpt(Wire::ByteView bytes, U32 at, Kcore::String& intfName,
                                              Kitnet::IpGenAddr& srcVtepIp);

/// The enterprise number in decimal, with which the text layout starts.
DHCPLIB_EXPORT const Kcore::String& quorvaEntNumText();

}  // namespace DhcpLib
