#pragma once

#include "Interface/PacketSocketSettings.h"
#include "Kcore/FileDescriptor.h"
#include "Kcore/TypeData.h"
#include "Kitnet/IntfId.h"
#include "Kitnet/Pkt.h"

namespace Interface {

/// A frame of an interface, its first byte that of the Ethernet header. `outgoing`: this host sent it. `checksumReady`:
/// false while the sender, which is on this host, has left the UDP checksum to a network card that never saw the frame.
struct PamFrame {
    Kcore::Ptr<Kitnet::Pkt> pkt;
    Kitnet::IntfId intf;
    bool outgoing = false;
    bool checksumReady = true;

    explicit operator bool() const { return static_cast<bool>(pkt); }
};

/// Packet access of one interface. Its socket comes and goes with the interface's device and with the enabling of the
/// manager; the counters go on. An agent polls `fd` for reading and then calls `readPkt` until nothing is left.
class DHCPPLATFORM_EXPORT EthDevPam final : public Kcore::Node {
public:
    using Ptr = Kcore::Ptr<EthDevPam>;

    explicit EthDevPam(const Kitnet::IntfId& intf) : intf_(intf) {}
    ~EthDevPam() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        return Kcore::declare("EthDevPam", attribute("intf", &EthDevPam::intf), attribute("error", &EthDevPam::error),
                              attribute("received", &EthDevPam::received), attribute("sent", &EthDevPam::sent),
                              attribute("dropped", &EthDevPam::dropped), attribute("errors", &EthDevPam::errors));
    }

    const Kitnet::IntfId& intf() const { return intf_; }
    /// Readable when a frame is waiting, and once when the link goes down. -1 while there is no socket; another one
    /// after the device was away, so ask each time before polling.
    int fd() const { return socket_.get(); }
    /// Why there is no socket, for a person to read; empty while there is one.
    const Kcore::String& error() const { return error_; }

    /// The next frame; one without a packet where none is waiting. A frame that cannot be read is counted and skipped.
    PamFrame readPkt();
    /// Sends a frame from its Ethernet header on, its out-of-band tag put back in. False, counted as an error, where
    /// there is no socket or the kernel refuses it; a trace line tells why.
    bool sendPkt(const Kcore::Ptr<Kitnet::Pkt>& pkt);

    /// Frames that readPkt() returned, and that sendPkt() sent.
    U64 received() const { return received_; }
    U64 sent() const { return sent_; }
    /// Frames that passed the filter and that the kernel dropped because the socket was full.
    U64 dropped() const;
    /// Failures to read or to send a frame.
    U64 errors() const { return errors_; }

private:
    friend class EthDevPamManager;
    void open(U32 ifIndex, const PacketSocketSettings& settings);
    void close(const Kcore::String& why);
    bool isOpenOn(U32 ifIndex) const { return socket_ && ifIndex_ == ifIndex; }
    void handleFailure(const std::exception& failure);

    const Kitnet::IntfId intf_;
    Kcore::FileDescriptor socket_;
    U32 ifIndex_ = 0;
    Kcore::String error_;
    U64 received_ = 0;
    U64 sent_ = 0;
    mutable U64 dropped_ = 0;  // the kernel's count starts anew each time it is taken
    U64 errors_ = 0;
};

}  // namespace Interface
