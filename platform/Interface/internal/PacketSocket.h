#pragma once

#include <linux/if_packet.h>
#include <sys/socket.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <ctime>
#include <memory>

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
    std::chrono::nanoseconds time{};
};

/// Reads the frames of packet sockets with their out-of-band tags, several with one system call. One object serves any
/// number of sockets. It has 4 MiB of address space, of which it only touches as much as the frames need.
class FrameBatch {
public:
    static constexpr std::size_t mostFrames = 64;

    FrameBatch();
    FrameBatch(const FrameBatch&) = delete;
    FrameBatch& operator=(const FrameBatch&) = delete;

    /// Reads up to `limit` frames, but at most `mostFrames`, in place of those of the last call. Returns their number;
    /// 0 if none is waiting. Throws std::system_error if reading fails. A link that goes down is not a failure.
    std::size_t read(int packetSocket, std::size_t limit);
    /// A copy of a frame of the last call. Throws std::system_error if the frame is longer than 65535 bytes, which the
    /// kernel has cut, and std::bad_alloc.
    ReadFrame frame(std::size_t index);

private:
    /// What the kernel delivers beside a frame.
    struct Beside {
        sockaddr_ll from;
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(tpacket_auxdata)) + CMSG_SPACE(sizeof(timespec))> control;
    };

    std::unique_ptr<Kcore::U8[]> bytes_;
    std::array<iovec, mostFrames> places_;
    std::array<Beside, mostFrames> beside_;
    std::array<mmsghdr, mostFrames> messages_{};
};

/// Sends a frame with its out-of-band tag put back in. Throws std::system_error if the kernel refuses it or if the
/// frame is shorter than its two addresses.
void sendFrame(int packetSocket, const Kitnet::Pkt& pkt);

/// Number of frames that the kernel dropped since the last call because the socket's buffer was full.
U32 takeDropCount(int packetSocket);

}  // namespace Interface
