#pragma once

namespace Kcore {

/// Source location of a call. As a defaulted last argument it is the caller's.
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
