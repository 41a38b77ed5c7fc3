// Dhcp6PacketParser finds what the views over the same frame hold. Bytes after the frame change nothing. Only the
// reserved VLAN makes it throw.

#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/Dhcp6Identifiers.h"
#include "DhcpLib/Dhcp6Parser.h"
#include "Kcore/Exception.h"
#include "OptionsInput.h"
#include "SwitchPorts.h"

using namespace DhcpLib;
using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

namespace {

void checkClientId(const Dhcp6PacketParser& p, const Dhcp6OptionPtr& option) {
    expect(p.cIdOptOffset() == option->offset() && p.cIdOptLen() == option->len());
    const Dhcp6Duid duid(option, 4);
    const U16 len = option->len();
    if (duid.duidType() != 2 && len != 10 && len != 14 && len != 18) {
        expect(p.cIdDuidType() == 0 && p.cIdDuidllAddr().isZero());
        return;
    }
    expect(p.cIdDuidType() == duid.duidType() && p.cIdDuidHwType() == duid.hardwareType());
    expect(p.cIdDuidllAddr() == duid.llAddr() && p.cIdDuidUuid() == duid.uuid());
    expect(p.cIdDuidEntno() == duid.entno() && p.cIdDuidEntId() == duid.entId());
}

void checkRemoteId(const Dhcp6PacketParser& p, const Dhcp6OptionPtr& option) {
    const Dhcp6RemoteId remoteId(option);
    const Dhcp6Duid& duid = *remoteId.duid();
    expect(p.rIdOptOffset() == option->offset() && p.rIdOptLen() == option->len());
    expect(p.rIdEntno() == remoteId.entno() && p.rIdL3IntfId() == remoteId.interfaceId());
    expect(p.rIdDuidType() == duid.duidType() && p.rIdDuidHwType() == duid.hardwareType());
    expect(p.rIdDuidllAddr() == duid.llAddr());
    if (!p.l2PortInfoValid()) return;
    const U16 vlan = p.rIdVlanId().value();
    expect(remoteId.subOptType() == 1 && vlan >= 1 && vlan <= 4094 && !p.rIdL2IntfId().isEmpty());
    expect(remoteId.subOptValue().view().starts_with(std::string(p.rIdL2IntfId().name()) + ':'));
}

void checkAccepted(const PktPtr& pkt, const Dhcp6PacketParser& p) {
    const U16 message = static_cast<U16>(p.etherHdrLen() + 48);
    const Dhcp6RegHdr header(pkt, message);
    expect(p.isIp6() && p.isUdp() && p.isDhcp6() && p.vlanId().value() <= 4094);
    expect(p.dhcp6MsgType() == header.msgType() && p.dhcp6Xid() == header.xid());
    expect(header.msg() >= 1 && header.msg() <= 11 && p.dhcp6OptionsOffset() == message + 4);
    const Dhcp6Options options(pkt, p.dhcp6OptionsOffset());
    const auto clientId = options.option(Dhcp6OptionType::clientId);
    const auto remoteId = options.option(Dhcp6OptionType::remoteId);
    expect(p.cIdOption() == static_cast<bool>(clientId));
    expect(p.rIdOption() == (clientId && remoteId));
    const auto ids = dhcp6Identifiers(pkt, {message, pkt->bytes()});
    // The parser reads an address past the option's end; dhcp6Identifiers does not.
    const bool same =
        clientId && ids.clientId.option.offset == clientId->offset() &&
        ((clientId->len() == 10 && p.cIdDuidType() == 3) || (clientId->len() == 14 && p.cIdDuidType() == 1));
    expect(!same || ids.clientId.duidllAddr == p.cIdDuidllAddr());
    if (clientId) checkClientId(p, clientId);
    if (clientId && remoteId) checkRemoteId(p, remoteId);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    if (size < 1) return 0;
    const Kitnet::IntfId& port = ports[data[0] & 3];
    const bool stripped = (data[0] & 8) != 0, reserved = stripped && (data[0] & 32) != 0;
    const Octets frame(data + 1, data + size);
    const auto bridging = config();
    std::optional<Dhcp6PacketParser> first;
    for (const PktPtr& pkt : packets(frame)) {
        if (stripped) pkt->vlanTagIs((data[0] & 16) != 0 ? 0x88a8 : 0x8100, reserved ? 0x0fff : 0x6064);
        Dhcp6PacketParser parser(bridging);
        try {
            if (parser.doParseDhcp6(pkt, port)) checkAccepted(pkt, parser);
        } catch (const Kcore::RangeException&) {
            const bool inFrame = frame.size() >= 16 && frame[14] % 16 == 15 && frame[15] == 255;
            expect(reserved || inFrame);
        }
        expect(!first || (parser == *first && parser.hash() == first->hash()));
        expect(bytesOf(*pkt) == frame);
        first = parser;
    }
    return 0;
}
