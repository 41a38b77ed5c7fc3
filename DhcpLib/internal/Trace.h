#pragma once

#include <string_view>

#include "Tyk/Trace.h"

namespace DhcpLib {

/// The trace handle of the whole library, created on first use. Always inlined: the parsers ask it several times for
/// each frame, and a call each time would cost them some 5 percent.
[[gnu::always_inline]] inline const Tyk::TraceHandle& traceHandle() {
    static const Tyk::TraceHandle handle("DhcpLib", false);
    return handle;
}

namespace TraceLevel {

inline constexpr int failure = 1;    ///< missing configuration, malformed input
inline constexpr int rejection = 2;  ///< a rejected frame, a failure that an assertion follows
inline constexpr int verbose = 4;    ///< function entries and progress

}  // namespace TraceLevel

}  // namespace DhcpLib
