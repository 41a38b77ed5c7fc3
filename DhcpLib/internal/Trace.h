#pragma once

#include <string_view>

#include "Tyk/Trace.h"

namespace DhcpLib {

/// The one handle that every module of the library traces to; made on first use.
inline const Tyk::TraceHandle& traceHandle() {
    static const Tyk::TraceHandle handle("DhcpLib", false);
    return handle;
}

namespace TraceLevel {

inline constexpr int failure = 1;    ///< missing configuration, input that cannot be understood
inline constexpr int rejection = 2;  ///< a frame that is not for the parser, an assertion that follows
inline constexpr int verbose = 4;    ///< entries and progress

}  // namespace TraceLevel

}  // namespace DhcpLib
