#pragma once

#include <array>
#include <map>
#include <vector>

#include "DhcpLib/DhcpSnoopingPamManager.h"
#include "capture/Source.h"

namespace DhcpTool {

/// Receives the DHCPv4 and DHCPv6 frames of interfaces of this host as a snooping agent does. Prints a line on stderr
/// when it listens on all of them, when an interface appears, disappears, or goes down or up, and, at most once a
/// second, while the kernel drops frames.
class LiveCapture final : public Source {
public:
    using Clock = std::chrono::steady_clock;

    /// Stops when `stopFd` is readable, and at `end`. `receiveBuffer`: of each socket, in bytes of frames; without
    /// CAP_NET_ADMIN the system limits it. Throws CaptureError if none of the interfaces exists, or if one of them
    /// cannot be opened. If only some are missing, it waits for them.
    LiveCapture(const std::vector<Kitnet::IntfId>& interfaces, int stopFd, Clock::time_point end, U32 receiveBuffer);
    LiveCapture(const LiveCapture&) = delete;
    LiveCapture& operator=(const LiveCapture&) = delete;

    std::optional<Arrival> next() override;
    bool mayWait() const override { return handedOut_ == waiting_.size(); }
    void wakeEvery(std::chrono::milliseconds interval, std::function<bool()> wake) override;
    void forEachCount(const std::function<void(const std::string&)>& show) const override;

private:
    using Pam = Interface::EthDevPam;
    using Manager = DhcpLib::PamManager::Ptr;

    struct Counts {
        U64 received = 0, dropped = 0, errors = 0;
    };

    void requireAccess() const;
    std::vector<Pam::Ptr> pams(const Kitnet::IntfId& intf) const;
    Counts countsOf(const Kitnet::IntfId& intf) const;
    bool fill();
    void read(Pam& pam);
    int pollTimeout() const;
    void prepareSockets(const Kitnet::IntfId& intf) const;
    void tellDrops();
    void callWake();
    std::string stateOf(const Kitnet::IntfId& intf) const;
    void handleIntf(const Kitnet::IntfId& intf);
    void announce();

    const std::vector<Kitnet::IntfId> interfaces_;
    const int stopFd_;
    const Clock::time_point end_;
    const U32 receiveBuffer_;
    const KernelNetInfo::Status::Ptr kni_ = Kcore::makeNode<KernelNetInfo::Status>();
    const Manager dhcp_, dhcp6_;
    std::map<Kitnet::IntfId, std::string> states_;
    std::chrono::milliseconds wakeInterval_{};
    std::function<bool()> wake_;
    Clock::time_point nextWake_ = Clock::time_point::max();
    bool announced_ = false, ended_ = false;
    std::array<Interface::PamFrame, 64> batch_;
    std::vector<Arrival> waiting_;  // read in one turn, in the order of time
    std::size_t handedOut_ = 0;     // number of them that next() has returned
    std::size_t readAfterEnd_ = 0;
    U64 frames_ = 0;
    Clock::time_point nextDropCheck_;
    bool readSinceDropCheck_ = false;
    std::map<Kitnet::IntfId, U64> toldDrops_;
    const Kcore::Observers<const Kitnet::IntfId&>::Observation changes_;
};

}  // namespace DhcpTool
