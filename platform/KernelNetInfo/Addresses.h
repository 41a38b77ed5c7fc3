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
    U32 ifIndex = 0;
    Kitnet::IpGenAddr address;
    U8 prefixBits = 0;

    friend bool operator==(const HostAddress&, const HostAddress&) = default;
};

/// The IP addresses of this host, in the network namespace in which the object was made, as rtnetlink(7) tells of them.
/// An IPv6 address counts once it may be used: not while it is looked whether another host has it. Used as `Status` is:
/// the agent's loop polls `fd` and calls `handleReadable`. Needs no privilege.
class DHCPPLATFORM_EXPORT Addresses final : public Kcore::Node {
public:
    using Ptr = Kcore::Ptr<Addresses>;

    /// Knows every address once it is made. Raises std::system_error where the kernel gives no such socket.
    Addresses();
    ~Addresses() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return Kcore::declare("Addresses",
                              Kcore::attribute("count", [](const Addresses& a) { return a.addresses_.size(); }));
    }

    /// In the order in which the kernel told of them: the first of an interface is its oldest.
    const std::vector<HostAddress>& addresses() const { return addresses_; }
    /// Told once after each change, when all that had waited is taken in.
    const Kcore::Observers<>& observers() const { return observers_; }

    int fd() const { return socket_.get(); }
    /// Takes in all that the kernel has told since the last call. If some of it was lost, for want of room in the
    /// socket, every address is listed anew. Never blocks.
    void handleReadable();

private:
    bool receive();
    void handleMessages(const U8* bytes, std::size_t size);
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
