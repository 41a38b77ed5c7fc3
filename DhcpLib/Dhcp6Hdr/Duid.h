#pragma once

#include "DhcpLib/Dhcp6Hdr/OptionView.h"
#include "Kitnet/EthAddr.h"

namespace DhcpLib {

/// The fields of a DUID (RFC 8415, section 11; RFC 6355), by type:
///    DUID offset 0  type (2)
///      llt (1)   2  hardware type (2)     4  time, s since 2000 (4)     8  MAC (6)
///      en (2)    2  enterprise number (4)     6  identifier
///      ll (3)    2  hardware type (2)     4  MAC (6)
///      uuid (4)  2  UUID (16)
/// Fields that the type does not have are zero or empty. The texts point into the packet.
struct DuidFields {
    U16 duidType = 0;        ///< 1 to 4 for the types above; other values are not interpreted
    U16 hardwareType = 0;    ///< 1 is Ethernet
    U32 duidTime = 0;        ///< seconds since 2000-01-01 00:00 UTC, modulo 2^32
    Kitnet::EthAddr llAddr;  ///< MAC address
    std::string_view uuid;   ///< 16 bytes, fewer if the packet ends first
    U32 entno = 0;           ///< IANA enterprise number
    std::string_view entId;  ///< identifier that the enterprise has assigned

    static constexpr U8 uuidAt = Dhcp6Const::duidType_size;          ///< offset of `uuid` in the DUID
    static constexpr U8 entnoAt = Dhcp6Const::duidType_size;         ///< offset of `entno` in the DUID
    static constexpr U8 entIdAt = Dhcp6Const::baseDuiden_size;       ///< offset of `entId` in the DUID
    static constexpr U8 hardwareTypeAt = Dhcp6Const::duidType_size;  ///< offset of `hardwareType` in the DUID
    /// Offset of `duidTime` in the DUID.
    static constexpr U8 duidTimeAt = hardwareTypeAt + Dhcp6Const::hardwareType_size;
    static constexpr U8 lltAddrAt =
        duidTimeAt + Dhcp6Const::duidTime_size;  ///< offset of the MAC address in a DUID-LLT
    static constexpr U8 llAddrAt = duidTimeAt;   ///< offset of the MAC address in a DUID-LL

    /// Whether a DUID of this type has a time.
    static bool hasTime(U16 type) { return type == Dhcp6Const::duidType_llt; }
    /// Whether a DUID of this type has a hardware type and a MAC address.
    static bool hasLinkLayer(U16 type) { return hasTime(type) || type == Dhcp6Const::duidType_ll; }
    /// Offset of the MAC in the DUID. Requires: hasLinkLayer(type).
    static U8 macAt(U16 type) { return hasTime(type) ? lltAddrAt : llAddrAt; }
    /// Size of the identifier of a DUID-EN: the option's length, as it stands in the packet, minus 6, modulo 65536.
    /// Too large if the DUID is not at the start of the option's data
    /// (docs/compatibility.md#duid-en-by-the-option-length).
    static U16 entIdBytes(Wire::ByteView bytes, U16 option) {
        return static_cast<U16>(bytes.load<U16>(optionPosition(option, Dhcp6Const::optlen_offset)) -
                                Dhcp6Const::baseDuiden_size);
    }
};

/// Reads the DUID at offset `offset` of the option that starts at `option`. Nothing is compared with the option's
/// length.
inline DuidFields decodeDuid(Wire::ByteView bytes, U16 option, U16 offset) {
    const auto at = [&](U8 fieldAt) { return optionPosition(option, U32{offset} + fieldAt); };
    DuidFields duid;
    duid.duidType = bytes.load<U16>(at(0));
    if (DuidFields::hasLinkLayer(duid.duidType)) {
        duid.hardwareType = bytes.load<U16>(at(DuidFields::hardwareTypeAt));
        if (DuidFields::hasTime(duid.duidType)) duid.duidTime = bytes.load<U32>(at(DuidFields::duidTimeAt));
        duid.llAddr = bytes.load<Kitnet::EthAddr>(at(DuidFields::macAt(duid.duidType)));
    } else if (duid.duidType == Dhcp6Const::duidType_uuid) {
        duid.uuid = bytes.text(at(DuidFields::uuidAt), Dhcp6Const::uuid_size);
    } else if (duid.duidType == Dhcp6Const::duidType_en) {
        duid.entno = bytes.load<U32>(at(DuidFields::entnoAt));
        duid.entId = bytes.text(at(DuidFields::entIdAt), DuidFields::entIdBytes(bytes, option));
    }
    return duid;
}

/// View of the DUID at `offset` inside an option: 4 in a client-id or server-id, 8 in a remote-id. A setter throws
/// Tyk::InternalException and writes nothing if the cached `duidType` does not have the field: set the type first.
class DHCPLIB_EXPORT Dhcp6Duid final : public Dhcp6OptionView {
public:
    using Ptr = Kcore::Ptr<Dhcp6Duid>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    Dhcp6Duid(const Dhcp6OptionPtr& opt, U16 offset) : Dhcp6OptionView(opt), offset_(offset) { handleInitialized(); }
    static Ptr Dhcp6DuidIs(const Dhcp6OptionPtr& opt, U16 offset);
    /// Reads the DUID; later calls do nothing.
    void handleInitialized();

    /// Offset of the DUID inside the option.
    U16 offset() const { return offset_; }
    /// The type: Dhcp6Const::duidType_llt, `_en`, `_ll`, `_uuid`, or any other number.
    U16 duidType() const { return duidType_; }
    void duidTypeIs(U16 type);
    /// The hardware type; 1 is Ethernet.
    U16 hardwareType() const { return hardwareType_; }
    void hardwareTypeIs(U16 type);
    /// Seconds since 2000-01-01 00:00 UTC, modulo 2^32.
    U32 duidTime() const { return duidTime_; }
    void duidTimeIs(U32 time);
    /// The MAC address.
    const Kitnet::EthAddr& llAddr() const { return llAddr_; }
    void llAddrIs(const Kitnet::EthAddr& address);
    /// The UUID: 16 bytes.
    const Kcore::String& uuid() const { return uuid_; }
    /// Requires 16 bytes; throws for any other size.
    void uuidIs(const Kcore::String& uuid);
    /// The IANA enterprise number.
    U32 entno() const { return entno_; }
    void entnoIs(U32 entno);
    /// The identifier that the enterprise has assigned.
    const Kcore::String& entId() const { return entId_; }
    /// Requires as many bytes as the option's length in the packet minus 6; throws for any other size.
    void entIdIs(const Kcore::String& entId);

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using V = Dhcp6Duid;
        return declarationOf<V>("Dhcp6Duid", attribute("offset", &V::offset), attribute("duidType", &V::duidType),
                                attribute("hardwareType", &V::hardwareType), attribute("duidTime", &V::duidTime),
                                attribute("llAddr", &V::llAddr), attribute("uuid", &V::uuid),
                                attribute("entno", &V::entno), attribute("entId", &V::entId));
    }

private:
    template <class T>
    void storeField(U8 at, const T& value) {
        store(U32{offset_} + at, value);
    }

    U16 offset_;
    U16 duidType_ = 0;
    U16 hardwareType_ = 0;
    U32 duidTime_ = 0;
    Kitnet::EthAddr llAddr_;
    Kcore::String uuid_;
    U32 entno_ = 0;
    Kcore::String entId_;
    [[no_unique_address]] KitSlab::Tracked<Dhcp6Duid> tracked_;
};

DHCPLIB_EXPORT Dhcp6Duid::Ptr dhcp6DuidFactory(const Dhcp6OptionPtr& opt, U16 offset);

}  // namespace DhcpLib
