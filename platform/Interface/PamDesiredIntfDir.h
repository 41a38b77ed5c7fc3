#pragma once

#include "Interface/Trace.h"
#include "Kcore/Directory.h"
#include "Kcore/TypeData.h"
#include "Kitnet/IntfId.h"

namespace Interface {

/// The interfaces whose frames the agent wants, whether they exist at present or not.
class DHCPPLATFORM_EXPORT PamDesiredIntfDir final : public Kcore::Node {
public:
    using Ptr = Kcore::Ptr<PamDesiredIntfDir>;

    /// An empty directory.
    explicit PamDesiredIntfDir(const Kcore::String& name) : name_(name), life_("PamDesiredIntfDir", name) {}
    ~PamDesiredIntfDir() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return Kcore::declare("PamDesiredIntfDir", Kcore::attribute("name", &PamDesiredIntfDir::name_),
                              Kcore::attribute("intf", &PamDesiredIntfDir::intf_));
    }

    /// The name given to the constructor, for trace lines.
    const Kcore::String& name() const { return name_; }
    /// The interfaces, in the order in which they were added, until one is removed.
    const Kcore::FlatSet<Kitnet::IntfId>& intf() const { return intf_; }
    /// Called with each interface that is added or removed.
    const Kcore::Observers<const Kitnet::IntfId&>& observers() const { return observers_; }
    /// If an observer throws, the set is unchanged, so that the call can be repeated.
    void intfIs(Kitnet::IntfId intf);
    /// Removes an interface, if it is there. The same holds.
    void intfDel(Kitnet::IntfId intf);

private:
    const Kcore::String name_;
    Kcore::FlatSet<Kitnet::IntfId> intf_;
    Kcore::Observers<const Kitnet::IntfId&> observers_;
    const LifeTrace life_;
};

}  // namespace Interface
