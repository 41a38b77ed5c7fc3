#include "message/Read6.h"

#include <algorithm>

#include "DhcpLib/Dhcp6Hdr/Nested.h"
#include "message/OptionTable.h"

namespace DhcpTool {

namespace {

using namespace DhcpLib;
using Wire::ByteView;

constexpr U32 lastPosition = 0xffff;  // positions in a DHCPv6 message have 16 bits
constexpr U32 optionHeaderBytes = Dhcp6Const::optdata_offset;

class Reader {
public:
    explicit Reader(Message& message) : message_(message), bytes_(*message.arrival.pkt) {}

    void read() {
        if (message_.headers.messageAt > lastPosition)
            return fault("message starts too far from the start of the frame", message_.headers.messageAt);
        const Dhcp6MessagePlace outermost = place();
        for (const Dhcp6MessagePlace& place : dhcp6RelayChain(message_.arrival.pkt, outermost)) addLayer(place);
        if (message_.layers.empty()) {
            if (!bytes_.has(outermost.offset, Dhcp6Const::reghdr_size))
                return fault("frame ends in the DHCPv6 header", bytes_.size());
            addLayer(outermost);
        }
        if (const Layer6* const inside = message_.innermost())
            readLeases(*inside);
        else
            fault("relay message without a whole message inside", message_.layers.back().at);
    }

private:
    /// The first fault counts.
    void fault(std::string_view what, U32 offset) {
        if (!message_.fault) message_.fault = Fault{what, offset};
    }

    Dhcp6MessagePlace place() const {
        const U32 at = message_.headers.messageAt, end = message_.headers.messageEnd;
        const bool sound = end >= at + Dhcp6Const::reghdr_size;
        return {static_cast<U16>(at), sound ? std::min(end, bytes_.size()) : bytes_.size()};
    }

    void addLayer(const Dhcp6MessagePlace& place) {
        const U32 at = place.offset;
        Layer6 layer;
        layer.type = static_cast<Dhcp6MsgType>(bytes_.load<U8>(at));
        layer.at = at;
        if (layer.isRelay() && bytes_.has(at, Dhcp6Const::relayhdr_size)) {
            layer.hopCount = bytes_.load<U8>(at + Dhcp6Const::hopcnt_offset);
            layer.linkAddr = bytes_.load<Kitnet::Ip6Addr>(at + Dhcp6Const::linkaddr_offset);
            layer.peerAddr = bytes_.load<Kitnet::Ip6Addr>(at + Dhcp6Const::peeraddr_offset);
        } else
            layer.xid = bytes_.load<Dhcp6Xid>(at + Dhcp6Const::xid_offset);
        layer.firstOption = static_cast<U32>(message_.options.size());
        forEachOption(at + (layer.isRelay() ? Dhcp6Const::relayhdr_size : Dhcp6Const::reghdr_size), place.end,
                      [&](const Item& option) { message_.options.push_back(option); });
        layer.optionCount = static_cast<U32>(message_.options.size()) - layer.firstOption;
        message_.layers.push_back(layer);
    }

    /// Calls `take` for each whole option up to code 0.
    template <class Take>
    void forEachOption(U32 first, U32 end, Take take) {
        const ByteView inside(bytes_.data(), std::min({end, bytes_.size(), lastPosition}));
        forEachItem<Option6Shape>(inside, first, [&](const Item& option) {
            const bool taken = option.code != 0 && option.isWhole();
            check(option);
            if (taken) take(option);
            return taken;
        });
    }

    void check(const Item& option) {
        if (message_.fault) return;
        const OptionInfo* const info = optionInfo6(option.code);
        const auto faultOf = [&](std::string_view what) { return Fault{what, option.offset, "option", option.code}; };
        if (option.code == 0)
            message_.fault = faultOf("ends the options");
        else if (!option.isWhole())
            message_.fault = faultOf("runs past the end of what contains it");
        else if (info != nullptr && !fits(info->layout, option.length))
            message_.fault = faultOf("has a wrong length");
    }

    void readLeases(const Layer6& layer) {
        for (const Item& option : message_.optionsOf(layer)) switch (static_cast<Dhcp6OptionType>(option.code)) {
                case Dhcp6OptionType::iana:
                    addIa("IA_NA", option, Dhcp6Const::ianaopt_minlen);
                    break;
                case Dhcp6OptionType::iapd:
                    addIa("IA_PD", option, Dhcp6Const::iapdopt_minlen);
                    break;
                case Dhcp6OptionType::iata:
                    addIa("IA_TA", option, sizeof(U32));
                    break;
                case Dhcp6OptionType::statusCode:
                    if (!message_.status6) message_.status6 = statusOf(option);
                    break;
                default:
                    break;
            }
    }

    /// `headBytes`: size of the fields in front of the nested options.
    void addIa(std::string_view kind, const Item& option, U32 headBytes) {
        if (option.length < headBytes) return;
        Ia6 ia;
        ia.kind = kind;
        ia.iaid = option.load<U32>();
        if (headBytes == Dhcp6Const::ianaopt_minlen) {
            ia.t1 = option.load<U32>(Dhcp6Const::ianat1_offset - optionHeaderBytes);
            ia.t2 = option.load<U32>(Dhcp6Const::ianat2_offset - optionHeaderBytes);
        }
        ia.firstLease = static_cast<U32>(message_.leases6.size());
        forEachNested(option, headBytes, [&](const Item& nested) {
            if (nested.code == static_cast<U16>(Dhcp6OptionType::statusCode)) ia.status = statusOf(nested);
            addLease(nested);
        });
        ia.leaseCount = static_cast<U32>(message_.leases6.size()) - ia.firstLease;
        message_.ias.push_back(ia);
    }

    template <class Take>
    void forEachNested(const Item& option, U32 headBytes, Take take) {
        forEachOption(option.dataOffset + headBytes, option.dataOffset + option.length, take);
    }

    void addLease(const Item& option) {
        constexpr U32 header = optionHeaderBytes;
        Lease6 lease;
        U32 headBytes = Dhcp6Const::iaaddropt_minlen;
        if (option.code == static_cast<U16>(Dhcp6OptionType::iaAddress)) {
            lease.address = option.load<Kitnet::Ip6Addr>(Dhcp6Const::iaaddr_offset - header);
            lease.preferred = option.load<U32>(Dhcp6Const::iaaddr_preftime_offset - header);
            lease.valid = option.load<U32>(Dhcp6Const::iaaddr_validtime_offset - header);
        } else if (option.code == static_cast<U16>(Dhcp6OptionType::iaPrefix)) {
            headBytes = Dhcp6Const::iapfxopt_minlen;
            lease.address = option.load<Kitnet::Ip6Addr>(Dhcp6Const::iapfxaddr_offset - header);
            lease.prefixBits = option.load<U8>(Dhcp6Const::iapfxlen_offset - header);
            lease.preferred = option.load<U32>(Dhcp6Const::iapfxpreftime_offset - header);
            lease.valid = option.load<U32>(Dhcp6Const::iapfxvalidtime_offset - header);
        } else
            return;
        if (option.length < headBytes) return;
        forEachNested(option, headBytes, [&](const Item& nested) {
            if (nested.code == static_cast<U16>(Dhcp6OptionType::statusCode)) lease.status = statusOf(nested);
        });
        message_.leases6.push_back(lease);
    }

    static std::optional<Status6> statusOf(const Item& option) {
        constexpr U32 codeBytes = sizeof(U16);
        if (option.length < codeBytes) return std::nullopt;
        return Status6{option.load<U16>(), option.data.substr(codeBytes), option.offset};
    }

    Message& message_;
    const ByteView bytes_;
};

}  // namespace

void readContents6(Message& message) { Reader(message).read(); }

}  // namespace DhcpTool
