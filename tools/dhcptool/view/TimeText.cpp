#include "view/TimeText.h"

#include <ctime>

#include "Kcore/Text.h"

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
    if (span < CaptureTime::zero()) out.push_back('-');
    const auto length = span < CaptureTime::zero() ? -span : span;
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

std::string timeText(std::chrono::seconds sinceEpoch) {
    std::string out;
    appendSecond(out, sinceEpoch);
    return out;
}

void TimeText::append(std::string& out, CaptureTime time) {
    if (form_ == TimeForm::absolute) return appendAbsolute(out, time);
    appendSpan(out, time - reference_.value_or(time));
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
