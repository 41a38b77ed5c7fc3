#pragma once

#include <chrono>

namespace Kcore {

/// A span of time in whole seconds.
using Duration = std::chrono::seconds;

}  // namespace Kcore
