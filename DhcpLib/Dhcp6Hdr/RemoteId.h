#pragma once

#include "DhcpLib/Dhcp6Hdr/Duid.h"

namespace DhcpLib {

/// The fields of a relay agent remote-id (option 37, RFC 4649) in the layout `intfIdFormat`, except its DUID:
///    option offset  4  enterprise number (4)     8  DUID (10)     18  interface id (8)
///                  26  sub-option: type (1), length (1), value
/// The text points into the packet.
struct RemoteIdFields {
    U32 entno = 0;                 ///< IANA enterprise number
    U64 interfaceId = 0;           ///< number of the layer 3 interface
    U8 subOptType = 0;             ///< 1 for the text "<interface>:<VLAN>"
    U8 subOptLen = 0;              ///< as the sub-option says, even if the option is shorter
    std::string_view subOptValue;  ///< cut at the end of the option and of the packet

    static constexpr U8 subOptTypeAt = Dhcp6Const::rIdSubOpt_offset;  ///< offset of the sub-option's type in the option
    static constexpr U8 subOptLenAt = subOptTypeAt + Dhcp6Const::rIdSubOptType_size;  ///< offset of its length
    static constexpr U8 subOptValueAt = subOptTypeAt + Dhcp6Const::rIdSubOptTL_size;  ///< offset of its value
};

/// Reads the remote-id at `option`, whose length is `len`. The sub-option exists if its type and length are inside the
/// option and the packet; its value is cut at the end of both. The fields in front of it are read in any case.
inline RemoteIdFields decodeRemoteId(Wire::ByteView bytes, U16 option, U16 len) {
    const auto at = [&](U8 fieldAt) { return optionPosition(option, fieldAt); };
    RemoteIdFields remoteId;
    remoteId.entno = bytes.load<U32>(at(Dhcp6Const::entno_offset));
    remoteId.interfaceId = bytes.load<U64>(at(Dhcp6Const::interfaceId_offset));
    const U32 held = std::min<U32>(len, bytes.from(U32{option} + Dhcp6Const::optdata_offset));
    if (held >= Dhcp6Const::minRIdWSubOpt_size) {
        remoteId.subOptType = bytes.load<U8>(at(RemoteIdFields::subOptTypeAt));
        remoteId.subOptLen = bytes.load<U8>(at(RemoteIdFields::subOptLenAt));
        remoteId.subOptValue = bytes.text(at(RemoteIdFields::subOptValueAt),
                                          std::min<U32>(remoteId.subOptLen, held - Dhcp6Const::minRIdWSubOpt_size));
    }
    return remoteId;
}

/// Base of the views of the three remote-id layouts: the enterprise number and the DUID.
class DHCPLIB_EXPORT Dhcp6RemoteIdBase : public Dhcp6OptionView {
public:
    ~Dhcp6RemoteIdBase() override;

    /// The IANA enterprise number.
    U32 entno() const { return entno_.value; }
    void entnoIs(U32 entno) { write(entno_, entno); }
    /// May be null.
    const Dhcp6Duid::Ptr& duid() const { return duid_; }
    /// Returns the view of the DUID at `offset` of `opt`: the stored one if it matches, else a new one, which is
    /// stored.
    Dhcp6Duid::Ptr duidIs(const Dhcp6OptionPtr& opt, U16 offset);
    /// Drops the stored view of the DUID and returns it, or null.
    Dhcp6Duid::Ptr duidDel() { return std::exchange(duid_, nullptr); }

protected:
    explicit Dhcp6RemoteIdBase(const Dhcp6OptionPtr& opt) : Dhcp6OptionView(opt) {}
    void readBase();

    template <class View, class... More>
    static constexpr auto declarationOfRemoteId(std::string_view name, Kcore::Attribute<More>... more) {
        return declarationOf<View>(name, Kcore::attribute("entno", &View::entno), Kcore::attribute("duid", &View::duid),
                                   more...);
    }

private:
    Field<U32, Dhcp6Const::entno_offset> entno_;
    Dhcp6Duid::Ptr duid_;
};

/// View of a remote-id of the layout `intfIdFormat`: see RemoteIdFields.
class DHCPLIB_EXPORT Dhcp6RemoteId final : public Dhcp6RemoteIdBase {
public:
    using Ptr = Kcore::Ptr<Dhcp6RemoteId>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    explicit Dhcp6RemoteId(const Dhcp6OptionPtr& opt) : Dhcp6RemoteIdBase(opt) { handleInitialized(); }
    static Ptr Dhcp6RemoteIdIs(const Dhcp6OptionPtr& opt);
    /// Reads the option; later calls do nothing.
    void handleInitialized();

    /// The number of the layer 3 interface.
    U64 interfaceId() const { return interfaceId_.value; }
    void interfaceIdIs(U64 id) { write(interfaceId_, id); }
    /// The sub-option's type; 0 if there is no sub-option.
    U8 subOptType() const { return subOptType_; }
    /// The sub-option's length as it stands in the packet.
    U8 subOptLen() const { return subOptLen_; }
    /// The sub-option's value, cut at the end of the option and of the packet.
    const Kcore::String& subOptValue() const { return subOptValue_; }
    /// Writes type 1, the low 8 bits of the text's size, and the whole text.
    void subOptValueIs(const Kcore::String& value);

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using V = Dhcp6RemoteId;
        return declarationOfRemoteId<V>("Dhcp6RemoteId", attribute("interfaceId", &V::interfaceId),
                                        attribute("subOptType", &V::subOptType), attribute("subOptLen", &V::subOptLen),
                                        attribute("subOptValue", &V::subOptValue));
    }

private:
    Field<U64, Dhcp6Const::interfaceId_offset> interfaceId_;
    U8 subOptType_ = 0;
    U8 subOptLen_ = 0;
    Kcore::String subOptValue_;
    [[no_unique_address]] KitSlab::Tracked<Dhcp6RemoteId> tracked_;
};

DHCPLIB_EXPORT Dhcp6RemoteId::Ptr dhcp6RemoteIdFactory(const Dhcp6OptionPtr& opt);

/// View of a remote-id of the layout `intfNameFormat`:
///   option offset  4  enterprise number (4)     8  DUID (10)     18  interface name, to the option's end
class DHCPLIB_EXPORT Dhcp6RemoteIdIntfName final : public Dhcp6RemoteIdBase {
public:
    using Ptr = Kcore::Ptr<Dhcp6RemoteIdIntfName>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    explicit Dhcp6RemoteIdIntfName(const Dhcp6OptionPtr& opt) : Dhcp6RemoteIdBase(opt) { handleInitialized(); }
    static Ptr Dhcp6RemoteIdIntfNameIs(const Dhcp6OptionPtr& opt);
    /// Reads the option; later calls do nothing. The length of the name is computed in 8 bits from the low byte of the
    /// option's length (docs/compatibility.md#text-lengths-in-8-bits).
    void handleInitialized();

    /// The interface name.
    const Kcore::String& interfaceName() const { return interfaceName_; }
    void interfaceNameIs(const Kcore::String& name);

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using V = Dhcp6RemoteIdIntfName;
        return declarationOfRemoteId<V>("Dhcp6RemoteIdIntfName", Kcore::attribute("interfaceName", &V::interfaceName));
    }

private:
    Kcore::String interfaceName_;
    [[no_unique_address]] KitSlab::Tracked<Dhcp6RemoteIdIntfName> tracked_;
};

DHCPLIB_EXPORT Dhcp6RemoteIdIntfName::Ptr dhcp6RemoteIdIntfNameFactory(const Dhcp6OptionPtr& opt);

/// View of a remote-id of the layout `hostAndIntfNameFormat` (docs/compatibility.md#host-name-of-fixed-size):
///    option offset  4  enterprise number (4)     8  DUID (10)     18  host and interface name (hostAndIntfNameLen)
class DHCPLIB_EXPORT Dhcp6RemoteIdHostAndIntfName final : public Dhcp6RemoteIdBase {
public:
    using Ptr = Kcore::Ptr<Dhcp6RemoteIdHostAndIntfName>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    Dhcp6RemoteIdHostAndIntfName(const Dhcp6OptionPtr& opt, U8 hostAndIntfNameLen)
        : Dhcp6RemoteIdBase(opt), hostAndIntfNameLen_(hostAndIntfNameLen) {
        handleInitialized();
    }
    static Ptr Dhcp6RemoteIdHostAndIntfNameIs(const Dhcp6OptionPtr& opt, U8 hostAndIntfNameLen);
    /// Reads the option; later calls do nothing.
    void handleInitialized();

    /// Number of bytes that `hostAndIntfName` occupies.
    U8 hostAndIntfNameLen() const { return hostAndIntfNameLen_; }
    /// Host and interface name, cut at the packet's end.
    const Kcore::String& hostAndIntfName() const { return hostAndIntfName_; }
    /// Writes the first `hostAndIntfNameLen` bytes of `name`, followed by zeros if it is shorter.
    void hostAndIntfNameIs(const Kcore::String& name);

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using V = Dhcp6RemoteIdHostAndIntfName;
        return declarationOfRemoteId<V>("Dhcp6RemoteIdHostAndIntfName",
                                        attribute("hostAndIntfNameLen", &V::hostAndIntfNameLen),
                                        attribute("hostAndIntfName", &V::hostAndIntfName));
    }

private:
    U8 hostAndIntfNameLen_;
    Kcore::String hostAndIntfName_;
    [[no_unique_address]] KitSlab::Tracked<Dhcp6RemoteIdHostAndIntfName> tracked_;
};

DHCPLIB_EXPORT Dhcp6RemoteIdHostAndIntfName::Ptr dhcp6RemoteIdHostAndIntfNameFactory(const Dhcp6OptionPtr& opt,
                                                                                     U8 hostAndIntfNameLen);

}  // namespace DhcpLib
