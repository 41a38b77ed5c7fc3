#pragma once

#include "Kcore/Encoding.h"
#include "Kitnet/EthAddr.h"

namespace KernelNetInfo {

using Kcore::U32;

/// What the kernel says of one network device.
class IntfStatus {
public:
    IntfStatus() = default;
    IntfStatus(U32 ifIndex, const Kitnet::EthAddr& macAddr, bool enabled, bool operUp, U32 mtu = 0)
        : ifIndex_(ifIndex), macAddr_(macAddr), enabled_(enabled), operUp_(operUp), mtu_(mtu) {}

    /// The kernel's number of the device. A device that was removed and made again has another one.
    U32 ifIndex() const { return ifIndex_; }
    /// Zero where the device has no Ethernet address.
    const Kitnet::EthAddr& macAddr() const { return macAddr_; }
    /// Set up by its administrator.
    bool enabled() const { return enabled_; }
    /// Enabled, and its link carries frames.
    bool operUp() const { return operUp_; }
    /// The largest IP packet, in bytes; 0 where the kernel did not tell.
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
