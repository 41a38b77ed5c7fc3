#pragma once

#include <string>
#include <vector>

#include "capture/Capture.h"

namespace DhcpTool {

/// Reads several captures as one, in the order of time. Frames of one file stay in the order of the file; of frames
/// with the same time, that of the first file comes first. Needs memory for one frame of each file.
class CaptureFiles {
public:
    /// As CaptureReader, for each path.
    explicit CaptureFiles(const std::vector<std::string>& paths, const StopSignal* stop = nullptr);

    /// The next frame, with its number among the frames of all files. If a file cannot be read to its end, those of the
    /// others are still returned. Then, in place of the end, throws a CaptureError that names each such file.
    std::optional<Frame> next();

    /// Size of all files; 0 if one has none, such as a pipe.
    U64 size() const;
    U64 position() const;
    /// Whether `path` refers to one of the files.
    bool reads(const std::string& path) const;

private:
    struct File {
        CaptureReader reader;
        std::optional<Frame> next;
    };

    void advance(File& file);

    std::vector<File> files_;
    File* last_ = nullptr;  // the file of the frame that was returned last
    std::string failures_;
    U64 frames_ = 0;
    bool started_ = false;
};

}  // namespace DhcpTool
