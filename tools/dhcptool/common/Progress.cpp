#include "common/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace DhcpTool {

Progress::Progress(U64 total)
    : total_(total >= largeFile && isatty(STDERR_FILENO) != 0 && isatty(STDOUT_FILENO) == 0 ? total : 0) {}

void Progress::at(U64 done) {
    if (total_ == 0) return;
    const U64 percent = 100 * std::min(done, total_) / total_;
    if (percent == percent_) return;
    percent_ = percent;
    constexpr std::size_t cells = 50;
    std::string bar(cells * percent / 100, '#');
    bar.resize(cells, '.');
    std::fprintf(stderr, "\r[%s] %3u %%", bar.c_str(), static_cast<unsigned>(percent));
    shown_ = true;
}

void Progress::hide() {
    if (shown_) std::fputs("\r\x1b[K", stderr);
    shown_ = false;
}

}  // namespace DhcpTool
