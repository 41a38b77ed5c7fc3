#include "InfoOption.h"

#include "DhcpLib/DhcpHdr.h"
#include "DhcpLib/OptionParser.h"

namespace DhcpRelay {

OptionFacts factsOf(const PktPtr& pkt, U32 at) {
    using Option = DhcpLib::DhcpSingleOption;
    OptionFacts facts;
    const DhcpLib::Wire::ByteView bytes(*pkt);
    facts.isBootp = bytes.loadRaw(at + DhcpLib::Constants::bootpHdrSize) != DhcpLib::Constants::dhcpMagicCookie;
    if (facts.isBootp) return facts;
    Option *info = nullptr, *type = nullptr;
    static std::vector<DhcpLib::DhcpSingleOptionWithCode> wanted(2);
    wanted[0] = {static_cast<U8>(DhcpLib::DhcpOptionType::infoOpt), &info};
    wanted[1] = {static_cast<U8>(DhcpLib::DhcpOptionType::msgType), &type};
    facts.isWellFormed = DhcpLib::parseDhcpOptions(pkt, at, wanted);
    facts.hasInfo = info != nullptr;
    if (type != nullptr && type->len == 1)
        facts.messageType = bytes.load<U8>(static_cast<U32>(type->data() - pkt->data()));
    return facts;
}

InfoFacts infoFactsOf(const PktPtr& pkt, U32 at) {
    InfoFacts facts;
    Tyk::String remoteId, vpnId, intfName;
    IpAddr serverId, link;
    IpGenAddr vtep;
    DhcpLib::parseInfoOptNew(pkt, facts.circuitId, remoteId, vpnId, facts.hasVssControl, serverId, link, intfName, vtep,
                             at);
    return facts;
}

bool removeEveryInfo(const PktPtr& pkt, U32 at) {
    DhcpLib::RelayRewrite removal;
    removal.op = DhcpLib::BootpOption::bootpReply;
    removal.offset = at;
    constexpr auto generation = DhcpLib::RelayGeneration::preparePacketNew;
    constexpr int most = 128;  // an option has at least 2 of a message's bytes; nobody means more than one
    for (int i = 0; i < most && factsOf(pkt, at).hasInfo; ++i)
        if (!DhcpLib::relayRewriteCheck(pkt, removal, generation).isRewritable() ||
            !DhcpLib::relayRewrite(pkt, removal, generation))
            return false;
    return !factsOf(pkt, at).hasInfo;
}

}  // namespace DhcpRelay
