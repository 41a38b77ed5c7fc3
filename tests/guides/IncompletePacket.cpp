// Must not compile: the packet buffer cannot grow at its head. The test looks for the operation's name in the message.

#include "DhcpLib/PlatformContract.h"

namespace {

using Kcore::U16;
using Kcore::U32;
using Kcore::U8;

struct IncompletePacket {
    U32 bytes() const;
    U32 frontBytes() const;
    U8* data();
    const U8* data() const;
    void newSharedTailData(U32 n);
    void delSharedTailData(U32 n);
    bool vlanTagPresent() const;
    U16 vlanTagTpid() const;
    U16 vlanTagTci() const;
};

}  // namespace

template struct DhcpLib::Platform::PacketBuffer<IncompletePacket>;
