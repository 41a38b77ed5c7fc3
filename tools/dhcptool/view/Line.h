#pragma once

#include "Bridging/VlanId.h"
#include "Kcore/Text.h"
#include "Kitnet/IpAddr.h"
#include "Kitnet/NetInteger.h"
#include "capture/Arrival.h"
#include "common/Printable.h"

namespace DhcpTool {

/// "2024-05-01T10:11:12", UTC.
std::string timeText(std::chrono::seconds sinceEpoch);

/// A line of readable output, assembled word by word.
class Line {
public:
    template <class T>
    Line& word(const T& value) {
        if (!text_.empty()) text_.push_back(' ');
        Kcore::appendText(text_, value);
        return *this;
    }
    template <class T>
    Line& field(std::string_view name, const T& value) {
        return word(name).word(value);
    }
    Line& bytes(std::string_view name, std::string_view value) {
        return value.empty() ? *this : field(name, textOrHex(value));
    }
    Line& hexadecimal(std::string_view name, std::string_view value) { return field(name, "0x" + hex(value)); }
    Line& address(std::string_view name, const Kitnet::IpAddr& ip) { return ip.isAny() ? *this : field(name, ip); }
    Line& seconds(std::string_view name, bool there, Kcore::Duration time) {
        return there ? field(name, Kcore::textOf(time) + 's') : *this;
    }
    /// Appends the start of every line: frame number, time, VLAN, and for a live frame interface and direction.
    Line& start(const Arrival& frame, Bridging::VlanId vlan, bool tagged);
    std::string take() { return std::move(text_); }

private:
    std::string text_;
};

}  // namespace DhcpTool
