#include "DhcpLib/DhcpHdr/VendorBlock.h"
#include "DhcpLib/OptionParser/internal/InfoReader.h"
#include "DhcpLib/OptionParser/internal/RewritePlan.h"
#include "DhcpLib/internal/Trace.h"
#include "Kcore/Assert.h"

namespace DhcpLib {

namespace {

using SubCode = DhcpInformationSubOptionType;

constexpr std::string_view caller = "preparePacketNew";
constexpr char signature[] =
    "bool DhcpLib::preparePacketNew(const Ptr&, DhcpLib::BootpOption, bool, Tyk::String, Tyk::String, Tyk::String, "
    "Kitnet::IpAddr, Kitnet::IpAddr, U32, bool, Tyk::String, Kitnet::IpGenAddr)";

/// What the packet says before anything is changed.
struct MessageNew {
    RawOption info;  ///< an option 82 behind the end option counts as absent
    RawOption end;
    bool hasMaxMsgSize = false;
    InfoSubOptions subOptions;
    bool ownBlock = false;  ///< sub-option 9 holds the system's block ...
    U16 ownBlockAt = 0;     ///< ... here

    explicit MessageNew(Wire::ByteView bytes) : subOptions(bytes) {}
    U32 infoBytes() const { return info ? SubOptionShape::headerBytes + info.len() : 0; }
    U32 infoAt() const { return info ? info.at() : end.at(); }
};

RewriteStop scanMessageNew(const OptionIndex& index, MessageNew& message) {
    const OptionIndex::Collected area = index.collected(true);
    // Positions wrap at 65536: what they find in front of the message is no part of it.
    const auto inMessage = [&](const RawOption& option) { return option && option.at() >= index.offset(); };
    if (!isAreaComplete(area.cookie, area.any, inMessage(area.end))) return {RelayRewriteVerdict::notDhcp};
    message.end = area.end;
    message.hasMaxMsgSize = static_cast<bool>(area.maxMsgSize);
    if (!inMessage(area.info) || area.info.at() > area.end.at()) return {};
    if (isInfoOptionEmpty(area.info.len())) return {RelayRewriteVerdict::infoOptionEmpty};
    message.info = area.info;
    readInfoSubOptions(area.info, message.subOptions);
    if (const RawOption vendor = message.subOptions[SubCode::vendorSpecificSubOption])
        message.ownBlock =
            findQuorvaBlockOfSubOption(index.bytes(), static_cast<U16>(vendor.at()), vendor.len(), &message.ownBlockAt);
    return {};
}

/// The data of option 82 as it will be, sub-option by sub-option.
class InfoBuilder {
public:
    InfoBuilder(const RewriteArgs& args, const MessageNew& message) : args_(args), message_(message) {}

    RewriteStop buildRequest() {
        if (args_.anyTooLong()) return {RelayRewriteVerdict::infoOptionTooLong};
        keepOr(SubCode::circuitId, args_.circuitId);
        keepOr(SubCode::remoteIdOpt, args_.remoteId);
        addVendor();
        addAddress(SubCode::linkSelectionId, args_.linkSelection);
        addAddress(SubCode::serverIdOverride, args_.serverId);
        if (!args_.vpnId.empty()) add(SubCode::vpnId, args_.vpnId);
        if (args_.hasVssControl()) add(SubCode::vssControl, {});
        if (tooLong_ || data_.size() > longestOption) return {RelayRewriteVerdict::infoOptionTooLong};
        if (!args_.vpnId.empty() && message_.subOptions[SubCode::vssControl])
            return {RelayRewriteVerdict::fine, "!infoSubOptPresent( infoSubOpts, DhcpLib::vssControl() )"};
        return {};
    }

    void buildReply() {
        if (!args_.infoOpt) {
            keep(SubCode::circuitId);
            keep(SubCode::remoteIdOpt);
        }
        const RawOption vendor = message_.subOptions[SubCode::vendorSpecificSubOption];
        if (!vendor) return;
        const bool cuts = args_.hasVendorData() && message_.ownBlock;
        const std::size_t foreign = cuts ? message_.ownBlockAt - vendor.dataAt() : vendor.len();
        if (foreign != 0 || !cuts) add(SubCode::vendorSpecificSubOption, vendor.data().substr(0, foreign));
    }

    const Kcore::Bytes& data() const { return data_; }

private:
    void add(SubCode code, std::string_view bytes) {
        setInfoData(data_, pos_, static_cast<U8>(code), static_cast<U8>(bytes.size()),
                    reinterpret_cast<const U8*>(bytes.data()));
    }
    void addAddress(SubCode code, const Kitnet::IpAddr& address) {
        if (address.isAny()) return;
        add(code, {reinterpret_cast<const char*>(address.bytes()), sizeof address});
    }
    void keep(SubCode code) {
        if (const RawOption subOption = message_.subOptions[code]) add(code, subOption.data());
    }
    void keepOr(SubCode code, const Tyk::String& otherwise) {
        if (message_.subOptions[code])
            keep(code);
        else if (!otherwise.empty())
            add(code, otherwise);
    }
    void addVendor() {
        const RawOption existing = message_.subOptions[SubCode::vendorSpecificSubOption];
        if (!args_.hasVendorData() || message_.ownBlock) return keep(SubCode::vendorSpecificSubOption);
        const U8 code = static_cast<U8>(SubCode::vendorSpecificSubOption), len = existing ? existing.len() : U8{0};
        const U32 block = quorvaVendorSpecificSubOptLen(args_.intfName, args_.srcVtep) + vendorBlockHeaderBytes;
        tooLong_ = len + block > longestOption;
        data_.push_back(code);
        pos_ = static_cast<U32>(data_.size());
        addVendorSpecificSubOptLen(data_, pos_, len, true, args_.intfName, args_.srcVtep);
        if (existing) data_.append(existing.data());
        pos_ = static_cast<U32>(data_.size());
        addQuorvaVendorSpecificSubOpt(data_, pos_, args_.intfName, args_.srcVtep);
    }

    const RewriteArgs& args_;
    const MessageNew& message_;
    Kcore::Bytes data_;
    U32 pos_ = 0;
    bool tooLong_ = false;
};

/// What option 82 will take, header included. Only a reply drops one without data.
U32 newInfoBytes(const RewriteArgs& args, const Kcore::Bytes& data) {
    if (args.isReply() && data.empty()) return 0;
    return SubOptionShape::headerBytes + static_cast<U32>(data.size());
}

bool changesInfoOption(const RewriteArgs& args, const MessageNew& message) {
    return args.isInsertion() || (args.isReply() && message.info);
}

/// Requires: changesInfoOption(). What stands between the old option 82 and the end option is moved as it stands.
U32 writeInfoOption(Kitnet::Pkt& pkt, const MessageNew& message, const Kcore::Bytes& data, U32 newBytes) {
    const U32 infoAt = message.infoAt(), tailAt = infoAt + message.infoBytes(), endAt = message.end.at();
    const U32 newTailAt = infoAt + newBytes, newEndAt = newTailAt + (endAt - tailAt);
    const S32 padding = currentPadding(pkt, endAt, signature);
    if (const S32 missing = static_cast<S32>(newEndAt - endAt) - padding; missing > 0)
        growTail(pkt, static_cast<U32>(missing));
    Wire::move(pkt, newTailAt, tailAt, endAt - tailAt);
    if (newBytes != 0) {
        Wire::store<U8>(pkt, infoAt, static_cast<U8>(DhcpOptionType::infoOpt));
        Wire::store<U8>(pkt, infoAt + DhcpConst::optlen_offset, static_cast<U8>(data.size()));
        Wire::store(pkt, infoAt + DhcpConst::optdata_offset, data.span());
    }
    Wire::store<U8>(pkt, newEndAt, static_cast<U8>(DhcpOptionType::endOpt));
    return newEndAt;
}

RewriteStop buildInfo(const RewriteArgs& args, const MessageNew& message, InfoBuilder& builder) {
    if (args.isInsertion()) return builder.buildRequest();
    if (changesInfoOption(args, message)) builder.buildReply();
    return {};
}

bool rewriteNew(Kitnet::Pkt& pkt, const RewriteArgs& args) {
    traceRewriteEntry(caller, args);
    const Wire::ByteView bytes(pkt);
    MessageNew message(bytes);
    if (scanMessageNew(OptionIndex(bytes, args.offset), message)) return false;
    if (args.op == BootpOption::bootpRequest)
        Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "{}BOOTPREQUEST", caller);
    else if (args.isReply())
        Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "{}BOOTPREPLY", caller);

    InfoBuilder builder(args, message);
    const RewriteStop stop = buildInfo(args, message, builder);
    if (stop.refusal != RelayRewriteVerdict::fine) return traceRefusal(caller, stop.refusal);
    if (stop.assertion != nullptr) Kcore::assertionFailed(stop.assertion, signature, "DhcpLib/OptionParser");
    U32 endAt = message.end.at();
    if (changesInfoOption(args, message))
        endAt = writeInfoOption(pkt, message, builder.data(), newInfoBytes(args, builder.data()));
    normaliseSize(pkt, args, endAt, message.hasMaxMsgSize);
    return true;
}

}  // namespace

bool preparePacketNew(const PktPtr& pkt, BootpOption op, bool infoOpt, Tyk::String circuitId, Tyk::String remoteId,
                      Tyk::String vpnId, Kitnet::IpAddr serverId, Kitnet::IpAddr linkselectionId, U32 offset,
                      bool vssControlDisable, Tyk::String vendorSpecificSubOptIntfName,
                      Kitnet::IpGenAddr vendorSpecificSubOptSrcVtepIp) {
    return rewriteNew(*pkt, {op, infoOpt, circuitId, remoteId, vpnId, serverId, linkselectionId, offset,
                             vssControlDisable, vendorSpecificSubOptIntfName, vendorSpecificSubOptSrcVtepIp});
}

RelayRewriteForecast forecastRewriteNew(Wire::ByteView bytes, const RewriteArgs& args) {
    const OptionIndex index(bytes, args.offset);
    MessageNew message(bytes);
    if (const RewriteStop unreadable = scanMessageNew(index, message)) return forecastOf(unreadable, index);
    InfoBuilder builder(args, message);
    if (const RewriteStop stop = buildInfo(args, message, builder)) return forecastOf(stop, index);
    U32 endAt = message.end.at();
    if (changesInfoOption(args, message)) endAt += newInfoBytes(args, builder.data()) - message.infoBytes();
    return forecastOf(message.info, message.end, index, normalisedBytes(args, endAt, message.hasMaxMsgSize));
}

}  // namespace DhcpLib
