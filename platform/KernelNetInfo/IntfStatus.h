#pragma once

#include "Kcore/Encoding.h"
#include "Kitnet/EthAddr.h"

namespace KernelNetInfo {

using Kcore::U32;

/// Status of a network device, as the kernel reports it.
class IntfStatus {
public:
    IntfStatus() = default;
    /// The attributes in order.
    IntfStatus(U32 ifIndex, const Kitnet::EthAddr& macAddr, bool enabled, bool operUp, U32 mtu = 0)
        : ifIndex_(ifIndex), macAddr_(macAddr), enabled_(enabled), operUp_(operUp), mtu_(mtu) {}

    /// The kernel's index of the device. It changes if the device is removed and created again.
    U32 ifIndex() const { return ifIndex_; }
    /// Zero if the device has no Ethernet address.
    const Kitnet::EthAddr& macAddr() const { return macAddr_; }
    /// Whether an administrator has set it up.
    bool enabled() const { return enabled_; }
    /// Whether it is enabled and its link carries frames.
    bool operUp() const { return operUp_; }
    /// Size of the largest IP packet, in bytes; 0 if the kernel did not report it.
    U32 mtu() const { return mtu_; }

    static constexpr auto declaration() {
        using Kcore::attribute;
        return Kcore::declare("IntfStatus", attribute("ifIndex", &IntfStatus::ifIndex_),
                              attribute("macAddr", &IntfStatus::macAddr_), attribute("enabled", &IntfStatus::enabled_),
                              attribute("operUp", &IntfStatus::operUp_), attribute("mtu", &IntfStatus::mtu_));
    }
    void appendText(std::string& out) const { Kcore::appendEncoded(out, *this); }
    friend bool operator==(const IntfStatus& a, const IntfStatus& b) { return Kcore::equalAttributes(a, b); }

private:
    U32 ifIndex_ = 0;
    Kitnet::EthAddr macAddr_;
    bool enabled_ = false;
    bool operUp_ = false;
    U32 mtu_ = 0;
};

}  // namespace KernelNetInfo
