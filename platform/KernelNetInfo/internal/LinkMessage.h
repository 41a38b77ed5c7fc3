#pragma once

#include <linux/rtnetlink.h>

#include <optional>

#include "KernelNetInfo/IntfStatus.h"

namespace KernelNetInfo {

/// A message of the kernel about one device.
struct LinkMessage {
    Kcore::String name;
    IntfStatus status;
    bool removed;

    /// Nothing for messages of another kind, those about a device's part in a bridge among them.
    static std::optional<LinkMessage> from(const nlmsghdr& header);
};

}  // namespace KernelNetInfo
