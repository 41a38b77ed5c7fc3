#pragma once

#include <linux/rtnetlink.h>

#include <functional>

#include "Kcore/FileDescriptor.h"
#include "Kcore/Types.h"

/// What Status and Addresses share: a socket that lists the kernel's objects of one kind and follows their changes
/// (rtnetlink(7)). All functions throw std::system_error, with `what` in front, if the kernel refuses.
namespace KernelNetInfo::RouteSocket {

/// A non-blocking socket that receives the notifications of `groups` (RTMGRP_...).
Kcore::FileDescriptor open(Kcore::U32 groups, const char* what);
/// Asks for the list of all objects. `type` is RTM_GETLINK or RTM_GETADDR.
void requestList(int fd, Kcore::U16 type, const char* what);
/// Reads one datagram and calls `handle` for each of its messages, the end of a list (NLMSG_DONE) included. Sets `lost`
/// if notifications were lost or a list is inconsistent. Returns false if there is nothing to read. If `handle` throws
/// for a message, sets `lost`, handles the other messages and throws the exception.
bool receive(int fd, bool& lost, const char* what, const std::function<void(const nlmsghdr&)>& handle);

}  // namespace KernelNetInfo::RouteSocket
