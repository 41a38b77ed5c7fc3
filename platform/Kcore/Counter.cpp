#include "Kcore/Counter.h"

namespace Kcore {

std::atomic<bool> ThreadControl::multiThreaded_{false};

}  // namespace Kcore
