#include "capture/CaptureFiles.h"

#include <algorithm>

namespace DhcpTool {

CaptureFiles::CaptureFiles(const std::vector<std::string>& paths, const StopSignal* stop) {
    for (const std::string& path : paths) files_.push_back({CaptureReader(path, stop), std::nullopt});
}

std::optional<Frame> CaptureFiles::next() {
    // The bytes of the last frame are valid until now.
    if (!started_)
        for (File& file : files_) advance(file);
    else if (last_ != nullptr)
        advance(*last_);
    started_ = true;
    last_ = nullptr;
    for (File& file : files_)
        if (file.next && (last_ == nullptr || file.next->time < last_->next->time)) last_ = &file;
    if (last_ == nullptr && !failures_.empty()) throw CaptureError(failures_);
    if (last_ == nullptr) return std::nullopt;
    Frame frame = *last_->next;
    frame.number = ++frames_;
    return frame;
}

void CaptureFiles::advance(File& file) {
    try {
        file.next.reset();
        file.next = file.reader.next();
    } catch (const CaptureError& failure) {
        failures_ += (failures_.empty() ? "" : "; ") + std::string(failure.what());
    }
}

U64 CaptureFiles::size() const {
    U64 total = 0;
    for (const File& file : files_) {
        if (file.reader.size() == 0) return 0;
        total += file.reader.size();
    }
    return total;
}

U64 CaptureFiles::position() const {
    U64 total = 0;
    for (const File& file : files_) total += file.reader.position();
    return total;
}

bool CaptureFiles::reads(const std::string& path) const {
    return std::ranges::any_of(files_, [&](const File& file) { return file.reader.reads(path); });
}

}  // namespace DhcpTool
