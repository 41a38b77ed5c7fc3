#pragma once

#include <span>

#include "Fields.h"

namespace DhcpBench {

/// The floor: one hand-written pass over the bytes that copies and allocates nothing. It shows how much of a library's
/// time goes into anything else.
struct FloorFields : Fields<std::string_view> {
    bool understood = false;
    ParamReqText paramReqText;  // not initialised, so that clearing it is not measured
};

FloorFields parseFrameInOnePass(const U8* frame, std::size_t bytes);
FloorFields parseMessageInOnePass(const U8* message, std::size_t bytes);

/// The message with `information` as its option 82, or without option 82, in a static buffer that the next call reuses.
/// Empty if the options are malformed. Requires: the result has at most 2048 bytes.
std::span<const U8> rewriteInOnePass(const U8* message, std::size_t bytes, Rewriting rewriting,
                                     const Octets& information);

}  // namespace DhcpBench
