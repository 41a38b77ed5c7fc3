// A packet buffer over the buffers of another system, checked against what the library needs: platform

#include <algorithm>
#include <iostream>
#include <utility>
#include <vector>

#include "DhcpLib/PlatformContract.h"
#include "Kcore/Ptr.h"
#include "Kcore/TypeData.h"

namespace {

using Kcore::U16;
using Kcore::U32;
using Kcore::U8;

// [foreign]
/// Stands for the other system's buffer, which the binding cannot change.
struct SwitchBuffer {
    std::vector<U8> bytes;
    int vlan = -1;  // -1: the frame had no tag
};
// [/foreign]

// [binding]
/// The packet buffer of the library over a SwitchBuffer.
class SwitchPkt final : public Kcore::Node {
public:
    explicit SwitchPkt(SwitchBuffer buffer) : buffer_(std::move(buffer)) {}
    const Kcore::TypeData& typeData() const override { return Kcore::typeDataOf<SwitchPkt>(); }
    static constexpr auto declaration() { return Kcore::declare("Pkt", Kcore::attribute("bytes", &SwitchPkt::bytes)); }

    U32 bytes() const { return static_cast<U32>(buffer_.bytes.size()); }
    U32 frontBytes() const { return bytes(); }  // the buffer is one piece
    U8* data() { return buffer_.bytes.data(); }
    const U8* data() const { return buffer_.bytes.data(); }
    void newSharedHeadData(U32 n) { buffer_.bytes.insert(buffer_.bytes.begin(), n, U8{0}); }
    void newSharedTailData(U32 n) { buffer_.bytes.insert(buffer_.bytes.end(), n, U8{0}); }
    void delSharedTailData(U32 n) { buffer_.bytes.resize(bytes() - std::min(n, bytes())); }
    bool vlanTagPresent() const { return buffer_.vlan >= 0; }
    U16 vlanTagTpid() const { return vlanTagPresent() ? U16{0x8100} : U16{0}; }
    U16 vlanTagTci() const { return vlanTagPresent() ? static_cast<U16>(buffer_.vlan) : U16{0}; }

private:
    SwitchBuffer buffer_;
};
// [/binding]

}  // namespace

// [check]
template struct DhcpLib::Platform::PacketBuffer<SwitchPkt>;
template struct DhcpLib::Platform::CountedPointer<Kcore::Ptr<SwitchPkt>, SwitchPkt>;
// [/check]

int main() {
    const auto pkt = Kcore::makeNode<SwitchPkt>(SwitchBuffer{{1, 2, 3}, 20});
    pkt->newSharedHeadData(2);
    pkt->delSharedTailData(1);
    std::cout << pkt->bytes() << " bytes, the third is " << +pkt->data()[2] << ", VLAN " << pkt->vlanTagTci() << '\n';
}
