#include "Interface/PamDesiredIntfDir.h"

namespace Interface {

PamDesiredIntfDir::~PamDesiredIntfDir() = default;
const Kcore::TypeData& PamDesiredIntfDir::typeData() const { return Kcore::typeDataOf<PamDesiredIntfDir>(); }

void PamDesiredIntfDir::intfIs(Kitnet::IntfId intf) {
    if (!intf_.insert(intf)) return;
    try {
        observers_.notify(intf);
    } catch (...) {
        intf_.erase(intf);
        throw;
    }
}

void PamDesiredIntfDir::intfDel(Kitnet::IntfId intf) {
    if (!intf_.erase(intf)) return;
    try {
        observers_.notify(intf);
    } catch (...) {
        intf_.insert(intf);  // needs no memory: there was room for it
        throw;
    }
}

}  // namespace Interface
