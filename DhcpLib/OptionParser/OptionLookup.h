#pragma once

#include <vector>

#include "DhcpLib/DhcpHdr/Enums.h"
#include "DhcpLib/PacketView.h"

namespace DhcpLib {

/// What a walk over the options area of a DHCPv4 message finds (RFC 2131, section 3).
enum class AreaState : U8 {
    wellFormed,  ///< there is a magic cookie, and the walk reaches an end option
    noSpace,     ///< the packet ends at or before the place of the magic cookie
    noCookie,    ///< other bytes in the place of the magic cookie: a BOOTP message
    noEnd,       ///< the packet ends before an end option
};

/// The state of the options area of the message whose BOOTP header starts at `offset`: dhcpOptionBasicCheck with its
/// cause, and without a trace line.
DHCPLIB_EXPORT AreaState optionsAreaState(const PktPtr& pkt, U32 offset);

/// An option, or a sub-option of option 82, where it lies in a packet; false where there is none. It refers to the
/// packet's bytes: stale once the packet changes its size, gone with the packet.
class FoundOption {
public:
    FoundOption() = default;
    /// `at`: position of the code in `bytes`, which end with the packet or with the enclosing option.
    FoundOption(Wire::ByteView bytes, U32 at) : bytes_(bytes), at_(at), present_(true) {}

    explicit operator bool() const { return present_; }
    /// Position of the code in the packet.
    U32 offset() const { return at_; }
    /// Position of the first data byte in the packet.
    U32 dataOffset() const { return at_ + DhcpConst::optdata_offset; }
    U8 code() const { return bytes_.load<U8>(at_); }
    /// The length field: bytes of data. 0 where it lies behind the end of the packet or of the enclosing option.
    U8 len() const { return bytes_.load<U8>(at_ + DhcpConst::optlen_offset); }
    /// The data, cut at the end of the packet or of the enclosing option.
    std::string_view data() const { return bytes_.text(dataOffset(), len()); }
    /// Whether length field and data lie inside the packet and the enclosing option.
    bool isWhole() const { return bytes_.has(dataOffset(), len()); }
    /// The bytes in which the option lies: the packet's, up to the end of the enclosing option.
    Wire::ByteView bytes() const { return bytes_; }

private:
    Wire::ByteView bytes_;
    U32 at_ = 0;
    bool present_ = false;
};

/// The option `code` of the message whose BOOTP header starts at `offset`. Of several the last one before the first end
/// option, as parseDhcpOptions takes it; the area need not be well-formed. Code 255 finds the end option; pads (code 0)
/// are not found. Options in the `sname` and `file` fields (RFC 2132, section 9.3) are not looked at.
DHCPLIB_EXPORT FoundOption findOption(const PktPtr& pkt, U32 offset, U8 code);
DHCPLIB_EXPORT FoundOption findOption(const PktPtr& pkt, U32 offset, DhcpOptionType code);

/// The sub-options in the data of `option`, in wire order, each of several of one code too. Only the last one may not
/// be whole: its length passes the data's end. Empty for an absent or empty option.
DHCPLIB_EXPORT std::vector<FoundOption> subOptions(const FoundOption& option);
/// The sub-option `code` of the option 82 that findOption finds; of several the last one.
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
