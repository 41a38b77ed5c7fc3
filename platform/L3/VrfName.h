#pragma once

#include "Tyk/String.h"

namespace L3 {

/// The name of a VRF: at most 100 bytes.
using VrfName = Tyk::BoundedString<100>;

}  // namespace L3
