#include "view/Line.h"

#include <ctime>

namespace DhcpTool {

namespace {

/// "2024-05-01T10:11:12.123456Z"; nine digits if the time is not one of whole microseconds.
std::string arrivalText(CaptureTime time) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    std::string digits = std::to_string((time - seconds).count());
    digits.insert(0, 9 - digits.size(), '0');
    if (digits.ends_with("000")) digits.resize(6);
    return timeText(seconds) + '.' + digits + 'Z';
}

}  // namespace

std::string timeText(std::chrono::seconds sinceEpoch) {
    const std::time_t wholeSeconds = sinceEpoch.count();
    std::tm utc{};
    gmtime_r(&wholeSeconds, &utc);
    char text[40];
    return {text, std::strftime(text, sizeof text, "%FT%T", &utc)};
}

Line& Line::start(const Arrival& frame, Bridging::VlanId vlan, bool tagged) {
    word(frame.number).word(arrivalText(frame.time));
    if (frame.live) word(frame.intf);
    if (frame.outgoing) word("out");
    return field("vlan", vlan).word(tagged ? "tagged" : "untagged");
}

}  // namespace DhcpTool
