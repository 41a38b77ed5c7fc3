#pragma once

#include "Kcore/Types.h"

namespace Kitnet {

/// One instruction of a classic BPF program, in the kernel's layout.
struct SockFilter {
    Kcore::U16 code;
    Kcore::U8 jt;  ///< instructions to skip if the test is true
    Kcore::U8 jf;  ///< instructions to skip if it is false
    Kcore::U32 k;
};
static_assert(sizeof(SockFilter) == 8);

/// A classic BPF program: number of instructions, and a pointer to them. Does not own them.
struct SockFilterProgram {
    Kcore::U16 count;
    const SockFilter* instructions;
};

}  // namespace Kitnet
