#include "capture/LiveCapture.h"

#include <poll.h>

#include <algorithm>
#include <limits>

#include "Kcore/Text.h"
#include "common/Output.h"
#include "common/Printable.h"

namespace DhcpTool {

namespace {

constexpr int framesAtOnce = 64;
constexpr int framesAtEnd = 1024;  // more than fits into the buffer of a socket
constexpr char usualState[] = "link is up";

DhcpLib::PamManager::Ptr managerOf(const char* name, const KernelNetInfo::Status::Ptr& kni,
                                   const std::vector<Kitnet::IntfId>& interfaces) {
    const auto all = Kcore::makeNode<Interface::AllIntfStatusDir>(kni);
    const auto local = Kcore::makeNode<Interface::AllIntfStatusLocalDir>();
    auto manager = DhcpLib::pamManagerFactory(name, all, local, kni);
    for (const Kitnet::IntfId& intf : interfaces) manager->pamDesiredIntfDir()->intfIs(intf);
    return manager;
}

CaptureTime now() {
    return std::chrono::duration_cast<CaptureTime>(std::chrono::system_clock::now().time_since_epoch());
}

}  // namespace

/// The observation is of the manager that was created last, so both managers have handled a change when it is called.
LiveCapture::LiveCapture(const std::vector<Kitnet::IntfId>& interfaces, int stopFd, Clock::time_point end)
    : interfaces_(interfaces),
      stopFd_(stopFd),
      end_(end),
      dhcp_(managerOf("DhcpPamMan", kni_, interfaces)),
      dhcp6_(managerOf("Dhcp6PamMan", kni_, interfaces)),
      changes_(dhcp6_->deviceIntfStatusDir()->deviceIntfStatus().observers().observe(
          [this](const Kitnet::IntfId& intf) { handleIntf(intf); })) {
    requireAccess();
    for (const Kitnet::IntfId& intf : interfaces_) states_[intf] = usualState;
    for (const Kitnet::IntfId& intf : interfaces_) handleIntf(intf);
}

void LiveCapture::requireAccess() const {
    bool anyDevice = false;
    for (const Kitnet::IntfId& intf : interfaces_) {
        if (dhcp6_->deviceIntfStatusDir()->deviceIntfStatus(intf) == nullptr) continue;
        anyDevice = true;
        for (const Manager& manager : {dhcp_, dhcp6_})
            if (const Pam::Ptr pam = manager->ethDevPamCollection()->ethDevPam(intf); pam->fd() < 0)
                throw CaptureError(Kcore::textOf(intf) + ": " + harmless(pam->error()));
    }
    if (!anyDevice) throw CaptureError(Kcore::textOf(interfaces_.front()) + ": there is no such interface");
}

std::optional<Arrival> LiveCapture::next() {
    for (;;) {
        while (!readable_.empty()) {
            Readable& front = readable_.front();
            const Interface::PamFrame frame = front.framesLeft-- > 0 ? front.pam->readPkt() : Interface::PamFrame();
            if (frame)
                return Arrival{++frames_, now(), frame.pkt, frame.pkt->bytes(), frame.intf, true, frame.outgoing};
            readable_.pop_front();
        }
        if (!poll()) return std::nullopt;
    }
}

/// Waits for something to read, and handles changes of network devices. Returns false after the end; frames that are
/// waiting then are still read.
bool LiveCapture::poll() {
    if (ended_) return false;
    std::vector<pollfd> fds{{stopFd_, POLLIN, 0}, {kni_->fd(), POLLIN, 0}};
    std::vector<Pam::Ptr> pams;
    for (const Manager& manager : {dhcp_, dhcp6_})
        for (const auto& [intf, pam] : manager->ethDevPamCollection()->ethDevPam()) {
            if (pam->fd() < 0) continue;
            fds.push_back({pam->fd(), POLLIN, 0});
            pams.push_back(pam);
        }
    if (::poll(fds.data(), fds.size(), pollTimeout()) < 0 && errno != EINTR)
        throw CaptureError(std::string("waiting for frames: ") + std::strerror(errno));
    ended_ = fds[0].revents != 0 || Clock::now() >= end_;
    for (std::size_t i = 0; i < pams.size(); ++i)
        if (fds[2 + i].revents != 0) readable_.push_back({pams[i], ended_ ? framesAtEnd : framesAtOnce});
    if (fds[1].revents != 0) kni_->handleReadable();
    return true;
}

int LiveCapture::pollTimeout() const {
    if (end_ == Clock::time_point::max()) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max()));
}

std::string LiveCapture::stateOf(const Kitnet::IntfId& intf) const {
    const KernelNetInfo::IntfStatus* const device = dhcp6_->deviceIntfStatusDir()->deviceIntfStatus(intf);
    if (device == nullptr) return "there is no such interface, waiting for it";
    for (const Manager& manager : {dhcp_, dhcp6_})
        if (const Pam::Ptr pam = manager->ethDevPamCollection()->ethDevPam(intf); pam->fd() < 0)
            return harmless(pam->error());
    return device->operUp() ? usualState : "link is down";
}

void LiveCapture::handleIntf(const Kitnet::IntfId& intf) {
    const auto known = states_.find(intf);
    if (known == states_.end()) return;
    if (const std::string state = stateOf(intf); state != known->second) {
        complain(Kcore::textOf(intf) + ": " + state);
        known->second = state;
    }
    announce();
}

/// Called once every interface has its sockets.
void LiveCapture::announce() {
    if (announced_) return;
    std::string names;
    for (const Kitnet::IntfId& intf : interfaces_) {
        for (const Manager& manager : {dhcp_, dhcp6_})
            if (manager->ethDevPamCollection()->ethDevPam(intf)->fd() < 0) return;
        names += (names.empty() ? "" : ", ") + Kcore::textOf(intf);
    }
    announced_ = true;
    complain("listening on " + names);
}

void LiveCapture::forEachCount(const std::function<void(const std::string&)>& tell) const {
    for (const Kitnet::IntfId& intf : interfaces_) {
        U64 received = 0, dropped = 0, errors = 0;
        for (const Manager& manager : {dhcp_, dhcp6_}) {
            const Pam::Ptr pam = manager->ethDevPamCollection()->ethDevPam(intf);
            received += pam->received();
            dropped += pam->dropped();
            errors += pam->errors();
        }
        tell(Kcore::textOf(intf) + ": received " + std::to_string(received) + ", dropped " + std::to_string(dropped) +
             ", errors " + std::to_string(errors));
    }
}

}  // namespace DhcpTool
