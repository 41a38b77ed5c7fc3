#pragma once

#include <optional>
#include <string>

#include "capture/Arrival.h"

namespace DhcpTool {

/// Appends "2024-05-01T10:11:12", UTC.
void appendSecond(std::string& out, std::chrono::seconds sinceEpoch);

/// Appends the time for which an address is valid: "600s"; "infinite" for the largest number.
void appendLifetime(std::string& out, Kcore::U32 seconds);

enum class TimeForm {
    absolute,  ///< RFC 3339, UTC; with nine digits after the point if six are not enough
    relative,  ///< seconds since the first frame
    delta,     ///< seconds since the frame before
};

/// Writes the times of frames.
class TimeText {
public:
    explicit TimeText(TimeForm form = TimeForm::absolute) : form_(form) {}

    /// Appends the time of the next frame or exchange.
    void append(std::string& out, const Arrival& frame) { append(out, frame.time); }
    void append(std::string& out, CaptureTime time);

private:
    void appendAbsolute(std::string& out, CaptureTime time);

    const TimeForm form_;
    std::optional<CaptureTime> reference_;
    std::optional<std::chrono::seconds> second_;  ///< the one whose text is in `secondText_`
    std::string secondText_;
};

}  // namespace DhcpTool
