#pragma once

#include <type_traits>

#include "DhcpLib/DhcpHdr/Enums.h"
#include "DhcpLib/PacketView.h"
#include "Kitnet/EthAddr.h"
#include "Kitnet/IpAddr.h"
#include "Kitnet/NetInteger.h"

namespace DhcpLib {

/// A raw `op` byte. True when it is not zero.
class BootpOp {
public:
    /// From the byte on the wire.
    constexpr BootpOp(U8 value = 0) : value_(value) {}
    /// The byte on the wire.
    constexpr U8 value() const { return value_; }
    /// Whether the byte is not zero.
    constexpr explicit operator bool() const { return value_ != 0; }
    friend constexpr auto operator<=>(const BootpOp&, const BootpOp&) = default;
    void appendText(std::string& out) const { Kcore::appendText(out, value_); }
    std::size_t hash() const { return Kcore::hashOf(value_); }
    static constexpr auto declaration() {
        return Kcore::declare("BootpOp", Kcore::attribute("value", &BootpOp::value_));
    }

private:
    U8 value_;
};

/// The 16-bit `flags` field of the BOOTP header (RFC 2131, figure 2). True when it is not zero.
class Flags {
public:
    constexpr Flags() = default;
    /// From the field on the wire.
    constexpr explicit Flags(Kitnet::NetU16 value) : value_(value) {}

    /// The field as it is on the wire.
    constexpr Kitnet::NetU16 value() const { return value_; }
    constexpr void valueIs(Kitnet::NetU16 value) { value_ = value; }
    /// Bit 15: the client cannot receive unicast replies yet.
    constexpr bool broadcast() const { return value_.value() >> 15 != 0; }
    constexpr void broadcastIs(bool b) {
        value_.valueIs(static_cast<U16>((value_.value() & 0x7fff) | (b ? 0x8000 : 0)));
    }
    /// The low 15 bits, which must be zero.
    constexpr U16 mbz() const { return value_.value() & 0x7fff; }
    constexpr void mbzIs(U16 m) { value_.valueIs(static_cast<U16>((value_.value() & 0x8000) | (m & 0x7fff))); }
    /// Whether the field is not zero.
    constexpr explicit operator bool() const { return value_.value() != 0; }
    friend constexpr bool operator==(const Flags& a, const Flags& b) { return a.value_ == b.value_; }
    friend constexpr auto operator<=>(const Flags& a, const Flags& b) { return a.value_ <=> b.value_; }
    void appendText(std::string& out) const { Kcore::appendText(out, value_); }
    std::size_t hash() const { return Kcore::hashOf(value_); }
    static constexpr auto declaration() {
        return Kcore::declare("Flags", Kcore::attribute("value", &Flags::value_),
                              Kcore::derived("broadcast", &Flags::broadcast), Kcore::derived("mbz", &Flags::mbz));
    }

private:
    Kitnet::NetU16 value_;
};

/// The first 34 bytes of the BOOTP header (RFC 2131, figure 1) in their wire layout:
///    offset 0  op (1)     1  htype (1)     2  hlen (1)     3  hops (1)     4  xid (4)     8  secs, s (2)
///          10  flags (2)     12  ciaddr (4)     16  yiaddr (4)     20  siaddr (4)     24  giaddr (4)
///          28  chaddr (6): the first 6 of 16 bytes
/// The other 202 bytes up to the magic cookie have no record.
class DhcpHdr {
public:
    constexpr DhcpHdr() = default;

    /// The `op` byte: 1 for a request, 2 for a reply.
    BootpOp op() const { return op_; }
    void opIs(BootpOp op) { op_ = op; }
    /// `bootpOpUnknown` for any op byte but 1 and 2.
    BootpOpType bootpOp() const {
        return op_.value() == 1 || op_.value() == 2 ? static_cast<BootpOpType>(op_.value())
                                                    : BootpOpType::bootpOpUnknown;
    }
    void bootpOpIs(BootpOpType type) { op_ = BootpOp(static_cast<U8>(type)); }
    /// Hardware type; Constants::hardwareTypeEthernet (1) for Ethernet.
    U8 htype() const { return htype_; }
    void htypeIs(U8 htype) { htype_ = htype; }
    /// Length of the hardware address in bytes; 6 for Ethernet. Not checked.
    U8 hlen() const { return hlen_; }
    void hlenIs(U8 hlen) { hlen_ = hlen; }
    /// Number of relay agents that the message has passed.
    U8 hops() const { return hops_; }
    void hopsIs(U8 hops) { hops_ = hops; }
    /// Adds modulo 256. The caller enforces Constants::dhcpHopCountLimit (docs/compatibility.md#hop-counts-wrap).
    void hopsInc(U8 n) { hops_ = static_cast<U8>(hops_ + n); }
    /// Transaction id, in wire order.
    Kitnet::NetU32 xid() const { return xid_; }
    void xidIs(Kitnet::NetU32 xid) { xid_ = xid; }
    /// Transaction id as a number.
    U32 xidU32() const { return xid_.value(); }
    void xidU32Is(U32 xid) { xid_.valueIs(xid); }
    /// Seconds since the client began, in wire order.
    Kitnet::NetU16 secs() const { return secs_; }
    void secsIs(Kitnet::NetU16 secs) { secs_ = secs; }
    /// Seconds since the client began.
    U16 secsU16() const { return secs_.value(); }
    void secsU16Is(U16 secs) { secs_.valueIs(secs); }
    /// The flags, in wire order; see Flags.
    Kitnet::NetU16 flags() const { return flags_; }
    void flagsIs(Kitnet::NetU16 flags) { flags_ = flags; }
    /// The flags as a number; see Flags.
    U16 flagsU16() const { return flags_.value(); }
    void flagsU16Is(U16 flags) { flags_.valueIs(flags); }
    /// Address of a client that has one already, else 0.0.0.0.
    Kitnet::IpAddr ciaddr() const { return ciaddr_; }
    void ciaddrIs(Kitnet::IpAddr ciaddr) { ciaddr_ = ciaddr; }
    /// Address that the server gives to the client.
    Kitnet::IpAddr yiaddr() const { return yiaddr_; }
    void yiaddrIs(Kitnet::IpAddr yiaddr) { yiaddr_ = yiaddr; }
    /// Address of the next server in the client's start-up.
    Kitnet::IpAddr siaddr() const { return siaddr_; }
    void siaddrIs(Kitnet::IpAddr siaddr) { siaddr_ = siaddr; }
    /// Address of the first relay agent, else 0.0.0.0.
    Kitnet::IpAddr giaddr() const { return giaddr_; }
    void giaddrIs(Kitnet::IpAddr giaddr) { giaddr_ = giaddr; }
    /// MAC address of the client: the first 6 of the 16 bytes.
    Kitnet::EthAddr chaddr() const { return chaddr_; }
    void chaddrIs(const Kitnet::EthAddr& chaddr) { chaddr_ = chaddr; }
    /// Bit 15 of `flags`.
    static constexpr Kitnet::NetU16 broadcastFlag() { return Kitnet::NetU16(0x8000); }

    /// The record with a copy of the 34 bytes at `bytes`. Requires: they are readable.
    static DhcpHdr fromBytes(const U8* bytes) {
        DhcpHdr header;
        std::memcpy(static_cast<void*>(&header), bytes, sizeof header);
        return header;
    }
    /// The 34 bytes in wire order. Valid as long as the record.
    const U8* bytes() const { return reinterpret_cast<const U8*>(this); }

    friend bool operator==(const DhcpHdr& a, const DhcpHdr& b) { return Kcore::equalAttributes(a, b); }
    std::size_t hash() const { return Kcore::hashAttributes(*this); }
    static constexpr auto declaration() {
        using Kcore::attribute;
        using Kcore::derived;
        return Kcore::declare("DhcpHdr", attribute("op", &DhcpHdr::op_), attribute("htype", &DhcpHdr::htype_),
                              attribute("hlen", &DhcpHdr::hlen_), attribute("hops", &DhcpHdr::hops_),
                              attribute("xid", &DhcpHdr::xid_), attribute("secs", &DhcpHdr::secs_),
                              attribute("flags", &DhcpHdr::flags_), attribute("ciaddr", &DhcpHdr::ciaddr_),
                              attribute("yiaddr", &DhcpHdr::yiaddr_), attribute("siaddr", &DhcpHdr::siaddr_),
                              attribute("giaddr", &DhcpHdr::giaddr_), attribute("chaddr", &DhcpHdr::chaddr_),
                              derived("xidU32", &DhcpHdr::xidU32), derived("secsU16", &DhcpHdr::secsU16),
                              derived("flagsU16", &DhcpHdr::flagsU16), derived("bootpOp", &DhcpHdr::bootpOp),
                              Kcore::constant("broadcastFlag", broadcastFlag()));
    }

private:
    BootpOp op_;
    U8 htype_ = 0;
    U8 hlen_ = 0;
    U8 hops_ = 0;
    Kitnet::NetU32 xid_;
    Kitnet::NetU16 secs_;
    Kitnet::NetU16 flags_;
    Kitnet::IpAddr ciaddr_;
    Kitnet::IpAddr yiaddr_;
    Kitnet::IpAddr siaddr_;
    Kitnet::IpAddr giaddr_;
    Kitnet::EthAddr chaddr_;
};
static_assert(sizeof(DhcpHdr) == 34 && alignof(DhcpHdr) == 1 && std::is_trivially_copyable_v<DhcpHdr>);

/// View of the BOOTP header at `offset` of a packet. Getters read the packet through `header`; setters write to it. If
/// there is no header, getters return zero and setters do nothing. Stale once the packet has grown at its head: call
/// handleHeader() again or create a new view.
class DHCPLIB_EXPORT DhcpHdrWrapper final : public PacketView {
public:
    using Ptr = Kcore::Ptr<DhcpHdrWrapper>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    /// Requires: the packet holds 34 bytes from `offset` on. Otherwise the assertion of handleHeader() fails.
    DhcpHdrWrapper(const PktPtr& pkt, U32 offset) : PacketView(pkt), offset_(offset) { handleHeader(); }
    static Ptr DhcpHdrWrapperIs(const PktPtr& pkt, U32 offset);

    /// Position of the header in the packet.
    U32 offset() const { return offset_; }
    /// The record in the packet; null if the packet does not, or no longer, hold all of it.
    const DhcpHdr* header() const { return const_cast<DhcpHdrWrapper*>(this)->header(); }
    /// The record in the packet, for writing; null as for the const form.
    DhcpHdr* header();
    /// Points the view to the packet's current bytes. Asserts "( offset_ + sizeof( DhcpHdr ) ) <= pkt_->frontBytes()".
    void handleHeader();

    BootpOp op() const { return get(&DhcpHdr::op); }
    void opIs(BootpOp op) { set(&DhcpHdr::opIs, op); }
    U8 htype() const { return get(&DhcpHdr::htype); }
    void htypeIs(U8 htype) { set(&DhcpHdr::htypeIs, htype); }
    U8 hlen() const { return get(&DhcpHdr::hlen); }
    void hlenIs(U8 hlen) { set(&DhcpHdr::hlenIs, hlen); }
    U8 hops() const { return get(&DhcpHdr::hops); }
    void hopsIs(U8 hops) { set(&DhcpHdr::hopsIs, hops); }
    U32 xid() const { return get(&DhcpHdr::xidU32); }
    void xidIs(U32 xid) { set(&DhcpHdr::xidU32Is, xid); }
    U16 secs() const { return get(&DhcpHdr::secsU16); }
    void secsIs(U16 secs) { set(&DhcpHdr::secsU16Is, secs); }
    U16 flags() const { return get(&DhcpHdr::flagsU16); }
    void flagsIs(U16 flags) { set(&DhcpHdr::flagsU16Is, flags); }
    Kitnet::IpAddr ciaddr() const { return get(&DhcpHdr::ciaddr); }
    void ciaddrIs(Kitnet::IpAddr ciaddr) { set(&DhcpHdr::ciaddrIs, ciaddr); }
    Kitnet::IpAddr yiaddr() const { return get(&DhcpHdr::yiaddr); }
    void yiaddrIs(Kitnet::IpAddr yiaddr) { set(&DhcpHdr::yiaddrIs, yiaddr); }
    Kitnet::IpAddr siaddr() const { return get(&DhcpHdr::siaddr); }
    void siaddrIs(Kitnet::IpAddr siaddr) { set(&DhcpHdr::siaddrIs, siaddr); }
    Kitnet::IpAddr giaddr() const { return get(&DhcpHdr::giaddr); }
    void giaddrIs(Kitnet::IpAddr giaddr) { set(&DhcpHdr::giaddrIs, giaddr); }
    Kitnet::EthAddr chaddr() const { return get(&DhcpHdr::chaddr); }
    void chaddrIs(const Kitnet::EthAddr& chaddr) { set(&DhcpHdr::chaddrIs, chaddr); }

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using W = DhcpHdrWrapper;
        return Kcore::declare("DhcpHdrWrapper", attribute("pkt", &W::pkt), attribute("offset", &W::offset_),
                              attribute("header", [](const W& w) { return w.header(); }), attribute("op", &W::op),
                              attribute("htype", &W::htype), attribute("hlen", &W::hlen), attribute("hops", &W::hops),
                              attribute("xid", &W::xid), attribute("secs", &W::secs), attribute("flags", &W::flags),
                              attribute("ciaddr", &W::ciaddr), attribute("yiaddr", &W::yiaddr),
                              attribute("siaddr", &W::siaddr), attribute("giaddr", &W::giaddr),
                              attribute("chaddr", &W::chaddr));
    }

private:
    template <class T>
    T get(T (DhcpHdr::*field)() const) const {
        const DhcpHdr* record = header();
        return record != nullptr ? (record->*field)() : T{};
    }
    template <class T, class V>
    void set(void (DhcpHdr::*field)(T), const V& value) {
        if (DhcpHdr* record = header()) (record->*field)(value);
    }

    U32 offset_;
    bool hasHeader_ = false;
    [[no_unique_address]] KitSlab::Tracked<DhcpHdrWrapper> tracked_;
};

DHCPLIB_EXPORT DhcpHdrWrapper::Ptr dhcpHdrWrapperFactory(const PktPtr& pkt, U32 offset);

/// View of the magic cookie (RFC 2131, section 3), the four bytes after the 236-byte BOOTP header that mark a DHCP
/// message. Bytes past the packet's end read as 0. A wrong cookie is not an error.
class DHCPLIB_EXPORT MagicCookie final : public PacketView {
public:
    using Ptr = Kcore::Ptr<MagicCookie>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    MagicCookie(const PktPtr& pkt, U16 offset) : PacketView(pkt), offset_(offset) { handleInitialized(); }
    static Ptr MagicCookieIs(const PktPtr& pkt, U16 offset);

    /// Reads the packet; later calls do nothing.
    void handleInitialized();
    U16 offset() const { return offset_; }
    /// The four bytes in the host's byte order, without conversion.
    U32 cookie() const { return cookie_; }
    /// Whether the bytes are 63 82 53 63.
    bool isDhcpMagicCookie() const { return isDhcpMagicCookie_; }
    bool initialized() const { return initialized_; }

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        return Kcore::declare("MagicCookie", attribute("pkt", &MagicCookie::pkt),
                              attribute("offset", &MagicCookie::offset_), attribute("cookie", &MagicCookie::cookie_),
                              attribute("isDhcpMagicCookie", &MagicCookie::isDhcpMagicCookie_),
                              attribute("initialized", &MagicCookie::initialized_));
    }

private:
    U16 offset_;
    U32 cookie_ = 0;
    bool isDhcpMagicCookie_ = false;
    bool initialized_ = false;
    [[no_unique_address]] KitSlab::Tracked<MagicCookie> tracked_;
};

DHCPLIB_EXPORT MagicCookie::Ptr magicCookieFactory(const PktPtr& pkt, U16 offset);

}  // namespace DhcpLib
