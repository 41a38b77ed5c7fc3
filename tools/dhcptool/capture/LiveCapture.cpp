#include "capture/LiveCapture.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <span>

#include "Kcore/Text.h"
#include "common/Output.h"
#include "common/Printable.h"

namespace DhcpTool {

namespace {

constexpr std::size_t mostFramesAtEnd = 100'000;  // so that a flood cannot keep the capture from ending
constexpr auto dropInterval = std::chrono::seconds(1);
constexpr char usualState[] = "link is up";

DhcpLib::PamManager::Ptr managerOf(const char* name, const KernelNetInfo::Status::Ptr& kni,
                                   const std::vector<Kitnet::IntfId>& interfaces) {
    const auto all = Kcore::makeNode<Interface::AllIntfStatusDir>(kni);
    const auto local = Kcore::makeNode<Interface::AllIntfStatusLocalDir>();
    auto manager = DhcpLib::pamManagerFactory(name, all, local, kni);
    for (const Kitnet::IntfId& intf : interfaces) manager->pamDesiredIntfDir()->intfIs(intf);
    return manager;
}

template <class T>
bool setSocketOption(int fd, int option, T value) {
    return ::setsockopt(fd, SOL_SOCKET, option, &value, sizeof value) == 0;
}

}  // namespace

/// The observation is of the manager that was created last, so both managers have handled a change when it is called.
LiveCapture::LiveCapture(const std::vector<Kitnet::IntfId>& interfaces, int stopFd, Clock::time_point end,
                         U32 receiveBuffer)
    : interfaces_(interfaces),
      stopFd_(stopFd),
      end_(end),
      receiveBuffer_(receiveBuffer),
      dhcp_(managerOf("DhcpPamMan", kni_, interfaces)),
      dhcp6_(managerOf("Dhcp6PamMan", kni_, interfaces)),
      nextDropCheck_(Clock::now() + dropInterval),
      changes_(dhcp6_->deviceIntfStatusDir()->deviceIntfStatus().observers().observe(
          [this](const Kitnet::IntfId& intf) { handleIntf(intf); })) {
    requireAccess();
    for (const Kitnet::IntfId& intf : interfaces_) states_[intf] = usualState;
    for (const Kitnet::IntfId& intf : interfaces_) handleIntf(intf);
}

/// Both sockets' packet access of an interface.
std::vector<LiveCapture::Pam::Ptr> LiveCapture::pams(const Kitnet::IntfId& intf) const {
    return {dhcp_->ethDevPamCollection()->ethDevPam(intf), dhcp6_->ethDevPamCollection()->ethDevPam(intf)};
}

void LiveCapture::requireAccess() const {
    bool anyDevice = false;
    for (const Kitnet::IntfId& intf : interfaces_) {
        if (dhcp6_->deviceIntfStatusDir()->deviceIntfStatus(intf) == nullptr) continue;
        anyDevice = true;
        for (const Pam::Ptr& pam : pams(intf))
            if (pam->fd() < 0) throw CaptureError(Kcore::textOf(intf) + ": " + harmless(pam->error()));
    }
    if (!anyDevice) throw CaptureError(Kcore::textOf(interfaces_.front()) + ": there is no such interface");
}

/// Asks for the kernel's time of each frame, and for the buffer that the user wants. Larger buffers than the system's
/// limit require CAP_NET_ADMIN; without it the kernel gives as much as the limit allows.
void LiveCapture::prepareSockets(const Kitnet::IntfId& intf) const {
    for (const Pam::Ptr& pam : pams(intf)) {
        if (pam->fd() < 0) continue;
        setSocketOption(pam->fd(), SO_TIMESTAMPNS, 1);
        const auto bytes = static_cast<int>(receiveBuffer_);
        if (!setSocketOption(pam->fd(), SO_RCVBUFFORCE, bytes)) setSocketOption(pam->fd(), SO_RCVBUF, bytes);
    }
}

std::optional<Arrival> LiveCapture::next() {
    while (handedOut_ == waiting_.size())
        if (!fill()) return std::nullopt;
    Arrival arrival = std::move(waiting_[handedOut_++]);
    arrival.number = ++frames_;
    return arrival;
}

/// Waits for something to read, and handles changes of network devices. Returns false after the end, once the frames
/// that were waiting then are read.
bool LiveCapture::fill() {
    waiting_.clear();
    handedOut_ = 0;
    if (readAfterEnd_ > mostFramesAtEnd) return false;
    std::vector<pollfd> fds{{stopFd_, POLLIN, 0}, {kni_->fd(), POLLIN, 0}};
    std::vector<Pam::Ptr> open;
    for (const Kitnet::IntfId& intf : interfaces_)
        for (const Pam::Ptr& pam : pams(intf)) {
            if (pam->fd() < 0) continue;
            fds.push_back({pam->fd(), POLLIN, 0});
            open.push_back(pam);
        }
    if (::poll(fds.data(), fds.size(), pollTimeout()) < 0 && errno != EINTR)
        throw CaptureError(std::string("waiting for frames: ") + std::strerror(errno));
    for (std::size_t i = 0; i < open.size(); ++i)
        if (fds[2 + i].revents != 0) read(*open[i]);
    std::ranges::stable_sort(waiting_, {}, &Arrival::time);
    if (ended_ && waiting_.empty()) return false;
    if (ended_) readAfterEnd_ += waiting_.size();
    ended_ = ended_ || fds[0].revents != 0 || Clock::now() >= end_;
    readSinceDropCheck_ = readSinceDropCheck_ || !waiting_.empty();
    if (Clock::now() >= nextDropCheck_) tellDrops();
    if (Clock::now() >= nextWake_) callWake();
    if (fds[1].revents != 0) kni_->handleReadable();
    return true;
}

void LiveCapture::read(Pam& pam) {
    const std::size_t count = pam.readPkts(batch_);
    for (Interface::PamFrame& frame : std::span(batch_).first(count)) {
        Arrival arrival;
        arrival.time = frame.time.time_since_epoch();
        arrival.sentBytes = frame.pkt->bytes();
        arrival.pkt = std::move(frame.pkt);
        arrival.intf = frame.intf;
        arrival.live = true;
        arrival.outgoing = frame.outgoing;
        waiting_.push_back(std::move(arrival));
    }
}

/// In milliseconds; -1 to wait without an end. Dropped frames are reported even if no other frame arrives.
int LiveCapture::pollTimeout() const {
    if (ended_) return 0;
    const auto next = std::min(end_, nextWake_);
    const auto wakeUp = readSinceDropCheck_ ? std::min(next, nextDropCheck_) : next;
    if (wakeUp == Clock::time_point::max()) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(wakeUp - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max()));
}

void LiveCapture::wakeEvery(std::chrono::milliseconds interval, std::function<bool()> wake) {
    wakeInterval_ = interval;
    wake_ = std::move(wake);
    nextWake_ = Clock::now() + interval;
}

void LiveCapture::callWake() {
    nextWake_ = Clock::now() + wakeInterval_;
    if (!wake_()) ended_ = true;
}

void LiveCapture::tellDrops() {
    nextDropCheck_ = Clock::now() + dropInterval;
    readSinceDropCheck_ = false;
    for (const Kitnet::IntfId& intf : interfaces_) {
        U64& told = toldDrops_[intf];
        const U64 dropped = countsOf(intf).dropped;
        if (dropped != told)
            complain(Kcore::textOf(intf) + ": the kernel dropped " + std::to_string(dropped - told) +
                     " frames, because the receive buffer was full");
        told = dropped;
    }
}

std::string LiveCapture::stateOf(const Kitnet::IntfId& intf) const {
    const KernelNetInfo::IntfStatus* const device = dhcp6_->deviceIntfStatusDir()->deviceIntfStatus(intf);
    if (device == nullptr) return "there is no such interface, waiting for it";
    for (const Pam::Ptr& pam : pams(intf))
        if (pam->fd() < 0) return harmless(pam->error());
    return device->operUp() ? usualState : "link is down";
}

void LiveCapture::handleIntf(const Kitnet::IntfId& intf) {
    const auto known = states_.find(intf);
    if (known == states_.end()) return;
    prepareSockets(intf);
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
        for (const Pam::Ptr& pam : pams(intf))
            if (pam->fd() < 0) return;
        names += (names.empty() ? "" : ", ") + Kcore::textOf(intf);
    }
    announced_ = true;
    complain("listening on " + names);
}

LiveCapture::Counts LiveCapture::countsOf(const Kitnet::IntfId& intf) const {
    Counts counts;
    for (const Pam::Ptr& pam : pams(intf)) {
        counts.received += pam->received();
        counts.dropped += pam->dropped();
        counts.errors += pam->errors();
    }
    return counts;
}

void LiveCapture::forEachCount(const std::function<void(const std::string&)>& show) const {
    for (const Kitnet::IntfId& intf : interfaces_) {
        const Counts counts = countsOf(intf);
        show(Kcore::textOf(intf) + ": received " + std::to_string(counts.received) + ", dropped " +
             std::to_string(counts.dropped) + ", errors " + std::to_string(counts.errors));
    }
}

}  // namespace DhcpTool
