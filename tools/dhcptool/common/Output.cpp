#include "common/Output.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

namespace DhcpTool {

Output::Output(bool live, std::FILE* file) : file_(file), live_(live) {
    std::signal(SIGPIPE, SIG_IGN);  // write() reports the error as well
}

void Output::line(std::string_view text) {
    if (!open_) return;
    check(std::fwrite(text.data(), 1, text.size(), file_) == text.size() && std::fputc('\n', file_) != EOF);
    if (live_) flush();
}

void Output::write(std::string_view lines) {
    if (!open_ || lines.empty()) return;
    check(std::fwrite(lines.data(), 1, lines.size(), file_) == lines.size());
    if (live_) flush();
}

void Output::flush() {
    if (open_) check(std::fflush(file_) == 0);
}

void Output::check(bool written) {
    if (written) return;
    open_ = false;
    if (errno != EPIPE) throw OutputError(std::string("cannot write the output: ") + std::strerror(errno));
}

void complain(std::string_view message) {
    const std::string line = "dhcptool: " + std::string(message) + '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace DhcpTool
