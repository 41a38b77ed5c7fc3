#include "Interface/DeviceIntfStatusDir.h"

namespace Interface {

DeviceIntfStatusDir::~DeviceIntfStatusDir() = default;
const Kcore::TypeData& DeviceIntfStatusDir::typeData() const { return Kcore::typeDataOf<DeviceIntfStatusDir>(); }

}  // namespace Interface
