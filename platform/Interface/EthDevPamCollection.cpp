#include "Interface/EthDevPamCollection.h"

namespace Interface {

EthDevPamCollection::~EthDevPamCollection() = default;
const Kcore::TypeData& EthDevPamCollection::typeData() const { return Kcore::typeDataOf<EthDevPamCollection>(); }

}  // namespace Interface
