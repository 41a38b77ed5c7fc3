#pragma once

#include <array>
#include <vector>

#include "DhcpLib/DhcpHdr/Const.h"
#include "DhcpLib/OptionParser/OptionLookup.h"
#include "DhcpLib/Walk.h"
#include "Kcore/SourceSite.h"
#include "Kcore/String.h"
#include "Kitnet/IpAddr.h"

namespace DhcpLib {

/// Walks the options of the message whose BOOTP header starts at `offset`, up to and including the first end option.
/// Calls `visit(head)` for each item; a run of pads is one item. Positions are 32 bits wide.
template <class Visit>
AreaState walkOptionsArea(Wire::ByteView bytes, U32 offset, Visit visit) {
    const U32 cookieAt = offset + Constants::bootpHdrSize;
    if (static_cast<std::int32_t>(bytes.size() - cookieAt) < 1) return AreaState::noSpace;
    if (bytes.loadRaw(cookieAt) != Constants::dhcpMagicCookie) return AreaState::noCookie;
    bool ended = false;
    const auto inside = [&](U32 at) { return at < bytes.size(); };
    walkItems<OptionShape, U32>(bytes, 0, cookieAt + sizeof(U32), inside, [&](const auto& head, U32) {
        visit(head);
        ended = head.code == static_cast<U8>(DhcpOptionType::endOpt);
        return !ended;
    });
    return ended ? AreaState::wellFormed : AreaState::noEnd;
}

/// How positions after an option's code are computed: in 32 bits, or in 16 bits as the views do.
enum class Positions : U32 { plain = 0xffffffff, ofViews = 0xffff };

/// An option in a packet, or none (false). Reads are cut at the packet's end.
class RawOption {
public:
    RawOption() = default;
    RawOption(Wire::ByteView bytes, U32 at, Positions positions = Positions::plain)
        : bytes_(bytes), at_(at), positionBits_(static_cast<U32>(positions)) {}

    explicit operator bool() const { return positionBits_ != 0; }
    Wire::ByteView bytes() const { return bytes_; }
    U32 at() const { return at_; }
    U8 len() const { return bytes_.load<U8>((at_ + DhcpConst::optlen_offset) & positionBits_); }
    U32 dataAt() const { return (at_ + DhcpConst::optdata_offset) & positionBits_; }
    std::string_view data() const { return bytes_.text(dataAt(), len()); }
    /// The first bytes of the data, whatever the length is.
    template <class T>
    T load() const {
        return bytes_.load<T>(dataAt());
    }
    /// The data as a `T`; `otherwise` if there is no option or its length differs from the size of `T`.
    template <class T>
    T valueOr(T otherwise) const {
        return *this && len() == sizeof(T) ? load<T>() : otherwise;
    }

private:
    Wire::ByteView bytes_;
    U32 at_ = 0;
    U32 positionBits_ = 0;  // 0 means: no option
};

/// The options that a DhcpMsgOptions over the area of a message holds: the first one of each code, also after the end
/// option.
struct CollectedOptions {
    bool cookie = false;  ///< whether it is there, at its 16-bit position
    bool any = false;     ///< the collection is not empty
    RawOption info;
    RawOption end;
    RawOption maxMsgSize;  ///< set by collectOptions only
};
/// The options of the message whose BOOTP header starts at `offset`.
CollectedOptions collectOptions(Wire::ByteView bytes, U32 offset);

/// The result of one walk over the options area, which all readers share: the first and the last position of each code
/// up to the end option. Holds a view of the packet's bytes: stale once they move.
class OptionIndex {
public:
    OptionIndex(Wire::ByteView bytes, U32 offset);
    OptionIndex(const OptionIndex&) = delete;
    OptionIndex& operator=(const OptionIndex&) = delete;

    AreaState state() const { return state_; }
    bool wellFormed() const { return state_ == AreaState::wellFormed; }
    Wire::ByteView bytes() const { return bytes_; }
    U32 offset() const { return offset_; }
    /// The last option of this code, which is the one the raw readers use. For pads, the last one of the last run.
    RawOption last(U8 code) const { return isThere(code) ? RawOption(bytes_, last_[code]) : RawOption(); }
    RawOption last(DhcpOptionType code) const { return last(static_cast<U8>(code)); }

    /// As collectOptions, without walking the options again that are in the index.
    CollectedOptions collected() const;

private:
    bool isThere(U8 code) const { return (there_[code / 64] >> code % 64 & 1) != 0; }
    bool isOptionThere() const;
    RawOption first(U8 code) const { return isThere(code) ? RawOption(bytes_, first_[code]) : RawOption(); }
    void note(U8 code, U32 at) {
        if (!isThere(code)) {
            there_[code / 64] |= U64{1} << code % 64;
            first_[code] = at;
        }
        last_[code] = at;
    }

    Wire::ByteView bytes_;
    U32 offset_;
    std::array<U64, 4> there_{};
    std::array<U32, 256> first_;  // valid if the code is in `there_`
    std::array<U32, 256> last_;
    AreaState state_;
};

/// Traces the failure with the texts of parseDhcpOptions and the caller's line.
void traceAreaFailure(AreaState state, Kcore::SourceSite caller = Kcore::SourceSite::here());

/// Result and trace lines of getDhcpMsgTypeStringAndOpt.
Kcore::String messageTypeOf(const OptionIndex& index, U8& msgType);
/// The type name of a message without magic cookie.
extern const Kcore::String bootpMessageName;

}  // namespace DhcpLib
