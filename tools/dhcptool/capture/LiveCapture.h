#pragma once

#include <deque>
#include <functional>
#include <map>
#include <vector>

#include "DhcpLib/DhcpSnoopingPamManager.h"
#include "capture/Arrival.h"

namespace DhcpTool {

/// Receives the DHCPv4 and DHCPv6 frames of interfaces of this host as a snooping agent does. Prints a line on stderr
/// when it listens on all of them, and when an interface appears, disappears, or goes down or up.
class LiveCapture {
public:
    using Clock = std::chrono::steady_clock;

    /// Stops when `stopFd` is readable, and at `end`. Throws CaptureError if none of the interfaces exists, or if one
    /// of them cannot be opened. If only some are missing, it waits for them.
    LiveCapture(const std::vector<Kitnet::IntfId>& interfaces, int stopFd, Clock::time_point end);
    LiveCapture(const LiveCapture&) = delete;
    LiveCapture& operator=(const LiveCapture&) = delete;

    /// Waits for the next frame; none at the end.
    std::optional<Arrival> next();

    /// Calls `tell` with a line of counters for each interface.
    void forEachCount(const std::function<void(const std::string&)>& tell) const;

private:
    using Pam = Interface::EthDevPam;
    using Manager = DhcpLib::PamManager::Ptr;

    struct Readable {
        Pam::Ptr pam;
        int framesLeft;  ///< until another socket is read
    };

    void requireAccess() const;
    bool poll();
    int pollTimeout() const;
    std::string stateOf(const Kitnet::IntfId& intf) const;
    void handleIntf(const Kitnet::IntfId& intf);
    void announce();

    const std::vector<Kitnet::IntfId> interfaces_;
    const int stopFd_;
    const Clock::time_point end_;
    const KernelNetInfo::Status::Ptr kni_ = Kcore::makeNode<KernelNetInfo::Status>();
    const Manager dhcp_, dhcp6_;
    std::map<Kitnet::IntfId, std::string> states_;
    bool announced_ = false, ended_ = false;
    std::deque<Readable> readable_;
    U64 frames_ = 0;
    const Kcore::Observers<const Kitnet::IntfId&>::Observation changes_;
};

}  // namespace DhcpTool
