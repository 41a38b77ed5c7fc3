#pragma once

#include <string>

#include "Kcore/Text.h"
#include "common/Printable.h"

namespace DhcpTool {

/// How a word stands out on a terminal with colours.
enum class Style { plain, emphasis, alarm };

/// Appends words to a buffer of the caller.
class Line {
public:
    Line(std::string& out, bool coloured) : out_(out), coloured_(coloured) {}

    /// The buffer, for text that belongs to the last word.
    std::string& text() { return out_; }
    /// Starts a word: appends a blank, unless a line starts here.
    Line& gap() {
        if (!out_.empty() && out_.back() != '\n' && out_.back() != ' ') out_.push_back(' ');
        return *this;
    }
    template <class T>
    Line& word(const T& value) {
        Kcore::appendText(gap().out_, value);
        return *this;
    }
    template <class T>
    Line& field(std::string_view name, const T& value) {
        return word(name).word(value);
    }
    Line& styled(Style style, std::string_view word) {
        gap();
        start(style);
        out_.append(word);
        end(style);
        return *this;
    }
    void start(Style style) {
        if (coloured_ && style != Style::plain) out_.append(style == Style::alarm ? "\x1b[1;31m" : "\x1b[1m");
    }
    void end(Style style) {
        if (coloured_ && style != Style::plain) out_.append("\x1b[0m");
    }

private:
    std::string& out_;
    const bool coloured_;
};

}  // namespace DhcpTool
