#pragma once

#include "Kcore/FileDescriptor.h"
#include "Kitnet/Pkt.h"
#include "Kitnet/SockFilter.h"

namespace Interface {

using Kcore::U16;
using Kcore::U32;
using Kcore::U64;

/// How the packet sockets of one agent are made.
struct PacketSocketSettings {
    U16 protocol = 0;       ///< in host order; 3 is every protocol, 0 none
    U32 receiveBuffer = 0;  ///< in bytes; 0 is the system's default
    Kitnet::SockFilterProgram filterProgram{};
};

/// A non-blocking packet(7) socket that takes the frames of the device `ifIndex` in and out. The filter was in force
/// before the device was bound, so that no frame ever passed unfiltered. Raises std::system_error where the kernel
/// refuses; the text names CAP_NET_RAW if that is what is missing.
Kcore::FileDescriptor openPacketSocket(U32 ifIndex, const PacketSocketSettings& settings);

/// A frame as it was read.
struct ReadFrame {
    Kcore::Ptr<Kitnet::Pkt> pkt;
    bool outgoing;
};

/// Reads one frame, its out-of-band tag included; null where none is waiting. Raises std::system_error where reading
/// failed, with EMSGSIZE for a frame above 65535 bytes, which is gone; a link that went down is no failure.
ReadFrame readFrame(int packetSocket);

/// Sends a frame, its out-of-band tag put back in. Raises std::system_error where the kernel refuses it, and for one
/// without both addresses.
void sendFrame(int packetSocket, const Kitnet::Pkt& pkt);

/// How many frames the kernel dropped since the last call because the socket was full.
U32 takeDropCount(int packetSocket);

}  // namespace Interface
