#pragma once

#include <array>
#include <vector>

#include "DhcpLib/DhcpHdr/Enums.h"
#include "DhcpLib/Walk.h"
#include "Kcore/String.h"
#include "Kitnet/IpAddr.h"

namespace DhcpLib {

/// What came of a walk over the options area.
enum class AreaState : U8 { wellFormed, noSpace, noCookie, noEnd };

/// Walks the options of the message whose BOOTP header starts at `offset`, through the first end option; `visit(head)`
/// sees each item, the end option included, runs of pads as one. Positions are 32 bits wide.
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

/// Where the length and the data of an option are looked for: behind its code, or as the views have it, whose positions
/// are 16 bits wide.
enum class Positions : U32 { plain = 0xffffffff, ofViews = 0xffff };

/// An option where it lies in a packet; false where there is none. Reads are cut at the packet's end.
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
    /// The first bytes of the data, whatever the length says.
    template <class T>
    T load() const {
        return bytes_.load<T>(dataAt());
    }
    /// The data as a `T`, or `otherwise` where there is no option or its length is another.
    template <class T>
    T valueOr(T otherwise) const {
        return *this && len() == sizeof(T) ? load<T>() : otherwise;
    }

private:
    Wire::ByteView bytes_;
    U32 at_ = 0;
    U32 positionBits_ = 0;  // of no option, none
};

/// One walk over the options area, from which every reader answers: for each code its first and its last place up to
/// the end option, and what lies behind that. Looks at the packet's bytes: stale once they move.
class OptionIndex {
public:
    OptionIndex(Wire::ByteView bytes, U32 offset);
    OptionIndex(const OptionIndex&) = delete;
    OptionIndex& operator=(const OptionIndex&) = delete;

    AreaState state() const { return state_; }
    bool wellFormed() const { return state_ == AreaState::wellFormed; }
    Wire::ByteView bytes() const { return bytes_; }
    U32 offset() const { return offset_; }
    /// The last occurrence: the one that counts for the raw readers. Of pads, the last one.
    RawOption last(U8 code) const { return isThere(code) ? RawOption(bytes_, last_[code]) : RawOption(); }
    RawOption last(DhcpOptionType code) const { return last(static_cast<U8>(code)); }

    /// What the keyed collection over the same area (`DhcpMsgOptions`) holds: the first option of a code, also behind
    /// the first end option.
    struct Collected {
        bool cookie = false;  ///< stands where 16-bit positions look for it
        bool any = false;     ///< the collection is not empty
        RawOption info;
        RawOption end;
        RawOption maxMsgSize;  ///< only where it was asked for
    };
    Collected collected(bool withMaxMsgSize = false) const;

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
    std::array<U32, 256> first_;  // valid where `there_` says so
    std::array<U32, 256> last_;
    AreaState state_;
};

/// Traces why the walk failed, as parseDhcpOptions does.
void traceAreaFailure(AreaState state);

/// The message type's name as getDhcpMsgTypeStringAndOpt gives it; traces as that does.
Kcore::String messageTypeOf(const OptionIndex& index, U8& msgType);
/// What the message is called when it has no magic cookie.
extern const Kcore::String bootpMessageName;

}  // namespace DhcpLib
