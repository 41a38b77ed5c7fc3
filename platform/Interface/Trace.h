#pragma once

#include "Kcore/String.h"
#include "Tyk/Trace.h"

namespace Interface {

/// The trace handle of this module. Level 1: packet access that failed. Level 4: objects created, destroyed and
/// changed.
inline const Tyk::TraceHandle& traceHandle() {
    static const Tyk::TraceHandle handle("Interface", false);
    return handle;
}

/// Member that traces when its object is created and destroyed. The first line names the constructor's source line.
class LifeTrace {
public:
    /// Traces that an object of `className` was made. `name` tells objects of one class apart.
    explicit LifeTrace(std::string_view className, std::string_view name = {}, Tyk::TraceSite site = {})
        : object_(std::string(className).append(name.empty() ? "" : " ").append(name)) {
        Tyk::fmtrace(traceHandle(), 4, site, "{} made", object_);
    }
    ~LifeTrace() { Tyk::fmtrace(traceHandle(), 4, {}, "{} dropped", object_); }
    LifeTrace(const LifeTrace&) = delete;
    LifeTrace& operator=(const LifeTrace&) = delete;

private:
    Kcore::String object_;
};

}  // namespace Interface
