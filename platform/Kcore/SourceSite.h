#pragma once

namespace Kcore {

/// A place in the source. As a default argument, `SourceSite::here()` is the place of the call.
struct SourceSite {
    const char* file;      ///< file name
    unsigned line;         ///< line number, from 1
    const char* function;  ///< function name, without parameters

    /// The place of the call. Give no arguments.
    static constexpr SourceSite here(const char* file = __builtin_FILE(), unsigned line = __builtin_LINE(),
                                     const char* function = __builtin_FUNCTION()) {
        return {file, line, function};
    }
};

}  // namespace Kcore
