#include "DhcpLib/Dhcp6Hdr/IdentityAssociation.h"

namespace DhcpLib {

Dhcp6Ia::~Dhcp6Ia() = default;

void Dhcp6Ia::handleInitialized() {
    if (!beginInitialization()) return;
    read(iaid_);
    read(lifetimeT1_);
    read(lifetimeT2_);
}

Dhcp6Iana::Ptr dhcp6IanaFactory(const Dhcp6OptionPtr& opt) { return Kcore::makeNode<Dhcp6Iana>(opt); }
const Kcore::TypeData& Dhcp6Iana::typeData() const { return Kcore::typeDataOf<Dhcp6Iana>(); }
Dhcp6Iana::Ptr Dhcp6Iana::Dhcp6IanaIs(const Dhcp6OptionPtr& opt) { return dhcp6IanaFactory(opt); }

Dhcp6Iapd::Ptr dhcp6IapdFactory(const Dhcp6OptionPtr& opt) { return Kcore::makeNode<Dhcp6Iapd>(opt); }
const Kcore::TypeData& Dhcp6Iapd::typeData() const { return Kcore::typeDataOf<Dhcp6Iapd>(); }
Dhcp6Iapd::Ptr Dhcp6Iapd::Dhcp6IapdIs(const Dhcp6OptionPtr& opt) { return dhcp6IapdFactory(opt); }

Dhcp6IaAddr::Ptr dhcp6IaAddrFactory(const Dhcp6OptionPtr& opt) { return Kcore::makeNode<Dhcp6IaAddr>(opt); }
const Kcore::TypeData& Dhcp6IaAddr::typeData() const { return Kcore::typeDataOf<Dhcp6IaAddr>(); }
Dhcp6IaAddr::Ptr Dhcp6IaAddr::Dhcp6IaAddrIs(const Dhcp6OptionPtr& opt) { return dhcp6IaAddrFactory(opt); }

void Dhcp6IaAddr::handleInitialized() {
    if (!beginInitialization()) return;
    read(pfxAddr_);
    read(prefLifetime_);
    read(validLifetime_);
}

Dhcp6IaPfx::Ptr dhcp6IaPfxFactory(const Dhcp6OptionPtr& opt) { return Kcore::makeNode<Dhcp6IaPfx>(opt); }
const Kcore::TypeData& Dhcp6IaPfx::typeData() const { return Kcore::typeDataOf<Dhcp6IaPfx>(); }
Dhcp6IaPfx::Ptr Dhcp6IaPfx::Dhcp6IaPfxIs(const Dhcp6OptionPtr& opt) { return dhcp6IaPfxFactory(opt); }

void Dhcp6IaPfx::handleInitialized() {
    if (!beginInitialization()) return;
    read(prefLifetime_);
    read(validLifetime_);
    read(pfxLen_);
    read(pfxAddr_);
}

}  // namespace DhcpLib
