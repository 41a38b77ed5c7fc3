#pragma once

#include <vector>

#include "Kcore/FileDescriptor.h"
#include "Kcore/Observers.h"
#include "Kcore/Ptr.h"
#include "Kcore/TypeData.h"
#include "Kitnet/IpGenAddr.h"

struct nlmsghdr;

namespace KernelNetInfo {

using Kcore::U32;
using Kcore::U8;

/// An address of this host, on the device `ifIndex`.
struct HostAddress {
    U32 ifIndex = 0;            ///< the kernel's index of the device
    Kitnet::IpGenAddr address;  ///< the address
    U8 prefixBits = 0;          ///< prefix length: 0 to 32 for IPv4, 0 to 128 for IPv6

    friend bool operator==(const HostAddress&, const HostAddress&) = default;
};

/// The IP addresses of this host, in the network namespace in which the object was created, as reported by
/// rtnetlink(7). An IPv6 address is listed once it can be used: not during duplicate address detection. Used like
/// `Status`: the agent's event loop polls `fd` and calls `handleReadable`. Needs no privilege.
class DHCPPLATFORM_EXPORT Addresses final : public Kcore::Node {
public:
    using Ptr = Kcore::Ptr<Addresses>;

    /// Reads the list of all addresses. Throws std::system_error if the kernel provides no such socket.
    Addresses();
    ~Addresses() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return Kcore::declare("Addresses",
                              Kcore::attribute("count", [](const Addresses& a) { return a.addresses_.size(); }));
    }

    /// In the order of the kernel's reports: the first address of an interface is its oldest.
    const std::vector<HostAddress>& addresses() const { return addresses_; }
    /// Called once after changes, when all waiting messages have been read.
    const Kcore::Observers<>& observers() const { return observers_; }

    /// Readable if there is something to handle.
    int fd() const { return socket_.get(); }
    /// Reads all messages that have arrived since the last call. If the kernel dropped some because the socket was
    /// full, reads the list of all addresses again. Never blocks. After std::bad_alloc, or an exception of an observer,
    /// call it again: it then completes what is missing.
    void handleReadable();

private:
    bool receive();
    void handleAddress(const nlmsghdr& header);
    void listAnew();

    Kcore::FileDescriptor socket_;
    std::vector<HostAddress> addresses_;
    Kcore::Observers<> observers_;
    bool changed_ = false;
    bool listing_ = false;
    bool lost_ = false;
};

}  // namespace KernelNetInfo
