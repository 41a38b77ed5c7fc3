#include "snoop/Snoop.h"

namespace DhcpTool {

Snooper::Snooper(const SnoopSettings& settings, Output& output, CaptureWriter* target)
    : settings_(settings),
      output_(output),
      target_(target),
      decoder_(settings.ports, settings.keepState),
      view_(makeView(settings.view)),
      trace_(settings.traceLevel) {}

bool Snooper::isWanted(const Message& message) const {
    using enum Message::Verdict;
    if (message.verdict == other || (settings_.onlyRefused && message.verdict != refused)) return false;
    return settings_.filter.matches(message);
}

bool Snooper::take(const Arrival& frame) {
    constexpr std::size_t fullBuffer = std::size_t{1} << 16;
    trace_.frameIs(frame.number);
    const Message& message = decoder_.decode(frame);
    counts_.add(message);
    if (!isWanted(message)) return false;
    ++printed_;
    view_->append(lines_, message);
    if (target_ != nullptr) target_->write(frame);
    if (lines_.size() >= fullBuffer) flush();
    return true;
}

void Snooper::flush() {
    output_.write(lines_);
    lines_.clear();
}

std::string Snooper::countsText() const {
    const bool all = settings_.filter.isEmpty() && !settings_.onlyRefused;
    return counts_.text(all ? std::nullopt : std::optional(printed_));
}

}  // namespace DhcpTool
