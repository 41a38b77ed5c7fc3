#pragma once

#include <cstdio>
#include <stdexcept>
#include <string_view>

namespace DhcpTool {

/// What was printed could not be written, for a reason other than that nobody reads it.
class OutputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Where results go. A reader that goes away (`| head`) is no error: `open` turns false.
class Output {
public:
    /// `live`: each line is handed on at once, since the next one may be long in coming.
    explicit Output(bool live, std::FILE* file = stdout);

    /// Writes `text` and a line feed. Raises OutputError.
    void line(std::string_view text);
    /// Hands on what is held back. Raises OutputError.
    void flush();
    bool open() const { return open_; }
    /// Judges, by errno, what was written to the file directly. Raises OutputError.
    void check(bool written);

private:
    std::FILE* file_;
    bool live_;
    bool open_ = true;
};

/// A line on stderr that starts with the program's name.
void complain(std::string_view message);

}  // namespace DhcpTool
