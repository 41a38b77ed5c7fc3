#pragma once

#include <linux/rtnetlink.h>

#include <optional>

#include "KernelNetInfo/IntfStatus.h"

namespace KernelNetInfo {

/// A kernel message about a network device.
struct LinkMessage {
    Kcore::String name;
    IntfStatus status;
    bool removed;

    /// Empty for messages of another kind, including those about a device's membership in a bridge.
    static std::optional<LinkMessage> from(const nlmsghdr& header);
};

}  // namespace KernelNetInfo
