#include "DhcpLib/OptionParser/internal/InfoReader.h"

#include "DhcpLib/DhcpHdr/VendorBlock.h"
#include "DhcpLib/OptionParser/internal/SubOptionWalk.h"
#include "DhcpLib/internal/Trace.h"

namespace DhcpLib {

namespace {

constexpr char parseByViewsSignature[] =
    "bool DhcpLib::parseDhcpOptions(const Ptr&, U32, DhcpLib::DhcpMsgOptions::Ptr&, DhcpLib::DhcpMsgOption::Ptr&)";
constexpr char subOptionsSignature[] =
    "bool DhcpLib::parseInfoSubOptions(DhcpLib::DhcpMsgOptions::Ptr&, DhcpLib::DhcpMsgOption::Ptr&, "
    "DhcpLib::DhcpInformationSubOptions::Ptr&)";
constexpr char parseInfoNewSignature[] =
    "bool DhcpLib::parseInfoOptNew(const Ptr&, Tyk::String&, Tyk::String&, Tyk::String&, bool&, IpAddr&, IpAddr&, "
    "Tyk::String&, IpGenAddr&, U32)";

}  // namespace

void traceReadFailure(const char* signature, std::string_view text, Kcore::SourceSite caller) {
    Tyk::DualTrace(traceHandle(), TraceLevel::failure, {signature, caller}, "{}{}", std::string_view(signature), text);
}

void traceSubOptPresent(DhcpInformationSubOptionType subType, Kcore::SourceSite caller) {
    Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {nullptr, caller}, "infoSubOptPresent subType {}", subType);
}

bool isAreaComplete(bool cookie, bool anyOption, bool end) {
    if (cookie && anyOption && end) return true;
    traceReadFailure(parseByViewsSignature, !cookie      ? withoutBlank(noCookieText)
                                            : !anyOption ? std::string_view("DHCP packet missing all options")
                                                         : withoutBlank(noEndOptionText));
    return false;
}

bool isInfoOptionEmpty(U8 len) {
    if (len == 0) traceReadFailure(subOptionsSignature, emptyInfoText);
    return len == 0;
}

void readInfoSubOptions(const RawOption& info, InfoSubOptions& found) {
    walkSubItems(info.bytes(), static_cast<U16>(info.at()), DhcpConst::optdata_offset, info.len(),
                 [&](const auto& head) { found.keepFirst(head.code, head.at); });
}

bool readInfoNew(const OptionIndex& index, InfoSubOptions& found) {
    Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {parseInfoNewSignature}, "{}",
                   std::string_view(parseInfoNewSignature));
    const CollectedOptions area = index.collected();
    if (!isAreaComplete(area.cookie, area.any, static_cast<bool>(area.end))) return false;
    if (area.info && isInfoOptionEmpty(area.info.len())) return false;
    if (area.info) readInfoSubOptions(area.info, found);
    if (traceHandle().wanted(TraceLevel::verbose) || Tyk::RingTrace::wanted(TraceLevel::verbose)) [[unlikely]]
        for (const DhcpInformationSubOptionType code : InfoSubOptions::codes) traceSubOptPresent(code);
    return true;
}

VendorItems readVendorBlockNew(const RawOption& vendorSpecific) {
    const Wire::ByteView bytes = vendorSpecific.bytes();
    VendorItems items;
    U16 block = 0;
    VendorBlockHead blockHead;
    if (!findQuorvaBlockOfSubOption(bytes, static_cast<U16>(vendorSpecific.at()), vendorSpecific.len(), &block) ||
        !vendorBlockAt(bytes, block, &blockHead))
        return items;
    walkSubItems(bytes, block, vendorBlockHeaderBytes, blockHead.len,
                 [&](const auto& head) { items.keepFirst(head.code, RawOption(bytes, head.at, Positions::ofViews)); });
    if (items.srcVtep && !isVtepWellFormed(items.srcVtep, "parseInfoOptNew")) items.srcVtep = {};
    return items;
}

}  // namespace DhcpLib
