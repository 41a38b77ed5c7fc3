#pragma once

#include "Bytes.h"
#include "OptionModel.h"

namespace DhcpTest::Fuzz {

/// Aborts the run if an invariant does not hold.
inline void expect(bool holds) {
    if (!holds) __builtin_trap();
}

/// A DHCPv4 message from fuzz input. The first byte of the input holds the number of bytes in front of the message
/// (bits 0 to 5), and whether the BOOTP header and the cookie are in the input (bit 7) or added here. The rest of the
/// input is the message, or its options.
struct OptionsInput {
    OptionsInput(const U8* data, std::size_t size) {
        const U8 first = size == 0 ? U8{0} : data[0];
        const Octets rest(data + std::min<std::size_t>(size, 1), data + size);
        offset = first & 63;
        bytes = Octets(offset, scratch) + ((first & 128) != 0 ? rest : message(rest));
    }
    U32 offset;
    Octets bytes;
};

}  // namespace DhcpTest::Fuzz
