#pragma once

#include <vector>

#include "DhcpLib/DhcpHdr/Const.h"
#include "DhcpLib/DhcpHdr/Enums.h"
#include "DhcpLib/PacketView.h"

namespace DhcpLib {

/// Result of a walk over the options area of a DHCPv4 message (RFC 2131, section 3).
enum class AreaState : U8 {
    wellFormed,  ///< magic cookie and end option are present
    noSpace,     ///< the packet ends at or in front of the magic cookie
    noCookie,    ///< other bytes instead of the magic cookie: a BOOTP message
    noEnd,       ///< the packet ends before an end option
};

/// State of the options area of the message whose BOOTP header starts at `offset`. Like dhcpOptionBasicCheck, but
/// returns the cause and traces nothing.
DHCPLIB_EXPORT AreaState optionsAreaState(const PktPtr& pkt, U32 offset);

/// An option, or a sub-option of option 82, in a packet; false if there is none. It points to the packet's bytes: stale
/// once the packet changes its size, and invalid once the packet is destroyed.
class FoundOption {
public:
    FoundOption() = default;
    /// `at`: position of the code in `bytes`, which end with the packet or with the enclosing option.
    FoundOption(Wire::ByteView bytes, U32 at) : bytes_(bytes), at_(at), present_(true) {}

    /// Whether the option was found.
    explicit operator bool() const { return present_; }
    /// Position of the code in the packet.
    U32 offset() const { return at_; }
    /// Position of the first data byte in the packet.
    U32 dataOffset() const { return at_ + DhcpConst::optdata_offset; }
    /// The option's code; 0 if it was not found.
    U8 code() const { return bytes_.load<U8>(at_); }
    /// The length field: number of data bytes. 0 if it is past the end of the packet or of the enclosing option.
    U8 len() const { return bytes_.load<U8>(at_ + DhcpConst::optlen_offset); }
    /// The data, cut at the end of the packet or of the enclosing option.
    std::string_view data() const { return bytes_.text(dataOffset(), len()); }
    /// Whether length field and data are inside the packet and the enclosing option.
    bool isWhole() const { return bytes_.has(dataOffset(), len()); }
    /// The bytes that contain the option: those of the packet, up to the end of the enclosing option.
    Wire::ByteView bytes() const { return bytes_; }

private:
    Wire::ByteView bytes_;
    U32 at_ = 0;
    bool present_ = false;
};

/// The last option `code` before the first end option, in the message whose BOOTP header starts at `offset`
/// (docs/compatibility.md#duplicates-by-layer). The area may lack an end option; without a magic cookie nothing is
/// found. Code 255 finds the end option; pads (code 0) are not found. Options in the `sname` and `file` fields (RFC
/// 2132, section 9.3) are ignored.
DHCPLIB_EXPORT FoundOption findOption(const PktPtr& pkt, U32 offset, U8 code);
/// As above, with the code as an enumerator.
DHCPLIB_EXPORT FoundOption findOption(const PktPtr& pkt, U32 offset, DhcpOptionType code);

/// All sub-options in the data of `option` in wire order, repeated codes included. The last one may be incomplete: its
/// length may pass the data's end. Empty if the option is absent or empty.
DHCPLIB_EXPORT std::vector<FoundOption> subOptions(const FoundOption& option);
/// The last sub-option `code` of the option 82 that findOption finds.
DHCPLIB_EXPORT FoundOption findInfoSubOption(const PktPtr& pkt, U32 offset, DhcpInformationSubOptionType code);

}  // namespace DhcpLib

template <>
struct Kcore::EnumTable<DhcpLib::AreaState> {
    using enum DhcpLib::AreaState;
    static constexpr std::string_view name = "AreaState";
    static constexpr EnumMember<DhcpLib::AreaState> members[] = {
        {wellFormed, "wellFormed"}, {noSpace, "noSpace"}, {noCookie, "noCookie"}, {noEnd, "noEnd"}};
};

namespace DhcpLib {

inline AreaState AreaStateInstance(unsigned number) { return Kcore::enumInstance<AreaState>(number); }
inline AreaState AreaStateInstance(const Kcore::String& name) { return Kcore::enumInstance<AreaState>(name); }

}  // namespace DhcpLib
