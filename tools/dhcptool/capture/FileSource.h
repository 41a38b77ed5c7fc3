#pragma once

#include "capture/CaptureFiles.h"
#include "capture/Source.h"

namespace DhcpTool {

/// The frames of capture files as if they arrived on one port.
class FileSource final : public Source {
public:
    /// As CaptureFiles.
    FileSource(const std::vector<std::string>& paths, const Kitnet::IntfId& port, const StopSignal* stop = nullptr)
        : files_(paths, stop), port_(port) {}

    std::optional<Arrival> next() override;
    bool mayWait() const override { return size() == 0; }
    U64 size() const override { return files_.size(); }
    U64 position() const override { return files_.position(); }
    bool reads(const std::string& path) const override { return files_.reads(path); }

private:
    CaptureFiles files_;
    Kitnet::IntfId port_;
};

}  // namespace DhcpTool
