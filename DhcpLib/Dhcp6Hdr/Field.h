#pragma once

#include "DhcpLib/PacketView.h"

namespace DhcpLib {

/// Packet position of byte `at` of the option that starts at `option`. The offset inside the option wraps at 256, the
/// position at 65536 (docs/compatibility.md#offsets-in-an-option-wrap-at-256).
constexpr U16 optionPosition(U16 option, U32 at) { return packetPosition(U32{option} + static_cast<U8>(at)); }

/// A field of fixed width at offset `fieldAt` of a header or option, with the value that was last read or written.
template <class T, U8 fieldAt>
struct Field {
    T value{};  ///< as last read or written

    /// Bytes past the packet's end read as 0.
    void read(Wire::ByteView bytes, U16 base) { value = bytes.load<T>(packetPosition(U32{base} + fieldAt)); }
    /// Throws Tyk::InternalException "length value exceeds pkt-length." and changes nothing if the field does not fit.
    void write(Kitnet::Pkt& pkt, U16 base, const T& newValue) {
        Wire::store<T>(pkt, packetPosition(U32{base} + fieldAt), newValue);
        value = newValue;
    }
};

}  // namespace DhcpLib
