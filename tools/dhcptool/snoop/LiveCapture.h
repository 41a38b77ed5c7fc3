#pragma once

#include <deque>
#include <functional>
#include <map>
#include <vector>

#include "DhcpLib/DhcpSnoopingPamManager.h"
#include "snoop/Arrival.h"

namespace DhcpTool {

/// Reads the DHCPv4 and DHCPv6 frames of interfaces of this host as a snooping agent does, which it says on stderr once
/// it does so on all of them. Interfaces that come, go, or go down and up are followed, and reported there.
class LiveCapture {
public:
    using Clock = std::chrono::steady_clock;

    /// Ends when `stopFd` is readable and at `end`. Raises CaptureError where there is none of the interfaces, and
    /// where one of them cannot be opened; an interface that is missing beside others is waited for.
    LiveCapture(const std::vector<Kitnet::IntfId>& interfaces, int stopFd, Clock::time_point end);
    LiveCapture(const LiveCapture&) = delete;
    LiveCapture& operator=(const LiveCapture&) = delete;

    /// The next frame, when it comes; none at the end.
    std::optional<Arrival> next();

    /// Tells what became of the frames of each interface so far, line by line.
    void forEachCount(const std::function<void(const std::string&)>& tell) const;

private:
    using Pam = Interface::EthDevPam;
    using Manager = DhcpLib::PamManager::Ptr;

    struct Readable {
        Pam::Ptr pam;
        int framesLeft;  ///< before others have their turn
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
