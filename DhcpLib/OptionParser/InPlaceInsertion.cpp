#include "DhcpLib/OptionParser/internal/InPlaceInsertion.h"

#include <cstring>
#include <utility>

#include "DhcpLib/OptionParser/internal/SubOptionWalk.h"
#include "DhcpLib/OptionParser/internal/VendorBlocks.h"
#include "DhcpLib/Toggle.h"
#include "DhcpLib/internal/Trace.h"

namespace DhcpLib {

namespace {

using SubCode = DhcpInformationSubOptionType;

constexpr std::string_view caller = "preparePacket";

/// Whether a sub-option 9 holds the own vendor data, in the layout that the feature toggle selects.
bool holdsOwnVendorData(Wire::ByteView bytes, const RawOption& subOption) {
    if (!dhcpRelayTunnelEncapReplies()) return subOption.data().find(quorvaEntNumText()) != std::string_view::npos;
    U32 block = 0;
    return findQuorvaBlock<U32>(bytes, subOption.dataAt(), subOption.len(), &block);
}

void traceOwnVendorDataFound() {
    std::string_view text = "Vendor-specific subopt with Quorva's data already present ";
    if (dhcpRelayTunnelEncapReplies()) text.remove_suffix(1);  // only the trace of the text layout ends with a blank
    Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "{}{}", caller, text);
}

/// The bytes to append to sub-option 9: the own block, or the text layout.
Kcore::Bytes vendorBytes(const RewriteArgs& args) {
    if (dhcpRelayTunnelEncapReplies()) return quorvaBlock(args.intfName, args.srcVtep);
    Kcore::Bytes text;
    text.append(quorvaEntNumText().view());
    text.push_back(static_cast<U8>(args.intfName.size()));
    text.append(args.intfName.view());
    return text;
}

std::string_view textOf(const Kcore::Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

void traceOwnVendorData(Wire::ByteView bytes, const RawOption& info, U32 endAt) {
    if (!isTraced(TraceLevel::verbose)) return;
    walkSubOptionsUpTo(bytes, info.dataAt(), endAt, [&](const auto& head) {
        if (head.code == static_cast<U8>(SubCode::vendorSpecificSubOption) &&
            holdsOwnVendorData(bytes, RawOption(bytes, head.at)))
            traceOwnVendorDataFound();
    });
}

/// Writes into data whose length was planned, never past its end: a piece that does not fit ends the writing.
class InPlaceInsertion::Writer {
public:
    explicit Writer(Kcore::Bytes& data) : to_(data.data()), left_(data.size()) {}

    /// Whether all pieces fit and no byte is left.
    bool isFull() const { return left_ == 0 && to_ != nullptr; }
    void put(std::string_view bytes) {
        if (U8* const to = next(bytes.size())) Kcore::copyBytes(to, bytes.data(), bytes.size());
    }
    void putHeader(SubCode code, std::size_t len) {
        U8* const to = next(SubOptionShape::headerBytes);
        if (to == nullptr) return;
        to[0] = static_cast<U8>(code);
        to[1] = static_cast<U8>(len);
    }
    void put(SubCode code, std::string_view bytes) {
        putHeader(code, bytes.size());
        put(bytes);
    }
    void put(SubCode code, const Kitnet::IpAddr& address) {
        putHeader(code, sizeof address);
        if (U8* const to = next(sizeof address)) std::memcpy(to, address.bytes(), sizeof address);
    }

private:
    /// Position of the next `n` bytes, or null if they do not fit.
    U8* next(std::size_t n) {
        if (n > left_) [[unlikely]] {
            left_ = 0;
            return to_ = nullptr;
        }
        left_ -= n;
        return std::exchange(to_, to_ + n);
    }

    U8* to_;  // null once a piece did not fit
    std::size_t left_;
};

InPlaceInsertion::InPlaceInsertion(Wire::ByteView bytes, const RewriteArgs& args, const RawOption& info, U32 endAt)
    : bytes_(bytes),
      args_(args),
      creates_(!info),
      dataAt_(info.dataAt()),
      firstLen_(info ? info.len() : args.circuitPart() + args.remotePart()) {
    if (info) scan(endAt);
    planLengths();
}

/// Reads the options after option 82 as its sub-options, too: docs/compatibility.md#sub-options-up-to-the-end-option
void InPlaceInsertion::scan(U32 endAt) {
    walkSubOptionsUpTo(bytes_, dataAt_, endAt, [this](const Head& head) {
        if (Existing* const existing = recordOf(*this, head.code))
            noteRelaySubOption(*existing, head);
        else if (head.code == static_cast<U8>(SubCode::vendorSpecificSubOption))
            noteVendorSubOption(head);
    });
}

void InPlaceInsertion::noteRelaySubOption(Existing& existing, const Head& head) {
    if (!existing) existing.at = head.at, existing.len = head.len;
    // A 152 counts as its header alone: docs/compatibility.md#repeated-sub-options-are-summed
    const S32 size = &existing == &vss_ ? subOptionHeaderBytes : static_cast<S32>(head.wireBytes);
    existing.size += size;
    existing_ += size;
    existingFrom_ = std::min(existingFrom_, head.at);
    const U32 infoEnd = dataAt_ + static_cast<U32>(firstLen_);
    if (head.at >= infoEnd)
        existingBehind_ = true;
    else if (head.at + head.wireBytes > infoEnd)
        existingOverruns_ = true;
}

void InPlaceInsertion::noteVendorSubOption(const Head& head) {
    const RawOption subOption(bytes_, head.at);
    if (!holdsOwnVendorData(bytes_, subOption)) {
        foreignVendor_ = {head.at, head.len, static_cast<S32>(head.wireBytes)};
        return;
    }
    traceOwnVendorDataFound();
    ownVendor_ = true;
    if (!dhcpRelayTunnelEncapReplies() || vendorBlocksIn(bytes_, head.dataAt(), head.len).own)
        readableVendorEnd_ = std::min(readableVendorEnd_, head.at + head.wireBytes);
}

S32 InPlaceInsertion::vendorBlockLen() const {
    if (dhcpRelayTunnelEncapReplies())
        return static_cast<S32>(quorvaVendorSpecificSubOptLen(args_.intfName, args_.srcVtep) + vendorBlockHeaderBytes);
    return static_cast<S32>(quorvaEntNumText().size() + 1 + args_.intfName.size());
}

void InPlaceInsertion::planLengths() {
    if (args_.hasVendorData() && !ownVendor_)
        vendorAdded_ = vendorBlockLen() + (foreignVendor_ ? 0 : subOptionHeaderBytes);
    if (args_.hasLinkSelection())
        selectionAdded_ = args_.vssPart() + args_.vpnPart() + args_.linkPart() + args_.serverPart() - existing_;
    else if (link_)
        cut_ = existing_;
    finalLen_ = firstLen_ - cut_ + vendorAdded_ + selectionAdded_;
}

S32 InPlaceInsertion::neededPadding() const {
    S32 needed = subOptionHeaderBytes + (creates_ ? firstLen_ : 0) + selectionAdded_ + vendorAdded_;
    // An existing sub-option 9 without data counts as none here. The size of the result does not depend on it.
    if (addsVendorData() && foreignVendor_ && foreignVendor_.len == 0) needed += subOptionHeaderBytes;
    return needed;
}

RewriteStop InPlaceInsertion::stop() const {
    if (const RelayRewriteVerdict verdict = refusal(); verdict != RelayRewriteVerdict::fine)
        return refused(caller, verdict);
    return {RelayRewriteVerdict::fine, assertion()};
}

RelayRewriteVerdict InPlaceInsertion::refusal() const {
    using enum RelayRewriteVerdict;
    constexpr U8 addressLen = sizeof(Kitnet::IpAddr);
    const bool counts = args_.hasLinkSelection() || cut_ != 0, extends = addsVendorData() && foreignVendor_;
    const U32 infoEnd = dataAt_ + static_cast<U32>(firstLen_),
              foreignEnd = foreignVendor_.at + static_cast<U32>(foreignVendor_.size);
    if (counts && existingOverruns_) return infoOptionOverrun;
    if (args_.hasLinkSelection() && link_ && link_.len != addressLen) return infoOptionOverrun;
    if (args_.hasLinkSelection() && args_.hasServerId() && server_ && server_.len != addressLen)
        return infoOptionOverrun;
    if ((counts && existingBehind_) || (extends && foreignVendor_.at >= infoEnd)) return infoSubOptionBehind;
    if (extends && foreignEnd > stayingEnd()) return infoOptionOverrun;
    if (extends && foreignVendor_.len + vendorBlockLen() > longestOption) return infoOptionTooLong;
    return finalLen_ > longestOption ? infoOptionTooLong : fine;
}

const char* InPlaceInsertion::assertion() const {
    if (args_.hasLinkSelection()) return vss_ && !vpn_ ? "!vssControlOpt" : nullptr;
    return link_ && firstLen_ <= existing_ ? "tempInfoOpt->length > oldSubOptLen" : nullptr;
}

bool InPlaceInsertion::build(Kcore::Bytes& data) const {
    // Only the header of a removed 152 was subtracted from the length; zeros replace its data.
    data.resize(static_cast<std::size_t>(finalLen_));
    Writer writer(data);
    const bool whole = creates_ || copyExisting(writer);
    return addMissing(writer).isFull() && whole && !cutsOthers() && isVendorDataReadable();
}

/// Copies the existing sub-options that are kept, in their order. False if the last one is cut.
bool InPlaceInsertion::copyExisting(Writer& writer) const {
    bool whole = true;
    walkSubOptionsUpTo(bytes_, dataAt_, stayingEnd(), [&](const Head& head) {
        const Existing* const reused = args_.hasLinkSelection() ? recordOf(*this, head.code) : nullptr;
        if (reused != nullptr) {
            if (head.at == reused->at) reuse(writer, head);  // repeats are not counted, so they are removed
        } else if (addsVendorData() && foreignVendor_ && head.at == foreignVendor_.at) {
            copyVendor(writer, head);
        } else {
            const U32 there = std::min(head.wireBytes, stayingEnd() - head.at);
            whole &= there == head.wireBytes;
            writer.put(bytes_.text(head.at, there));
        }
    });
    return whole;
}

/// Appends the sub-option 9 at `head` with the own vendor data after its data.
void InPlaceInsertion::copyVendor(Writer& writer, const Head& head) const {
    const Kcore::Bytes added = vendorBytes(args_);
    writer.putHeader(SubCode::vendorSpecificSubOption, head.len + added.size());
    writer.put(bytes_.text(head.dataAt(), head.len));
    writer.put(textOf(added));
}

/// Appends an existing 5, 11, 151 or 152 with its new value, or nothing if it is no longer wanted.
void InPlaceInsertion::reuse(Writer& writer, const Head& head) const {
    const auto keep = [&] { writer.put(bytes_.text(head.at, head.wireBytes)); };
    switch (static_cast<SubCode>(head.code)) {
        case SubCode::linkSelectionId:
            return writer.put(SubCode::linkSelectionId, args_.linkSelection);
        case SubCode::serverIdOverride:
            if (args_.hasServerId()) writer.put(SubCode::serverIdOverride, args_.serverId);
            return;
        case SubCode::vpnId:
            if (args_.vpnId.empty()) return;
            // docs/compatibility.md#same-size-vrf-name-stays
            return head.len == args_.vpnId.size() ? keep() : writer.put(SubCode::vpnId, args_.vpnId.view());
        default:
            if (args_.hasVssControl()) keep();
    }
}

/// By value, so that the writer stays in registers.
InPlaceInsertion::Writer InPlaceInsertion::addMissing(Writer writer) const {
    if (creates_ && !args_.circuitId.empty()) writer.put(SubCode::circuitId, args_.circuitId.view());
    if (creates_ && !args_.remoteId.empty()) writer.put(SubCode::remoteIdOpt, args_.remoteId.view());
    if (addsVendorData() && !foreignVendor_) writer.put(SubCode::vendorSpecificSubOption, textOf(vendorBytes(args_)));
    if (!args_.hasLinkSelection()) return writer;
    if (!link_) writer.put(SubCode::linkSelectionId, args_.linkSelection);
    if (!server_ && args_.hasServerId()) writer.put(SubCode::serverIdOverride, args_.serverId);
    if (!vpn_ && !args_.vpnId.empty()) writer.put(SubCode::vpnId, args_.vpnId.view());
    if (!vss_ && args_.hasVssControl()) writer.putHeader(SubCode::vssControl, 0);
    return writer;
}

/// Whether readers find the own vendor data in the new option 82, if the arguments contain any.
bool InPlaceInsertion::isVendorDataReadable() const {
    if (!args_.hasVendorData()) return true;
    if (ownVendor_) return readableVendorEnd_ <= stayingEnd();
    if (!foreignVendor_ || !dhcpRelayTunnelEncapReplies()) return true;
    return vendorBlocksIn(bytes_, foreignVendor_.at + SubOptionShape::headerBytes, foreignVendor_.len).all;
}

void InPlaceInsertion::traceAdditions() const {
    constexpr int level = TraceLevel::verbose;
    if (addsVendorData() && dhcpRelayTunnelEncapReplies())
        Tyk::DualTrace(traceHandle(), level, {}, "{} Inserted Option 82 vendor-specific suboption information len: {}",
                       caller, vendorAdded_);
    else if (addsVendorData())
        Tyk::DualTrace(traceHandle(), level, {}, "{} Inserted Option 82 vendor-specific suboption information", caller);
    if (!args_.hasLinkSelection()) return;
    Tyk::DualTrace(traceHandle(), level, {}, "{}Inserted Option 82 link selection information", caller);
    if (!vpn_) Tyk::DualTrace(traceHandle(), level, {}, "{}Inserted Option 82 VRF information", caller);
}

}  // namespace DhcpLib
