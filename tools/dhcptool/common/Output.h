#pragma once

#include <cstdio>
#include <stdexcept>
#include <string_view>

namespace DhcpTool {

/// Thrown if output cannot be written, unless the reader has closed the pipe.
class OutputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The standard output or another file. If the reader closes the pipe (`| head`), `open` becomes false; that is not an
/// error.
class Output {
public:
    /// `live`: flushes after each line, since the next one may come much later.
    explicit Output(bool live, std::FILE* file = stdout);

    /// Writes `text` and a newline. Throws OutputError.
    void line(std::string_view text);
    /// Writes whole lines. Throws OutputError.
    void write(std::string_view lines);
    /// Flushes buffered lines. Throws OutputError.
    void flush();
    bool open() const { return open_; }
    /// Checks errno after a direct write to the file. Throws OutputError.
    void check(bool written);

private:
    std::FILE* file_;
    bool live_;
    bool open_ = true;
};

/// Prints a line on stderr that starts with the program's name.
void complain(std::string_view message);

}  // namespace DhcpTool
