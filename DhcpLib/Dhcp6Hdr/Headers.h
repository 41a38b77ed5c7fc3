#pragma once

#include "DhcpLib/Dhcp6Hdr/Const.h"
#include "DhcpLib/Dhcp6Hdr/Enums.h"
#include "DhcpLib/Dhcp6Hdr/Field.h"
#include "Kitnet/IpAddr.h"

namespace DhcpLib {

/// The transaction id of a client/server message: three bytes in wire order. It is never converted to a number.
class DHCPLIB_EXPORT Dhcp6Xid : public Kitnet::WireBytes<Dhcp6Xid, 3> {
public:
    static constexpr std::string_view typeName = "DhcpLib::Dhcp6Xid";

    constexpr Dhcp6Xid() = default;
    /// From the three bytes in wire order.
    constexpr Dhcp6Xid(U8 first, U8 second, U8 third) { bytes_ = {first, second, third}; }

    /// "0x" and six hexadecimal digits.
    void appendText(std::string& out) const;
    static bool parse(std::string_view text, Dhcp6Xid* value);
};
static_assert(sizeof(Dhcp6Xid) == Dhcp6Const::xid_size && std::is_trivially_copyable_v<Dhcp6Xid>);

/// View of the start of every DHCPv6 message (RFC 8415, sections 8 and 9), at `offset` of a packet:
///    offset 0  message type (1)
/// The header views do not check bounds: bytes past the packet's end read as 0, and a setter that would write there
/// throws Tyk::InternalException "length value exceeds pkt-length." and changes nothing. Positions wrap at 65536. Every
/// setter writes the packet and the cached value. Stale once the packet grows at its head.
class DHCPLIB_EXPORT Dhcp6HdrBase : public PacketView {
public:
    using Ptr = Kcore::Ptr<Dhcp6HdrBase>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;  // counts the derived views, too

    Dhcp6HdrBase(const PktPtr& pkt, U16 offset) : PacketView(pkt), offset_(offset) { handleInitializedBase(); }
    ~Dhcp6HdrBase() override;
    /// Reads the message type; later calls do nothing.
    void handleInitializedBase();

    U16 offset() const { return offset_; }
    /// The message type byte.
    U8 msg() const { return msg_.value; }
    /// The message type, which need not be a member of the enumeration.
    Dhcp6MsgType msgType() const { return static_cast<Dhcp6MsgType>(msg_.value); }
    /// Writes the low byte of `type`.
    void msgTypeIs(Dhcp6MsgType type) { write(msg_, static_cast<U8>(type)); }
    /// Whether the message type has been read, which the constructor does.
    bool initializedBase() const { return initializedBase_; }

    const Kcore::TypeData& typeData() const override;

protected:
    template <class T, U8 fieldAt>
    void read(Field<T, fieldAt>& field) {
        field.read(bytes(), offset_);
    }
    template <class T, U8 fieldAt>
    void write(Field<T, fieldAt>& field, const T& value) {
        field.write(writablePkt(), offset_, value);
    }
    template <class View, class... More>
    static constexpr auto declarationOf(std::string_view name, Kcore::Attribute<More>... more) {
        using Kcore::attribute;
        return Kcore::declare(name, attribute("pkt", &View::pkt), attribute("offset", &View::offset),
                              attribute("msg", &View::msg), attribute("msgType", &View::msgType),
                              attribute("initializedBase", &View::initializedBase), more...);
    }

public:
    static constexpr auto declaration() { return declarationOf<Dhcp6HdrBase>("Dhcp6HdrBase"); }

private:
    U16 offset_;
    Field<U8, Dhcp6Const::msgtype_offset> msg_;
    bool initializedBase_ = false;
    [[no_unique_address]] KitSlab::Tracked<Dhcp6HdrBase> tracked_;
};

/// View of the header of a client/server message (RFC 8415, section 8). Options start at reghdr_size (4):
///    offset 0  message type (1)     1  transaction id (3)
class DHCPLIB_EXPORT Dhcp6RegHdr final : public Dhcp6HdrBase {
public:
    using Ptr = Kcore::Ptr<Dhcp6RegHdr>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    Dhcp6RegHdr(const PktPtr& pkt, U16 offset) : Dhcp6HdrBase(pkt, offset) { handleInitialized(); }
    static Ptr Dhcp6RegHdrIs(const PktPtr& pkt, U16 offset);
    /// Reads the transaction id; later calls do nothing.
    void handleInitialized();

    /// The transaction id.
    const Dhcp6Xid& xid() const { return xid_.value; }
    void xidIs(const Dhcp6Xid& xid) { write(xid_, xid); }
    bool initialized() const { return initialized_; }

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        return declarationOf<Dhcp6RegHdr>("Dhcp6RegHdr", attribute("xid", &Dhcp6RegHdr::xid),
                                          attribute("initialized", &Dhcp6RegHdr::initialized));
    }

private:
    Field<Dhcp6Xid, Dhcp6Const::xid_offset> xid_;
    bool initialized_ = false;
    [[no_unique_address]] KitSlab::Tracked<Dhcp6RegHdr> tracked_;
};

DHCPLIB_EXPORT Dhcp6RegHdr::Ptr dhcp6RegHdrFactory(const PktPtr& pkt, U16 offset);

/// View of the header of a relay message (RFC 8415, section 9). Options start at relayhdr_size (34):
///    offset 0  message type (1)     1  hop count (1)     2  link address (16)     18  peer address (16)
class DHCPLIB_EXPORT Dhcp6RelayHdr final : public Dhcp6HdrBase {
public:
    using Ptr = Kcore::Ptr<Dhcp6RelayHdr>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    Dhcp6RelayHdr(const PktPtr& pkt, U16 offset) : Dhcp6HdrBase(pkt, offset) { handleInitialized(); }
    static Ptr Dhcp6RelayHdrIs(const PktPtr& pkt, U16 offset);
    /// Reads hop count and addresses; later calls do nothing.
    void handleInitialized();

    /// Number of relay agents that have relayed the message before this one.
    U8 hopCount() const { return hopCount_.value; }
    void hopCountIs(U8 n) { write(hopCount_, n); }
    /// Adds `n`, modulo 256, and returns the sum. The caller enforces Constants::dhcp6HopCountLimit
    /// (docs/compatibility.md#hop-counts-wrap).
    U8 hopCountInc(U8 n);
    /// An address of the client's link, or zero.
    const Kitnet::Ip6Addr& linkAddr() const { return linkAddr_.value; }
    void linkAddrIs(const Kitnet::Ip6Addr& address) { write(linkAddr_, address); }
    /// The address of the client or relay agent from which the message came.
    const Kitnet::Ip6Addr& peerAddr() const { return peerAddr_.value; }
    void peerAddrIs(const Kitnet::Ip6Addr& address) { write(peerAddr_, address); }
    bool initialized() const { return initialized_; }

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using V = Dhcp6RelayHdr;
        return declarationOf<V>("Dhcp6RelayHdr", attribute("hopCount", &V::hopCount),
                                attribute("linkAddr", &V::linkAddr), attribute("peerAddr", &V::peerAddr),
                                attribute("initialized", &V::initialized));
    }

private:
    Field<U8, Dhcp6Const::hopcnt_offset> hopCount_;
    Field<Kitnet::Ip6Addr, Dhcp6Const::linkaddr_offset> linkAddr_;
    Field<Kitnet::Ip6Addr, Dhcp6Const::peeraddr_offset> peerAddr_;
    bool initialized_ = false;
    [[no_unique_address]] KitSlab::Tracked<Dhcp6RelayHdr> tracked_;
};

DHCPLIB_EXPORT Dhcp6RelayHdr::Ptr dhcp6RelayHdrFactory(const PktPtr& pkt, U16 offset);

}  // namespace DhcpLib
