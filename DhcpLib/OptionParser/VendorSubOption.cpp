#include "DhcpLib/OptionParser/VendorSubOption.h"

#include <functional>
#include <vector>

#include "DhcpLib/OptionParser/internal/OptionIndex.h"
#include "DhcpLib/OptionParser/internal/SubOptionWalk.h"
#include "DhcpLib/OptionParser/internal/VendorItems.h"
#include "DhcpLib/Toggle.h"
#include "DhcpLib/internal/Trace.h"

namespace DhcpLib {

namespace {

constexpr U32 headerBytes = SubOptionShape::headerBytes;
constexpr std::string_view reader = "parseVendorSpecificSubOpt";

/// Writes `bytes` at `pos`, growing the buffer if necessary, and sets `pos` to the buffer's size
/// (docs/compatibility.md#position-is-the-buffer-size).
void put(Kcore::Bytes& buf, U32& pos, std::span<const U8> bytes) {
    if (buf.size() < pos + bytes.size()) buf.resize(pos + bytes.size());
    std::copy(bytes.begin(), bytes.end(), buf.data() + pos);
    pos = static_cast<U32>(buf.size());
}

/// setInfoData without its trace line.
void putItem(Kcore::Bytes& buf, U32& pos, U8 code, U8 len, const U8* data) {
    const U8 header[] = {code, len};
    if (pos == buf.size()) {  // the usual case; it costs a third of the general one
        U8* const to = buf.grow(headerBytes + len);
        std::copy_n(header, headerBytes, to);
        Kcore::copyBytes(to + headerBytes, data, len);
        pos += headerBytes + len;
        return;
    }
    U32 dataPos = pos + headerBytes;
    put(buf, pos, header);
    put(buf, dataPos, {data, len});
    pos = dataPos;
}

/// Size of the item with the source address; 0 if it is left out.
U32 vtepItemLen(const Kitnet::IpGenAddr& srcVtep) {
    if (!srcVtep.isUsable()) return 0;
    return headerBytes + static_cast<U32>(srcVtep.isV4() ? sizeof(Kitnet::IpAddr) : sizeof(Kitnet::Ip6Addr));
}

using PutItem = void (*)(Kcore::Bytes&, U32&, U8, U8, const U8*);

void putBlock(Kcore::Bytes& buf, U32& pos, const Kcore::String& intfName, const Kitnet::IpGenAddr& srcVtep,
              PutItem putOne) {
    constexpr U8 nameCode = static_cast<U8>(DhcpVendorSpecificDataType::interfaceName),
                 vtepCode = static_cast<U8>(DhcpVendorSpecificDataType::sourceVtepIp);
    const U8 len = static_cast<U8>(quorvaVendorSpecificSubOptLen(intfName, srcVtep));
    addQuorvaEnterpriseNum(buf, pos);
    put(buf, pos, {&len, 1});
    if (!intfName.empty())
        putOne(buf, pos, nameCode, static_cast<U8>(intfName.size()), reinterpret_cast<const U8*>(intfName.data()));
    if (!srcVtep.isUsable()) return;
    if (srcVtep.isV4())
        putOne(buf, pos, vtepCode, sizeof(Kitnet::IpAddr), srcVtep.v4Addr().bytes());
    else
        putOne(buf, pos, vtepCode, sizeof(Kitnet::Ip6Addr), srcVtep.v6Addr().bytes());
}

void parseLegacyText(Wire::ByteView bytes, U32 at, Kcore::String& intfName) {
    const std::string_view data = RawOption(bytes, at).data();
    const std::size_t number = data.find(quorvaEntNumText());
    if (number == data.npos) return;
    const std::string_view tail = data.substr(number + quorvaEntNumText().size());
    intfName = tail.empty() ? std::string_view{} : tail.substr(1, static_cast<U8>(tail[0]));
    Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {},
                   "{}extracted subdata related to Quorva's enterprise number: {} {}", reader, Constants::quorvaEntNum,
                   intfName);
}

void parseBlock(Wire::ByteView bytes, U32 at, Kcore::String& intfName, Kitnet::IpGenAddr& srcVtepIp) {
    const RawOption subOption(bytes, at);
    U32 block = 0;
    VendorBlockHead head;
    if (!findQuorvaBlock<U32>(bytes, subOption.dataAt(), subOption.len(), &block)) return;
    if (!vendorBlockAt(bytes, block, &head)) return;
    VendorItems items;
    walkSubOptsInOption(bytes, block + vendorBlockHeaderBytes, head.len,
                        [&](U8 code, U32 itemAt) { items.keepLast(code, RawOption(bytes, itemAt)); });
    if (items.intfName) {
        intfName = items.intfName.data();
        Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "{} vs subopt intfName {}", reader, intfName);
    }
    if (!items.srcVtep || !isVtepWellFormed(items.srcVtep, reader)) return;
    srcVtepIp = vtepOf(items.srcVtep);
    if (srcVtepIp.isV4())
        Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "{} vs subopt src vtep ipv4 {}", reader, srcVtepIp);
    else
        Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "{} vs subopt src vtep ipv6 {}", reader, srcVtepIp);
}

}  // namespace

const Kcore::String& quorvaEntNumText() {
    static const auto& text =
        *new Kcore::String(Kcore::textOf(Constants::quorvaEntNum));  // for threads that run while the process exits
    return text;
}

void setInfoData(Kcore::Bytes& buf, U32& pos, U8 subType, U8 len, const U8* data) {
    if (std::less_equal<>()(buf.begin(), data) && std::less<>()(data, buf.end())) {
        const std::vector<U8> copy(data, data + len);  // `buf` may move
        putItem(buf, pos, subType, len, copy.data());
    } else
        putItem(buf, pos, subType, len, data);
    Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "setInfoData subType {} len {}", subType, len);
}

DhcpVendorSpecificEntOption* getNextVendorSpecificEntOpt(DhcpVendorSpecificEntOption* block) {
    return reinterpret_cast<DhcpVendorSpecificEntOption*>(block->data() + block->len);
}

bool isVendorSpecificQuorvaEntno(DhcpVendorSpecificEntOption* first, std::size_t totalLen,
                                 DhcpVendorSpecificEntOption** found) {
    auto* start = reinterpret_cast<U8*>(first);
    U32 block = 0;
    const Wire::ByteView bytes = unboundedFrom(first);
    const auto total = static_cast<U32>(std::min<std::size_t>(totalLen, bytes.size()));
    if (!findQuorvaBlock<U32>(bytes, 0, total, &block)) return false;
    *found = reinterpret_cast<DhcpVendorSpecificEntOption*>(start + block);
    return true;
}

void addQuorvaEnterpriseNum(Kcore::Bytes& buf, U32& pos) {
    const Kitnet::NetU32 number(Constants::quorvaEntNum);
    put(buf, pos, {number.bytes(), sizeof number});
}

U32 quorvaVendorSpecificSubOptLen(const Kcore::String& intfName, const Kitnet::IpGenAddr& srcVtep) {
    const U32 nameLen = intfName.empty() ? 0 : static_cast<U32>(intfName.size()) + headerBytes;
    return nameLen + vtepItemLen(srcVtep);
}

U32 addVendorSpecificSubOptLen(Kcore::Bytes& buf, U32& pos, U8 len, bool addQuorva, const Kcore::String& intfName,
                               const Kitnet::IpGenAddr& srcVtep) {
    const U32 block = addQuorva ? quorvaVendorSpecificSubOptLen(intfName, srcVtep) + vendorBlockHeaderBytes : 0;
    const U8 whole = static_cast<U8>(len + block);  // docs/compatibility.md#helper-lengths-wrap-at-256
    put(buf, pos, {&whole, 1});
    return pos;
}

void addQuorvaVendorSpecificSubOpt(Kcore::Bytes& buf, U32& pos, const Kcore::String& intfName,
                                   const Kitnet::IpGenAddr& srcVtep) {
    putBlock(buf, pos, intfName, srcVtep, setInfoData);
}

Kcore::Bytes quorvaBlock(const Kcore::String& intfName, const Kitnet::IpGenAddr& srcVtep) {
    Kcore::Bytes block;
    U32 pos = 0;
    putBlock(block, pos, intfName, srcVtep, putItem);
    return block;
}

U32 getVendorSpecificSubOptionLenAdd(Kcore::String intfName, Kitnet::IpGenAddr srcVtep,
                                     Kcore::String existingVendorData, U32 legacyLen) {
    const U32 newHeader = existingVendorData.empty() ? headerBytes : 0;
    if (!dhcpRelayTunnelEncapReplies()) return legacyLen + newHeader;
    return quorvaVendorSpecificSubOptLen(intfName, srcVtep) + vendorBlockHeaderBytes + newHeader;
}

std::size_t addVendorSpecificSubOption(DhcpSingleOption* infoOpt, std::size_t dataPos,
                                       DhcpSingleOption* existingVsSubOpt, Kcore::String intfName,
                                       Kitnet::IpGenAddr srcVtep) {
    if (!isVendorDataPresent(intfName, srcVtep) || (infoOpt == nullptr && existingVsSubOpt == nullptr)) return 0;
    const U32 added = vendorBlockHeaderBytes + quorvaVendorSpecificSubOptLen(intfName, srcVtep);
    constexpr U32 longest = 255;
    if (added + (existingVsSubOpt == nullptr ? 0u : existingVsSubOpt->len) > longest) return 0;
    const Kcore::Bytes block = quorvaBlock(intfName, srcVtep);
    DhcpSingleOption* target = existingVsSubOpt;
    if (target == nullptr) {
        target = reinterpret_cast<DhcpSingleOption*>(infoOpt->data() + dataPos);
        *target = {static_cast<U8>(DhcpInformationSubOptionType::vendorSpecificSubOption), 0};
    }
    std::copy(block.begin(), block.end(), target->data() + target->len);
    target->len = static_cast<U8>(target->len + added);
    return added + (existingVsSubOpt == nullptr ? headerBytes : 0);
}

U32 calculateNonQuorvaVendorLen(Kcore::Ptr<DhcpInformationSubOption>& vsSubOpt,
                                Kcore::Ptr<DhcpVendorSpecificSubOpt>& vsView) {
    if (!vsSubOpt) return 0;
    const DhcpVendorSpecificData::Ptr block = vsView ? vsView->quorvaSpecificOpt() : nullptr;
    if (!block) return vsSubOpt->len();
    return U32{block->offset()} - vsSubOpt->offset() - headerBytes;
}

void parseVendorSpecificSubOpt(Wire::ByteView bytes, U32 at, Kcore::String& intfName, Kitnet::IpGenAddr& srcVtepIp) {
    if (dhcpRelayTunnelEncapReplies())
        parseBlock(bytes, at, intfName, srcVtepIp);
    else
        parseLegacyText(bytes, at, intfName);
}

void parseVendorSpecificSubOpt(DhcpSingleOption* vsSubOpt, Kcore::String& intfName, Kitnet::IpGenAddr& srcVtepIp) {
    parseVendorSpecificSubOpt(unboundedFrom(vsSubOpt), 0, intfName, srcVtepIp);
}

}  // namespace DhcpLib
