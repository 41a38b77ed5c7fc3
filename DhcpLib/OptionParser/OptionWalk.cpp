#include "DhcpLib/OptionParser/OptionWalk.h"

#include "DhcpLib/OptionParser/internal/OptionIndex.h"
#include "DhcpLib/OptionParser/internal/SubOptionWalk.h"
#include "DhcpLib/internal/Trace.h"
#include "Kcore/Assert.h"

namespace DhcpLib {

namespace {

constexpr char getOptionsSignature[] =
    "void DhcpLib::getDhcpOptions(const Ptr&, U32, DhcpLib::DhcpOptions*&, DhcpLib::DhcpSingleOption*&, "
    "DhcpLib::DhcpSingleOption*&, DhcpLib::DhcpSingleOption*&)";

DhcpSingleOption* overlayAt(const PktPtr& pkt, U32 at) { return reinterpret_cast<DhcpSingleOption*>(pkt->data() + at); }

/// The data of the last option `code` of a message at byte 0 as an address.
Kitnet::IpAddr addressOption(const PktPtr& pkt, DhcpOptionType code) {
    const OptionIndex index(Wire::ByteView(pkt.get()), 0);
    traceAreaFailure(index.state());
    return index.wellFormed() ? index.last(code).valueOr(Kitnet::IpAddr()) : Kitnet::IpAddr();
}

}  // namespace

const std::array<Kcore::String, 14> DhcpMsgTypeTbl = {
    "",
    "DHCPDISCOVER",
    "DHCPOFFER",
    "DHCPREQUEST",
    "DHCPDECLINE",
    "DHCPACK",
    "DHCPNAK",
    "DHCPRELEASE",
    "DHCPINFORM",
    "DHCPFORCERENEW",
    "DHCPLEASEQUERY",
    "DHCPLEASEUNASSIGNED",
    "DHCPLEASEUNKNOWN",
    "DHCPLEASEACTIVE",
};

DhcpSingleOption* getDhcpNextOpt(DhcpSingleOption* opt) {
    return reinterpret_cast<DhcpSingleOption*>(opt->code == 0 ? opt->data() - 1 : opt->data() + opt->len);
}

void increaseAddedOptLen(U8& total, U8 added) { total = static_cast<U8>(total + added + sizeof(DhcpSingleOption)); }

void u32ToNetworkBytes(U32 value, char* out) {
    const Kitnet::NetU32 image(value);
    std::memcpy(out, image.bytes(), sizeof image);
}

bool parseDhcpOptions(const PktPtr& pkt, U32 offset, std::vector<DhcpSingleOptionWithCode>& wanted) {
    const AreaState state = walkOptionsArea(Wire::ByteView(pkt.get()), offset, [&](const auto& head) {
        for (const DhcpSingleOptionWithCode& request : wanted) {
            if (request.code != head.code) continue;
            *request.option = overlayAt(pkt, head.at);
            break;
        }
    });
    traceAreaFailure(state);
    return state == AreaState::wellFormed;
}

bool parseDhcpSubOptsInOption(DhcpSingleOption* first, std::size_t total,
                              std::vector<DhcpSingleOptionWithCode>& wanted) {
    auto* start = reinterpret_cast<U8*>(first);
    walkSubOptsInOption(unboundedFrom(start), 0, total, [&](U8 code, U32 at) {
        for (const DhcpSingleOptionWithCode& request : wanted)
            if (request.code == code) *request.option = reinterpret_cast<DhcpSingleOption*>(start + at);
    });
    return true;
}

void getDhcpOptions(const PktPtr& pkt, U32 offset, DhcpOptions*& options, DhcpSingleOption*& relayAgentInfo,
                    DhcpSingleOption*& endOption, DhcpSingleOption*& packetEnd) {
    const OptionIndex index(Wire::ByteView(pkt.get()), offset);
    if (index.state() == AreaState::noSpace || index.state() == AreaState::noCookie)
        Tyk::TraceHelper(traceHandle(), TraceLevel::rejection, {getOptionsSignature}).stream()
            << getOptionsSignature << noCookieText;
    if (!index.wellFormed()) Kcore::assertionFailed("0", getOptionsSignature, "DhcpLib/OptionParser");
    const RawOption info = index.last(DhcpOptionType::infoOpt);
    endOption = overlayAt(pkt, index.last(DhcpOptionType::endOpt).at());
    relayAgentInfo = info ? overlayAt(pkt, info.at()) : nullptr;
    options = reinterpret_cast<DhcpOptions*>(pkt->data() + offset + Constants::bootpHdrSize);
    packetEnd = overlayAt(pkt, pkt->bytes());
}

Kcore::String getDhcpMsgTypeStringAndOpt(const PktPtr& pkt, U32 offset, U8& msgType) {
    return messageTypeOf(OptionIndex(Wire::ByteView(pkt.get()), offset), msgType);
}

Kcore::String getDhcpMsgType(const PktPtr& pkt, U32 offset) {
    U8 msgType = 0;
    return getDhcpMsgTypeStringAndOpt(pkt, offset, msgType);
}

Kitnet::IpAddr getRequestedIpOption(const PktPtr& pkt, BootpOption direction) {
    const Kitnet::IpAddr requested = addressOption(pkt, DhcpOptionType::requestIpOpt);
    return direction == BootpOption::bootpRequest ? requested : Kitnet::IpAddr();
}

Kitnet::IpAddr getServerId(const PktPtr& pkt) { return addressOption(pkt, DhcpOptionType::serverIdOpt); }

}  // namespace DhcpLib
