#include "view/TimeText.h"

#include <ctime>

#include "Kcore/Text.h"
#include "common/Nanoseconds.h"

namespace DhcpTool {

namespace {

/// ".000123", or with nine digits if the time is not one of whole microseconds.
void appendFraction(std::string& out, CaptureTime fraction) {
    constexpr int microDigits = 6;
    char digits[] = ".000000000";
    auto left = fraction.count();
    for (int at = 9; at > 0; --at, left /= 10) digits[at] = static_cast<char>('0' + left % 10);
    const bool wholeMicros = fraction % std::chrono::microseconds(1) == CaptureTime::zero();
    out.append(digits, wholeMicros ? 1 + microDigits : 10);
}

void appendSpan(std::string& out, CaptureTime span) {
    const bool negative = span < CaptureTime::zero();
    if (negative) out.push_back('-');
    const auto length = negative ? timeBetween(span, CaptureTime::zero()) : span;
    const auto seconds = std::chrono::floor<std::chrono::seconds>(length);
    Kcore::appendText(out, seconds.count());
    appendFraction(out, length - seconds);
}

}  // namespace

void appendSecond(std::string& out, std::chrono::seconds sinceEpoch) {
    const std::time_t wholeSeconds = sinceEpoch.count();
    std::tm utc{};
    gmtime_r(&wholeSeconds, &utc);
    char text[40];
    out.append(text, std::strftime(text, sizeof text, "%FT%T", &utc));
}

void appendLifetime(std::string& out, Kcore::U32 seconds) {
    constexpr Kcore::U32 infinity = 0xffffffff;  // RFC 2131, section 3.3; RFC 8415, section 7.7
    if (seconds == infinity) {
        out.append("infinite");
        return;
    }
    Kcore::appendText(out, seconds);
    out.push_back('s');
}

void TimeText::append(std::string& out, CaptureTime time) {
    if (form_ == TimeForm::absolute) return appendAbsolute(out, time);
    appendSpan(out, timeBetween(reference_.value_or(time), time));
    if (!reference_ || form_ == TimeForm::delta) reference_ = time;
}

void TimeText::appendAbsolute(std::string& out, CaptureTime time) {
    const auto second = std::chrono::floor<std::chrono::seconds>(time);
    if (second != second_) {
        second_ = second;
        secondText_.clear();
        appendSecond(secondText_, second);
    }
    out.append(secondText_);
    appendFraction(out, time - second);
    out.push_back('Z');
}

}  // namespace DhcpTool
