#pragma once

#include "Kcore/String.h"
#include "Tyk/Trace.h"

namespace Interface {

/// The trace handle of this part of the platform. Level 1: packet access that failed. Level 4: objects that are
/// created, set and dropped.
inline const Tyk::TraceHandle& traceHandle() {
    static const Tyk::TraceHandle handle("Interface", false);
    return handle;
}

/// Member that traces the creation and the destruction of its object.
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
