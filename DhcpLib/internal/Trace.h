#pragma once

#include <string_view>

#include "Tyk/Trace.h"

namespace DhcpLib {

/// The trace handle of the whole library. Made before all other objects of the library, since parsers ask it several
/// times for each frame: a check for the first use would cost them some 5 percent.
[[gnu::visibility("hidden")]] extern const Tyk::TraceHandle libraryTrace;
inline const Tyk::TraceHandle& traceHandle() { return libraryTrace; }

namespace TraceLevel {

inline constexpr int failure = 1;    ///< missing configuration, malformed input
inline constexpr int rejection = 2;  ///< a rejected frame, a failure that an assertion follows
inline constexpr int verbose = 4;    ///< function entries and progress

}  // namespace TraceLevel

/// Whether lines of this level go to the text trace or to the ring. For functions that trace several lines.
inline bool isTraced(int level) { return traceHandle().wanted(level) || Tyk::RingTrace::wanted(level); }

}  // namespace DhcpLib
