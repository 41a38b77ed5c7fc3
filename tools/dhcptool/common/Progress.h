#pragma once

#include "Kcore/Types.h"

namespace DhcpTool {

using Kcore::U64;

/// A progress bar on stderr for large files. Prints nothing if stderr is not a terminal, or if the output goes to a
/// terminal, too.
class Progress {
public:
    explicit Progress(U64 total);
    ~Progress() { hide(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void at(U64 done);
    /// Clears the bar's line before other output.
    void hide();

private:
    static constexpr U64 largeFile = U64{8} << 20;

    U64 total_;  // 0: prints nothing
    U64 percent_ = 0;
    bool shown_ = false;
};

}  // namespace DhcpTool
