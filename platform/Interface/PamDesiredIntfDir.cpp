#include "Interface/PamDesiredIntfDir.h"

namespace Interface {

PamDesiredIntfDir::~PamDesiredIntfDir() = default;
const Kcore::TypeData& PamDesiredIntfDir::typeData() const { return Kcore::typeDataOf<PamDesiredIntfDir>(); }

}  // namespace Interface
