#pragma once

#include "Kcore/String.h"
#include "Tyk/Trace.h"

namespace Interface {

/// The one handle that this part of the platform traces to. Level 1: packet access that failed; level 4: what is made,
/// set and dropped.
inline const Tyk::TraceHandle& traceHandle() {
    static const Tyk::TraceHandle handle("Interface", false);
    return handle;
}

/// Member that traces when its object is made and when it is dropped.
class LifeTrace {
public:
    explicit LifeTrace(std::string_view className, std::string_view name = {})
        : object_(std::string(className).append(name.empty() ? "" : " ").append(name)) {
        Tyk::fmtrace(traceHandle(), 4, {}, "{} made", object_);
    }
    ~LifeTrace() { Tyk::fmtrace(traceHandle(), 4, {}, "{} dropped", object_); }
    LifeTrace(const LifeTrace&) = delete;
    LifeTrace& operator=(const LifeTrace&) = delete;

private:
    Kcore::String object_;
};

}  // namespace Interface
