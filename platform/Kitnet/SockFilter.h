#pragma once

#include "Kcore/Types.h"

namespace Kitnet {

/// One instruction of a classic BPF program, laid out as the kernel takes it.
struct SockFilter {
    Kcore::U16 code;
    Kcore::U8 jt;  ///< instructions to skip where a test holds
    Kcore::U8 jf;  ///< and where it does not
    Kcore::U32 k;
};
static_assert(sizeof(SockFilter) == 8);

/// A classic BPF program that lives elsewhere: how many instructions, and where they are.
struct SockFilterProgram {
    Kcore::U16 count;
    const SockFilter* instructions;
};

}  // namespace Kitnet
