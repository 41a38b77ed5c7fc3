#pragma once

#include "Interface/EthDevPam.h"
#include "Interface/Trace.h"
#include "Kcore/FlatMap.h"

namespace Interface {

/// The packet access of each desired interface. The agent's event loop polls and reads its members. An EthDevPamManager
/// keeps it up to date; do not handle status changes while you iterate over it.
class DHCPPLATFORM_EXPORT EthDevPamCollection final : public Kcore::Node {
public:
    using Ptr = Kcore::Ptr<EthDevPamCollection>;
    using Pams = Kcore::FlatMap<Kitnet::IntfId, EthDevPam::Ptr>;  ///< the members by interface

    /// An empty collection.
    explicit EthDevPamCollection(const Kcore::String& name) : name_(name), life_("EthDevPamCollection", name) {}
    ~EthDevPamCollection() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return Kcore::declare("EthDevPamCollection", Kcore::attribute("name", &EthDevPamCollection::name_),
                              Kcore::attribute("ethDevPam", &EthDevPamCollection::ethDevPam_));
    }

    /// The name given to the constructor, for trace lines.
    const Kcore::String& name() const { return name_; }
    /// All members. Their addresses stay valid while their interface is desired.
    const Pams& ethDevPam() const { return ethDevPam_; }
    /// Null if the interface is not desired.
    EthDevPam::Ptr ethDevPam(const Kitnet::IntfId& intf) const {
        const EthDevPam::Ptr* const pam = ethDevPam_.find(intf);
        return pam != nullptr ? *pam : nullptr;
    }

private:
    friend class EthDevPamManager;

    const Kcore::String name_;
    Pams ethDevPam_;
    const LifeTrace life_;
};

}  // namespace Interface
