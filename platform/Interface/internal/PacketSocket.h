#pragma once

#include "Interface/PacketSocketSettings.h"
#include "Kcore/FileDescriptor.h"
#include "Kitnet/Pkt.h"

namespace Interface {

/// Opens a non-blocking packet(7) socket for the frames that the device `ifIndex` receives and sends. The filter is
/// attached before the device is bound, so no frame passes unfiltered. Throws std::system_error if the kernel refuses;
/// the text names CAP_NET_RAW if that is missing.
Kcore::FileDescriptor openPacketSocket(U32 ifIndex, const PacketSocketSettings& settings);

/// A frame as it was read.
struct ReadFrame {
    Kcore::Ptr<Kitnet::Pkt> pkt;
    bool outgoing = false;
    bool checksumReady = true;
};

/// Reads one frame with its out-of-band tag; `pkt` is null if none is waiting. Throws std::system_error if reading
/// fails, with EMSGSIZE for a frame above 65535 bytes, which is discarded. A link that goes down is not a failure.
ReadFrame readFrame(int packetSocket);

/// Sends a frame with its out-of-band tag put back in. Throws std::system_error if the kernel refuses it or if the
/// frame is shorter than its two addresses.
void sendFrame(int packetSocket, const Kitnet::Pkt& pkt);

/// Number of frames that the kernel dropped since the last call because the socket's buffer was full.
U32 takeDropCount(int packetSocket);

}  // namespace Interface
