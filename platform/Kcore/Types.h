#pragma once

#include <cstddef>
#include <cstdint>

namespace Kcore {

using U8 = std::uint8_t;    ///< unsigned integer of 8 bits
using U16 = std::uint16_t;  ///< unsigned integer of 16 bits
using U32 = std::uint32_t;  ///< unsigned integer of 32 bits
using U64 = std::uint64_t;  ///< unsigned integer of 64 bits

}  // namespace Kcore
