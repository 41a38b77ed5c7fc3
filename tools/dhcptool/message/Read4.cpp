#include "message/Read4.h"

#include <algorithm>

#include "message/OptionTable.h"

namespace DhcpTool {

namespace {

using DhcpLib::Constants;
using DhcpLib::Wire::ByteView;
using Code = DhcpLib::DhcpOptionType;

constexpr U32 snameAt = 44, snameBytes = 64, fileAt = 108, fileBytes = 128;
constexpr U16 overloadOption = 52;  // RFC 2132, section 9.3

class Reader {
public:
    explicit Reader(Message& message)
        : message_(message), bytes_(*message.arrival.pkt), at_(message.headers.messageAt) {}

    void read() {
        message_.header = bytes_.load<DhcpLib::DhcpHdr>(at_);
        message_.headerBytes = std::min<U32>(bytes_.from(at_), sizeof(DhcpLib::DhcpHdr));
        if (!bytes_.has(at_, sizeof(DhcpLib::DhcpHdr))) return fault("frame ends in the BOOTP header", bytes_.size());
        const U32 cookieAt = at_ + Constants::bootpHdrSize;
        if (bytes_.has(cookieAt, sizeof(U32)) && bytes_.loadRaw(cookieAt) != Constants::dhcpMagicCookie)
            message_.isBootp = true;
        if (message_.isBootp) return readTexts(0);
        if (bytes_.size() <= cookieAt) return fault("frame ends before the options", bytes_.size());
        if (!readOptions(bytes_, cookieAt + U32{sizeof(U32)})) fault("no end option", bytes_.size());
        const Item* const overload = message_.option(overloadOption);
        readTexts(overload != nullptr ? overload->load<U8>() : U8{0});
        if (const Item* const info = message_.option(static_cast<U8>(Code::infoOpt))) readRelayInfo(*info);
    }

private:
    /// The first fault counts.
    void fault(std::string_view what, U32 offset) {
        if (!message_.fault) message_.fault = Fault{what, offset};
    }

    void check(const Item& option, std::string_view kind, const OptionInfo* info, std::string_view overrun) {
        if (message_.fault) return;
        if (!option.isWhole())
            message_.fault = Fault{overrun, option.offset, kind, option.code};
        else if (info != nullptr && !fits(info->layout, option.length))
            message_.fault = Fault{"has a wrong length", option.offset, kind, option.code};
    }

    /// Returns whether it reached an end option.
    bool readOptions(ByteView area, U32 first) {
        bool ended = false;
        forEachItem<DhcpLib::OptionShape>(area, first, [&](const Item& option) {
            ended = option.code == static_cast<U16>(Code::endOpt);
            if (ended) return false;
            message_.options.push_back(option);
            check(option, "option", optionInfo4(option.code), "runs past the end of the frame");
            return true;
        });
        return ended;
    }

    /// `overload`: which of the two texts hold options instead (1 file, 2 sname).
    void readTexts(U8 overload) {
        if ((overload & 1) != 0)
            readOverloaded(fileAt, fileBytes);
        else
            message_.file = textAt(fileAt, fileBytes);
        if ((overload & 2) != 0)
            readOverloaded(snameAt, snameBytes);
        else
            message_.sname = textAt(snameAt, snameBytes);
    }

    /// Those options stand in front of the others, because the parser ignores them and the last one of a code counts.
    void readOverloaded(U32 at, U32 size) {
        const auto before = static_cast<std::ptrdiff_t>(message_.options.size());
        readOptions({bytes_.data(), std::min(at_ + at + size, bytes_.size())}, at_ + at);
        std::rotate(message_.options.begin(), message_.options.begin() + before, message_.options.end());
    }

    std::string_view textAt(U32 at, U32 size) const {
        const std::string_view field = bytes_.text(at_ + at, size);
        return field.substr(0, field.find('\0'));
    }

    void readRelayInfo(const Item& info) {
        const ByteView inside(bytes_.data(), info.dataOffset + static_cast<U32>(info.data.size()));
        forEachItem<DhcpLib::SubOptionShape>(inside, info.dataOffset, [&](const Item& option) {
            message_.relayInfo.push_back(option);
            check(option, "sub-option", relayOptionInfo(option.code), "runs past the end of option 82");
            return true;
        });
    }

    Message& message_;
    const ByteView bytes_;
    const U32 at_;
};

}  // namespace

void readContents4(Message& message) { Reader(message).read(); }

}  // namespace DhcpTool
