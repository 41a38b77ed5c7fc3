#pragma once

#include "DhcpLib/PacketView.h"

namespace DhcpLib {

/// Where byte `at` of the option at `option` stands in the packet. Positions inside an option are 8 bits wide and wrap
/// at 256, positions in the packet are 16 bits wide and wrap at 65536, by contract.
constexpr U16 optionPosition(U16 option, U32 at) { return packetPosition(U32{option} + static_cast<U8>(at)); }

/// A field of fixed width that stands `fieldAt` bytes behind the start of a header or option, and its last value.
template <class T, U8 fieldAt>
struct Field {
    T value{};

    /// Bytes past the packet's end read as 0.
    void read(Wire::ByteView bytes, U16 base) { value = bytes.load<T>(packetPosition(U32{base} + fieldAt)); }
    /// Raises Tyk::InternalException "length value exceeds pkt-length." and changes nothing if it does not fit.
    void write(Kitnet::Pkt& pkt, U16 base, const T& newValue) {
        Wire::store<T>(pkt, packetPosition(U32{base} + fieldAt), newValue);
        value = newValue;
    }
};

}  // namespace DhcpLib
