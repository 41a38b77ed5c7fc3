#pragma once

#include "Kcore/Directory.h"
#include "Kcore/FileDescriptor.h"
#include "Kcore/Ptr.h"
#include "KernelNetInfo/IntfStatus.h"

namespace KernelNetInfo {

/// The network devices of the kernel, in the network namespace in which the object was created, as reported by
/// rtnetlink(7). It has no thread: the agent's event loop polls `fd` and calls `handleReadable`, which calls the
/// observers of `intfStatus`. Needs no privilege.
class DHCPPLATFORM_EXPORT Status final : public Kcore::Node {
public:
    using Ptr = Kcore::Ptr<Status>;

    /// Reads the list of all devices. Throws std::system_error if the kernel provides no such socket.
    Status();
    ~Status() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return Kcore::declare("Status", Kcore::attribute(
                                            "intfStatus", [](const Status& status) -> const auto& {
                                                return status.intfStatus().entries();
                                            }));
    }

    /// By device name. Renaming a device removes the entry and adds another.
    const Kcore::Directory<Kcore::String, IntfStatus>& intfStatus() const { return intfStatus_; }

    /// Readable if there is something to handle.
    int fd() const { return socket_.get(); }
    /// Reads all messages that have arrived since the last call. If the kernel dropped some because the socket was
    /// full, reads the list of all devices again. Never blocks. After std::bad_alloc, or an exception of an observer,
    /// call it again: it then reads the list, too.
    void handleReadable();

private:
    bool receive();
    void handleLink(const struct LinkMessage& link);
    void intfIs(const Kcore::String& name, const IntfStatus& status);
    void intfDel(U32 ifIndex);
    void listAnew();
    void handleListed();

    Kcore::FileDescriptor socket_;
    Kcore::Directory<Kcore::String, IntfStatus> intfStatus_;
    Kcore::FlatMap<U32, Kcore::String> nameOfIndex_;
    Kcore::FlatSet<U32> unconfirmed_;  // not yet confirmed by the list that is being read
    bool listing_ = false;
    bool lost_ = false;
};

}  // namespace KernelNetInfo
