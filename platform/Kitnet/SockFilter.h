#pragma once

#include "Kcore/Types.h"

namespace Kitnet {

/// One instruction of a classic BPF program, in the kernel's layout.
struct SockFilter {
    Kcore::U16 code;  ///< operation, as in <linux/bpf_common.h>
    Kcore::U8 jt;     ///< instructions to skip if the test is true
    Kcore::U8 jf;     ///< instructions to skip if it is false
    Kcore::U32 k;     ///< operand
};
static_assert(sizeof(SockFilter) == 8);

/// A classic BPF program: number of instructions, and a pointer to them. Does not own them.
struct SockFilterProgram {
    Kcore::U16 count;                ///< number of instructions
    const SockFilter* instructions;  ///< owned by the caller
};

}  // namespace Kitnet
