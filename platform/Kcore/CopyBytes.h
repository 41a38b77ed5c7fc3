#pragma once

#include <cstring>

#include "Kcore/Types.h"

namespace Kcore {

namespace Detail {

/// Copies `Word` to `2 * Word` bytes as two words, which may overlap.
template <std::size_t Word>
inline void copyEnds(U8* to, const U8* from, std::size_t n) {
    U8 first[Word], last[Word];
    std::memcpy(first, from, Word);
    std::memcpy(last, from + n - Word, Word);
    std::memcpy(to, first, Word);
    std::memcpy(to + n - Word, last, Word);
}

inline void copyUpToThree(U8* to, const U8* from, std::size_t n) {
    const U8 first = from[0], middle = from[n / 2], last = from[n - 1];
    to[0] = first;
    to[n / 2] = middle;
    to[n - 1] = last;
}

}  // namespace Detail

/// std::memmove that is inlined for small sizes, such as those of options and names.
inline void copyBytes(void* target, const void* source, std::size_t n) {
    U8* const to = static_cast<U8*>(target);
    const U8* const from = static_cast<const U8*>(source);
    if (n > 32)
        std::memmove(to, from, n);
    else if (n >= 16)
        Detail::copyEnds<16>(to, from, n);
    else if (n >= 8)
        Detail::copyEnds<8>(to, from, n);
    else if (n >= 4)
        Detail::copyEnds<4>(to, from, n);
    else if (n != 0)
        Detail::copyUpToThree(to, from, n);
}

}  // namespace Kcore
