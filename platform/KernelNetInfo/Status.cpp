#include "KernelNetInfo/Status.h"

#include "KernelNetInfo/internal/LinkMessage.h"
#include "KernelNetInfo/internal/RouteSocket.h"

namespace KernelNetInfo {

namespace {

const Kcore::ModuleTypes<IntfStatus, Status> registration{"KernelNetInfo"};

constexpr char what[] = "KernelNetInfo::Status: list of the devices";

}  // namespace

Status::Status() : socket_(RouteSocket::open(RTMGRP_LINK, "KernelNetInfo::Status: rtnetlink link notifications")) {
    listAnew();
    // The kernel produces the list while it is read, so this reads all of it.
    handleReadable();
}

Status::~Status() = default;
const Kcore::TypeData& Status::typeData() const { return Kcore::typeDataOf<Status>(); }

void Status::handleReadable() {
    for (;;) {
        while (receive()) {
        }
        if (!lost_ || listing_) return;
        listAnew();
    }
}

/// Returns false if there is nothing to read.
bool Status::receive() {
    return RouteSocket::receive(socket_.get(), lost_, what, [this](const nlmsghdr& message) {
        if (message.nlmsg_type == NLMSG_DONE)
            handleListed();
        else if (const auto link = LinkMessage::from(message))
            handleLink(*link);
    });
}

void Status::handleLink(const LinkMessage& link) {
    const Kcore::String* const known = nameOfIndex_.find(link.status.ifIndex());
    if (link.removed || (known != nullptr && *known != link.name)) intfDel(link.status.ifIndex());
    if (!link.removed) intfIs(link.name, link.status);
}

void Status::intfIs(const Kcore::String& name, const IntfStatus& status) {
    unconfirmed_.erase(status.ifIndex());
    nameOfIndex_.insertOrAssign(status.ifIndex(), name);
    intfStatus_.entryIs(name, status);
}

void Status::intfDel(U32 ifIndex) {
    unconfirmed_.erase(ifIndex);
    const auto name = nameOfIndex_.erase(ifIndex);
    if (!name) return;
    // Another device may have taken the name before this one's removal was reported.
    const IntfStatus* const status = intfStatus_.find(*name);
    if (status != nullptr && status->ifIndex() == ifIndex) intfStatus_.entryDel(*name);
}

void Status::listAnew() {
    for (const auto& [index, name] : nameOfIndex_) unconfirmed_.insert(index);  // first, because it may throw
    RouteSocket::requestList(socket_.get(), RTM_GETLINK, what);
    lost_ = false;
    listing_ = true;
}

/// Removes devices that the list did not confirm: their removal was missed. Does nothing if the list itself was
/// incomplete.
void Status::handleListed() {
    listing_ = false;
    while (!lost_ && !unconfirmed_.empty()) intfDel(*unconfirmed_.begin());
}

}  // namespace KernelNetInfo
