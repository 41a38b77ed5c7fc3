#pragma once

#include <chrono>
#include <cstddef>
#include <span>
#include <system_error>

#include "Interface/PacketSocketSettings.h"
#include "Kcore/FileDescriptor.h"
#include "Kcore/TypeData.h"
#include "Kitnet/IntfId.h"
#include "Kitnet/Pkt.h"

namespace Interface {

/// A frame that was received on an interface, from its Ethernet header on. `outgoing`: this host sent it.
/// `checksumReady`: false if the sender is on this host and has left the UDP checksum to the network card, so that it
/// is not set. `time`: when the kernel received or sent it; the epoch unless the agent has set SO_TIMESTAMPNS on the
/// socket.
struct PamFrame {
    using Time = std::chrono::sys_time<std::chrono::nanoseconds>;  ///< nanoseconds since 1970-01-01 00:00 UTC

    Kcore::Ptr<Kitnet::Pkt> pkt;  ///< the frame; null if there is none
    Kitnet::IntfId intf;          ///< where it was received
    bool outgoing = false;        ///< this host sent it
    bool checksumReady = true;    ///< false: the UDP checksum is not set
    Time time{};                  ///< when the kernel received or sent it

    /// Whether there is a frame.
    explicit operator bool() const { return static_cast<bool>(pkt); }
};

/// Packet access of one interface. It has a socket while the manager is enabled and the interface has a device. The
/// counters survive a new socket. An agent polls `fd` for reading, then calls `readPkt` until nothing is left.
class DHCPPLATFORM_EXPORT EthDevPam final : public Kcore::Node {
public:
    using Ptr = Kcore::Ptr<EthDevPam>;

    /// Without a socket; the manager opens it.
    explicit EthDevPam(const Kitnet::IntfId& intf) : intf_(intf) {}
    ~EthDevPam() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        return Kcore::declare("EthDevPam", attribute("intf", &EthDevPam::intf), attribute("error", &EthDevPam::error),
                              attribute("received", &EthDevPam::received), attribute("sent", &EthDevPam::sent),
                              attribute("dropped", &EthDevPam::dropped), attribute("errors", &EthDevPam::errors));
    }

    /// The interface.
    const Kitnet::IntfId& intf() const { return intf_; }
    /// Readable if a frame is waiting, and once when the link goes down. -1 if there is no socket. Ask before each
    /// poll, since the socket is replaced when the device reappears.
    int fd() const { return socket_.get(); }
    /// Why there is no socket, as a message; empty if there is one.
    const Kcore::String& error() const { return error_; }
    /// The same as a code; 0 if there is a socket. operation_not_permitted: CAP_NET_RAW is missing. no_such_device: the
    /// interface has no device. operation_canceled: the manager does not want a socket now. Other codes are those of
    /// the system call that failed.
    std::error_code errorCode() const { return errorCode_; }

    /// The next frame. The packet is null if no frame is waiting. A frame that cannot be read, because it is longer
    /// than 65535 bytes or there is no memory for it, is counted and skipped.
    PamFrame readPkt();
    /// Reads the next frames with one system call: as many as are waiting, but at most frames.size() and at most 64.
    /// Stores them from frames[0] on and returns their number. No frame is kept back: after any number, `fd` is
    /// readable if more are waiting. Returns 0 if no frame is waiting. A frame that cannot be read is counted and
    /// skipped, as by readPkt().
    std::size_t readPkts(std::span<PamFrame> frames);
    /// Sends a frame that starts at its Ethernet header, with its out-of-band tag put back. If `pkt` is null, there is
    /// no socket, or the kernel refuses the frame, counts an error, traces the reason and returns false.
    bool sendPkt(const Kcore::Ptr<Kitnet::Pkt>& pkt);

    /// Number of frames that readPkt() and readPkts() returned.
    U64 received() const { return received_; }
    /// Number of frames that sendPkt() sent.
    U64 sent() const { return sent_; }
    /// Number of frames that passed the filter but were dropped by the kernel because the socket was full.
    U64 dropped() const;
    /// Number of frames that could not be read or sent.
    U64 errors() const { return errors_; }

private:
    friend class EthDevPamManager;
    void open(U32 ifIndex, const PacketSocketSettings& settings);
    void close(std::error_code code, const Kcore::String& why);
    bool isOpenOn(U32 ifIndex) const { return socket_ && ifIndex_ == ifIndex; }
    void handleFailure(const std::exception& failure);

    const Kitnet::IntfId intf_;
    Kcore::FileDescriptor socket_;
    U32 ifIndex_ = 0;
    Kcore::String error_;
    std::error_code errorCode_;
    U64 received_ = 0;
    U64 sent_ = 0;
    mutable U64 dropped_ = 0;  // the kernel resets its count at each read
    U64 errors_ = 0;
};

}  // namespace Interface
