#pragma once

#include <span>

#include "Kitnet/BigEndian.h"

namespace Kitnet {

using Kcore::U16;
using Kcore::U32;
using Kcore::U64;
using Kcore::U8;

/// The sum of the 16-bit words in `bytes`, in network order (RFC 1071), neither folded nor inverted; an odd last byte
/// counts as the first of two. Sums of parts may be added if all parts but the last have an even number of bytes.
inline U64 internetSum(std::span<const U8> bytes) {
    U64 sum = 0;
    for (; bytes.size() >= sizeof(U32); bytes = bytes.subspan(sizeof(U32))) sum += loadBigEndian<U32>(bytes.data());
    if (bytes.size() >= sizeof(U16)) {
        sum += loadBigEndian<U16>(bytes.data());
        bytes = bytes.subspan(sizeof(U16));
    }
    return bytes.empty() ? sum : sum + (U64{bytes[0]} << 8);
}

/// The checksum to write for that sum. 0 if the summed bytes already contain their correct checksum.
constexpr U16 internetChecksum(U64 sum) {
    while (sum >> 16 != 0) sum = (sum & 0xffff) + (sum >> 16);
    return static_cast<U16>(~sum);
}

}  // namespace Kitnet
