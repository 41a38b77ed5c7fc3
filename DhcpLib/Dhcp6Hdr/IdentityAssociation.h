#pragma once

#include "DhcpLib/Dhcp6Hdr/OptionView.h"
#include "Kitnet/IpAddr.h"

namespace DhcpLib {

/// Base of the views of IA_NA (RFC 8415, section 21.4) and IA_PD (section 21.21):
///    option offset  4  IAID (4)     8  T1, s (4)     12  T2, s (4)     16  nested options
/// Requires: an option of at least ianaopt_minlen (12) bytes. T1 and T2 have no setter.
class DHCPLIB_EXPORT Dhcp6Ia : public Dhcp6OptionView {
public:
    ~Dhcp6Ia() override;
    /// Reads the fields; later calls do nothing.
    void handleInitialized();

    /// The identifier of the association, unique for its client.
    U32 iaid() const { return iaid_.value; }
    void iaidIs(U32 iaid) { write(iaid_, iaid); }
    /// T1 in seconds, 4294967295 for infinity: when the client asks the same server for an extension.
    U32 lifetimeT1() const { return lifetimeT1_.value; }
    /// T2 in seconds, 4294967295 for infinity: when the client asks any server for an extension.
    U32 lifetimeT2() const { return lifetimeT2_.value; }

protected:
    explicit Dhcp6Ia(const Dhcp6OptionPtr& opt) : Dhcp6OptionView(opt) { handleInitialized(); }

    template <class View>
    static constexpr auto declarationOfIa(std::string_view name) {
        using Kcore::attribute;
        return declarationOf<View>(name, attribute("iaid", &View::iaid), attribute("lifetimeT1", &View::lifetimeT1),
                                   attribute("lifetimeT2", &View::lifetimeT2));
    }

private:
    static_assert(Dhcp6Const::ianaiaid_offset == Dhcp6Const::iapdiaid_offset &&
                  Dhcp6Const::ianat1_offset == Dhcp6Const::iapdt1_offset &&
                  Dhcp6Const::ianat2_offset == Dhcp6Const::iapdt2_offset &&
                  Dhcp6Const::ianadata_offset == Dhcp6Const::iapddata_offset);

    Field<U32, Dhcp6Const::ianaiaid_offset> iaid_;
    Field<U32, Dhcp6Const::ianat1_offset> lifetimeT1_;
    Field<U32, Dhcp6Const::ianat2_offset> lifetimeT2_;
};

/// View of an identity association for non-temporary addresses (option 3).
class DHCPLIB_EXPORT Dhcp6Iana final : public Dhcp6Ia {
public:
    using Ptr = Kcore::Ptr<Dhcp6Iana>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    explicit Dhcp6Iana(const Dhcp6OptionPtr& opt) : Dhcp6Ia(opt) {}
    static Ptr Dhcp6IanaIs(const Dhcp6OptionPtr& opt);

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() { return declarationOfIa<Dhcp6Iana>("Dhcp6Iana"); }

private:
    [[no_unique_address]] KitSlab::Tracked<Dhcp6Iana> tracked_;
};

DHCPLIB_EXPORT Dhcp6Iana::Ptr dhcp6IanaFactory(const Dhcp6OptionPtr& opt);

/// View of an identity association for prefix delegation (option 25).
class DHCPLIB_EXPORT Dhcp6Iapd final : public Dhcp6Ia {
public:
    using Ptr = Kcore::Ptr<Dhcp6Iapd>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    explicit Dhcp6Iapd(const Dhcp6OptionPtr& opt) : Dhcp6Ia(opt) {}
    static Ptr Dhcp6IapdIs(const Dhcp6OptionPtr& opt);

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() { return declarationOfIa<Dhcp6Iapd>("Dhcp6Iapd"); }

private:
    [[no_unique_address]] KitSlab::Tracked<Dhcp6Iapd> tracked_;
};

DHCPLIB_EXPORT Dhcp6Iapd::Ptr dhcp6IapdFactory(const Dhcp6OptionPtr& opt);

/// View of an address (option 5, RFC 8415, section 21.6), nested in an IA_NA or IA_TA:
///    option offset  4  IPv6 address (16)     20  preferred lifetime, s (4)     24  valid lifetime, s (4)
/// Requires: an option of at least iaaddropt_minlen (24) bytes. The preferred lifetime has no setter.
class DHCPLIB_EXPORT Dhcp6IaAddr final : public Dhcp6OptionView {
public:
    using Ptr = Kcore::Ptr<Dhcp6IaAddr>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    explicit Dhcp6IaAddr(const Dhcp6OptionPtr& opt) : Dhcp6OptionView(opt) { handleInitialized(); }
    static Ptr Dhcp6IaAddrIs(const Dhcp6OptionPtr& opt);
    /// Reads the fields; later calls do nothing.
    void handleInitialized();

    /// The address.
    const Kitnet::Ip6Addr& pfxAddr() const { return pfxAddr_.value; }
    void pfxAddrIs(const Kitnet::Ip6Addr& address) { write(pfxAddr_, address); }
    /// Preferred lifetime in seconds, 4294967295 for infinity.
    U32 prefLifetime() const { return prefLifetime_.value; }
    /// Valid lifetime in seconds, 4294967295 for infinity.
    U32 validLifetime() const { return validLifetime_.value; }
    void validLifetimeIs(U32 seconds) { write(validLifetime_, seconds); }

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using V = Dhcp6IaAddr;
        return declarationOf<V>("Dhcp6IaAddr", attribute("pfxAddr", &V::pfxAddr),
                                attribute("prefLifetime", &V::prefLifetime),
                                attribute("validLifetime", &V::validLifetime));
    }

private:
    Field<Kitnet::Ip6Addr, Dhcp6Const::iaaddr_offset> pfxAddr_;
    Field<U32, Dhcp6Const::iaaddr_preftime_offset> prefLifetime_;
    Field<U32, Dhcp6Const::iaaddr_validtime_offset> validLifetime_;
    [[no_unique_address]] KitSlab::Tracked<Dhcp6IaAddr> tracked_;
};

DHCPLIB_EXPORT Dhcp6IaAddr::Ptr dhcp6IaAddrFactory(const Dhcp6OptionPtr& opt);

/// View of a prefix (option 26, RFC 8415, section 21.22), nested in an IA_PD:
///    option offset  4  preferred lifetime, s (4)     8  valid lifetime, s (4)
///                  12  prefix length, bits (1)      13  IPv6 prefix (16)
/// Requires: an option of at least iapfxopt_minlen (25) bytes. The preferred lifetime has no setter.
class DHCPLIB_EXPORT Dhcp6IaPfx final : public Dhcp6OptionView {
public:
    using Ptr = Kcore::Ptr<Dhcp6IaPfx>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    explicit Dhcp6IaPfx(const Dhcp6OptionPtr& opt) : Dhcp6OptionView(opt) { handleInitialized(); }
    static Ptr Dhcp6IaPfxIs(const Dhcp6OptionPtr& opt);
    /// Reads the fields; later calls do nothing.
    void handleInitialized();

    /// Preferred lifetime in seconds, 4294967295 for infinity.
    U32 prefLifetime() const { return prefLifetime_.value; }
    /// Valid lifetime in seconds, 4294967295 for infinity.
    U32 validLifetime() const { return validLifetime_.value; }
    void validLifetimeIs(U32 seconds) { write(validLifetime_, seconds); }
    /// Prefix length in bits; values of 129 to 255 are possible.
    U8 pfxLen() const { return pfxLen_.value; }
    /// Values of 129 to 255 are written unchanged.
    void pfxLenIs(U8 bits) { write(pfxLen_, bits); }
    /// The prefix. Bits after `pfxLen` are not cleared.
    const Kitnet::Ip6Addr& pfxAddr() const { return pfxAddr_.value; }
    void pfxAddrIs(const Kitnet::Ip6Addr& prefix) { write(pfxAddr_, prefix); }

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using V = Dhcp6IaPfx;
        return declarationOf<V>("Dhcp6IaPfx", attribute("prefLifetime", &V::prefLifetime),
                                attribute("validLifetime", &V::validLifetime), attribute("pfxLen", &V::pfxLen),
                                attribute("pfxAddr", &V::pfxAddr));
    }

private:
    Field<U32, Dhcp6Const::iapfxpreftime_offset> prefLifetime_;
    Field<U32, Dhcp6Const::iapfxvalidtime_offset> validLifetime_;
    Field<U8, Dhcp6Const::iapfxlen_offset> pfxLen_;
    Field<Kitnet::Ip6Addr, Dhcp6Const::iapfxaddr_offset> pfxAddr_;
    [[no_unique_address]] KitSlab::Tracked<Dhcp6IaPfx> tracked_;
};

DHCPLIB_EXPORT Dhcp6IaPfx::Ptr dhcp6IaPfxFactory(const Dhcp6OptionPtr& opt);

}  // namespace DhcpLib
