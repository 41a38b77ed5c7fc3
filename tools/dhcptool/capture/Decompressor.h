#pragma once

#include <memory>

#include "capture/ByteStream.h"

namespace DhcpTool {

/// Decompresses a file piece by piece.
class Decompressor {
public:
    virtual ~Decompressor() = default;
    /// Decompresses up to `size` bytes into `to`. Returns their number; 0 at the end of the file. Throws
    /// std::runtime_error if the data are damaged or cut.
    virtual std::size_t read(U8* to, std::size_t size) = 0;
};

/// The decompressor for the file's format, which its first bytes show: gzip or zstd. Null if it is not compressed.
std::unique_ptr<Decompressor> decompressorOf(RawFile& file);

}  // namespace DhcpTool
