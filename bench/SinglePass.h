#pragma once

#include <span>

#include "Fields.h"

namespace DhcpBench {

/// The floor: one pass over the bytes, by hand, that copies and allocates nothing. What a general library costs on top
/// of this is what it offers on top of this.
struct FloorFields : Fields<std::string_view> {
    bool understood = false;
    ParamReqText paramReqText;  // left as it is, so that clearing it is not measured
};

FloorFields parseFrameInOnePass(const U8* frame, std::size_t bytes);
FloorFields parseMessageInOnePass(const U8* message, std::size_t bytes);

/// The message in storage that the next call uses again, with `information` as its option 82, or without one. Empty
/// where the options cannot be walked. Requires: the result takes at most 2048 bytes.
std::span<const U8> rewriteInOnePass(const U8* message, std::size_t bytes, Rewriting rewriting,
                                     const Octets& information);

}  // namespace DhcpBench
