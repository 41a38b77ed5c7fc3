#pragma once

namespace Kcore {

/// Where a call stands in the source: as a defaulted last argument, the caller's place.
struct SourceSite {
    const char* file;
    unsigned line;
    const char* function;

    static constexpr SourceSite here(const char* file = __builtin_FILE(), unsigned line = __builtin_LINE(),
                                     const char* function = __builtin_FUNCTION()) {
        return {file, line, function};
    }
};

}  // namespace Kcore
