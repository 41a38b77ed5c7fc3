#pragma once

#include "Kcore/Directory.h"
#include "Kcore/FileDescriptor.h"
#include "Kcore/Ptr.h"
#include "KernelNetInfo/IntfStatus.h"

namespace KernelNetInfo {

/// The network devices of the kernel, in the network namespace in which the object was made, as rtnetlink(7) tells of
/// them. It runs no thread: the agent's loop polls `fd` and calls `handleReadable`, and what changed becomes visible
/// to the observers of `intfStatus` during that call. Needs no privilege.
class DHCPPLATFORM_EXPORT Status final : public Kcore::Node {
public:
    using Ptr = Kcore::Ptr<Status>;

    /// Knows every device once it is made. Raises std::system_error where the kernel gives no such socket.
    Status();
    ~Status() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return Kcore::declare("Status", Kcore::attribute(
                                            "intfStatus", [](const Status& status) -> const auto& {
                                                return status.intfStatus().entries();
                                            }));
    }

    /// By the name of the device. A device that is renamed is removed and added.
    const Kcore::Directory<Kcore::String, IntfStatus>& intfStatus() const { return intfStatus_; }

    /// Readable when there is something to handle.
    int fd() const { return socket_.get(); }
    /// Takes in all that the kernel has told since the last call. If some of it was lost, for want of room in the
    /// socket, every device is listed anew. Never blocks.
    void handleReadable();

private:
    bool receive();
    void handleMessages(const Kcore::U8* bytes, std::size_t size);
    void handleLink(const struct LinkMessage& link);
    void intfIs(const Kcore::String& name, const IntfStatus& status);
    void intfDel(U32 ifIndex);
    void listAnew();
    void handleListed();

    Kcore::FileDescriptor socket_;
    Kcore::Directory<Kcore::String, IntfStatus> intfStatus_;
    Kcore::FlatMap<U32, Kcore::String> nameOfIndex_;
    Kcore::FlatSet<U32> unconfirmed_;  // by the listing under way
    bool listing_ = false;
    bool lost_ = false;
};

}  // namespace KernelNetInfo
