#pragma once

#include <chrono>

namespace Kcore {

/// A time span in whole seconds.
using Duration = std::chrono::seconds;

}  // namespace Kcore
