#pragma once

#include <cstdlib>

namespace Kcore {

/// The value of an environment variable; null if it is not set, or if the process has more privileges than its user.
inline const char* environmentValue(const char* name) {
#ifdef __linux__
    return ::secure_getenv(name);
#else
    return std::getenv(name);
#endif
}

}  // namespace Kcore
