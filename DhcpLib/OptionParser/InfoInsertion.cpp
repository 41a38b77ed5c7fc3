#include "DhcpLib/OptionParser/internal/InfoInsertion.h"

#include <array>

#include "DhcpLib/DhcpHdr/VendorBlock.h"
#include "DhcpLib/OptionParser/internal/SubOptionWalk.h"
#include "DhcpLib/Toggle.h"
#include "DhcpLib/internal/Trace.h"

namespace DhcpLib {

namespace {

using SubCode = DhcpInformationSubOptionType;

constexpr std::string_view caller = "preparePacket";
constexpr S32 headerBytes = RewriteArgs::headerBytes;

constexpr U8 codeOf(SubCode code) { return static_cast<U8>(code); }

/// Whether a sub-option 9 holds the system's data, in the layout that is in use.
bool holdsOwnVendorData(Wire::ByteView bytes, const RawOption& subOption) {
    if (!dhcpRelayTunnelEncapReplies()) return subOption.data().find(quorvaEntNumText()) != std::string_view::npos;
    U32 block = 0;
    return findQuorvaBlock<U32>(bytes, subOption.dataAt(), subOption.len(), &block);
}

void traceOwnVendorDataFound() {
    std::string_view text = "Vendor-specific subopt with Quorva's data already present ";
    if (dhcpRelayTunnelEncapReplies()) text.remove_suffix(1);  // the blank belongs to the legacy layout alone
    Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "{}{}", caller, text);
}

/// What is appended to sub-option 9: the enterprise block, or the legacy text with the name behind its length byte.
Kcore::Bytes vendorBytes(const RewriteArgs& args) {
    if (dhcpRelayTunnelEncapReplies()) return quorvaBlock(args.intfName, args.srcVtep);
    Kcore::Bytes text;
    text.append(quorvaEntNumText().view());
    text.push_back(static_cast<U8>(args.intfName.size()));
    text.append(args.intfName.view());
    return text;
}

void traceVendorAdded(S32 added) {
    constexpr int level = TraceLevel::verbose;
    if (!dhcpRelayTunnelEncapReplies())
        Tyk::DualTrace(traceHandle(), level, {}, "{} Inserted Option 82 vendor-specific suboption information", caller);
    else if (added == 0)
        Tyk::DualTrace(traceHandle(), level, {}, "{} Option 82 vendor-specific suboption information not updated",
                       caller);
    else
        Tyk::DualTrace(traceHandle(), level, {}, "{} Inserted Option 82 vendor-specific suboption information len: {}",
                       caller, added);
}

}  // namespace

void traceOwnVendorData(Wire::ByteView bytes, const RawOption& info, U32 endAt) {
    if (!traceHandle().wanted(TraceLevel::verbose) && !Tyk::RingTrace::wanted(TraceLevel::verbose)) return;
    walkSubOptionsUpTo(bytes, info.dataAt(), endAt, [&](const auto& head) {
        if (head.code == codeOf(SubCode::vendorSpecificSubOption) &&
            holdsOwnVendorData(bytes, RawOption(bytes, head.at)))
            traceOwnVendorDataFound();
    });
}

/// Edits the bytes of option 82 in place; the packet has the room. Bytes that `limit` excludes are not written.
struct InfoInsertion::Editor {
    Kitnet::Pkt& pkt;
    U32 dataAt;
    U32 end;    ///< of the data, as far as whole steps have added to it
    U32 limit;  ///< end of what option 82 will count
    /// What stood at `from` or behind it was moved by `by` bytes.
    struct Shift {
        U32 from = 0;
        U32 by = 0;
    };
    std::array<Shift, 2> shifts{};  ///< in their order: behind sub-option 9, behind 151

    /// Where that sub-option stands by now.
    U32 placeOf(const Existing& found) const {
        U32 at = found.at;
        for (const Shift& shift : shifts) at += at >= shift.from ? shift.by : 0;
        return at;
    }
    /// Moves what stands from `at` on by `n` bytes up or down.
    void moveTail(Shift& shift, U32 at, S32 n) {
        shift = {at, static_cast<U32>(n)};
        const U32 to = at + shift.by;
        if (to < limit) Wire::move(pkt, to, at, std::min(end - at, limit - to));
        end += shift.by;
    }
    // Each writes at `at` and returns the position behind it: by value, so that it stays in a register.
    template <std::size_t Extent>
    U32 put(U32 at, std::span<const U8, Extent> bytes) {
        const U32 behind = at + static_cast<U32>(bytes.size());
        if (behind <= limit) [[likely]]
            Wire::store(pkt, at, bytes);
        else if (at < limit)
            Wire::store(pkt, at, bytes.first(limit - at));
        return behind;
    }
    U32 putHeader(U32 at, SubCode code, std::size_t size) {
        const U8 len = static_cast<U8>(size);
        if (at + headerBytes <= limit) [[likely]] {
            Wire::store<U16>(pkt, at, static_cast<U16>(codeOf(code) << 8 | len));
            return at + headerBytes;
        }
        const U8 header[] = {codeOf(code), len};
        return put(at, std::span(header));
    }
    U32 putText(U32 at, SubCode code, const Tyk::String& text) {
        return put(putHeader(at, code, text.size()), std::span(reinterpret_cast<const U8*>(text.data()), text.size()));
    }
    /// A new sub-option at `at`, or the address alone in the place of an existing one.
    U32 putAddress(U32 at, SubCode code, const Existing& existing, const Kitnet::IpAddr& address) {
        const U32 valueAt = existing ? placeOf(existing) + headerBytes : putHeader(at, code, sizeof address);
        return put(valueAt, std::span<const U8, sizeof(Kitnet::IpAddr)>(address.bytes(), sizeof address));
    }
};

InfoInsertion::InfoInsertion(Wire::ByteView bytes, const RewriteArgs& args, const RawOption& info, U32 endAt)
    : infoAt(info ? info.at() : endAt),
      args_(args),
      creates_(!info),
      firstLen_(info ? info.len() : args.circuitPart() + args.remotePart()) {
    if (info) scan(bytes, info, endAt);
    planLengths();
    planNeeded();
    stop = {refusal(), assertion()};
}

/// Sub-options are looked for up to the end option, past option 82's own length, by contract.
void InfoInsertion::scan(Wire::ByteView bytes, const RawOption& info, U32 endAt) {
    const U32 infoEnd = info.dataAt() + info.len();
    walkSubOptionsUpTo(bytes, info.dataAt(), endAt, [&](const auto& head) {
        Existing* found = nullptr;
        switch (static_cast<SubCode>(head.code)) {
            case SubCode::linkSelectionId:
                found = &link_;
                break;
            case SubCode::serverIdOverride:
                found = &server_;
                break;
            case SubCode::vpnId:
                found = &vpn_;
                break;
            case SubCode::vssControl:
                found = &vss_;
                break;
            case SubCode::vendorSpecificSubOption:
                if (!holdsOwnVendorData(bytes, RawOption(bytes, head.at))) {
                    foreignVendor_ = {head.at, static_cast<U8>(head.len), static_cast<S32>(head.wireBytes)};
                } else {
                    traceOwnVendorDataFound();
                    ownVendorData_ = true;
                }
                return;
            default:
                return;
        }
        if (!*found) found->at = head.at, found->len = head.len;
        // A 152 counts as its header alone, whatever its length.
        const S32 size = found == &vss_ ? headerBytes : static_cast<S32>(head.wireBytes);
        found->size += size;
        found->overruns |= head.at + head.wireBytes > infoEnd;
        existing_ += size;
    });
}

/// Bytes that go behind the data of sub-option 9.
S32 InfoInsertion::blockLen() const {
    if (dhcpRelayTunnelEncapReplies())
        return static_cast<S32>(quorvaVendorSpecificSubOptLen(args_.intfName, args_.srcVtep) + vendorBlockHeaderBytes);
    return static_cast<S32>(quorvaEntNumText().size() + 1 + args_.intfName.size());
}

void InfoInsertion::planLengths() {
    if (args_.hasVendorData() && !ownVendorData_) vendorAdded_ = blockLen() + (foreignVendor_ ? 0 : headerBytes);
    if (!hasLinkSelection() && link_) cut_ = existing_;
    if (hasLinkSelection())
        selectionAdded_ = args_.vssPart() + args_.vpnPart() + args_.linkPart() + args_.serverPart() - existing_;
    finalLen = lenWithVendor() + selectionAdded_;
    widest = std::max({firstLen_, lenWithVendor(), finalLen});
}

void InfoInsertion::planNeeded() {
    needed = headerBytes + (creates_ ? firstLen_ : 0) + selectionAdded_ + vendorAdded_;
    // An existing sub-option 9 without data is taken for none.
    if (vendorAdded_ != 0 && foreignVendor_ && foreignVendor_.len == 0) needed += headerBytes;
}

RelayRewriteVerdict InfoInsertion::refusal() const {
    using enum RelayRewriteVerdict;
    const bool counts = hasLinkSelection() || cut_ != 0;
    if (counts && (link_.overruns || server_.overruns || vpn_.overruns || vss_.overruns)) return infoOptionOverrun;
    constexpr U8 addressLen = sizeof(Kitnet::IpAddr);
    if (hasLinkSelection() && ((link_ && link_.len != addressLen) || (server_ && server_.len != addressLen)))
        return infoOptionOverrun;
    if (vendorAdded_ != 0 && foreignVendor_ && static_cast<S32>(foreignVendor_.dataEnd() - dataAt()) > firstLen_ - cut_)
        return infoOptionOverrun;
    if (vendorAdded_ != 0 && foreignVendor_.len + blockLen() > longestOption) return infoOptionTooLong;
    return args_.anyTooLong() || finalLen > longestOption || finalLen < 0 ? infoOptionTooLong : fine;
}

const char* InfoInsertion::assertion() const {
    if (hasLinkSelection()) return vss_ && !vpn_ ? "!vssControlOpt" : nullptr;
    return link_ && firstLen_ <= existing_ ? "tempInfoOpt->length > oldSubOptLen" : nullptr;
}

bool InfoInsertion::write(Kitnet::Pkt& pkt) const {
    Editor editor{pkt, dataAt(), dataAt(), dataAt() + static_cast<U32>(widest)};
    if (creates_) create(editor);
    if (Wire::load<U8>(pkt, infoAt) != static_cast<U8>(DhcpOptionType::infoOpt)) return false;
    editor.end = dataAt() + static_cast<U32>(firstLen_ - cut_);
    if (vendorAdded_ != 0) addVendorData(editor);
    editor.limit = endAt();
    if (hasLinkSelection()) writeLinkSelection(editor);
    Wire::store<U8>(pkt, infoAt + DhcpConst::optlen_offset, static_cast<U8>(finalLen));
    Wire::store<U8>(pkt, endAt(), static_cast<U8>(DhcpOptionType::endOpt));
    return true;
}

void InfoInsertion::create(Editor& editor) const {
    Wire::store<U8>(editor.pkt, infoAt, static_cast<U8>(DhcpOptionType::infoOpt));
    U32 at = dataAt();
    if (!args_.circuitId.empty()) at = editor.putText(at, SubCode::circuitId, args_.circuitId);
    if (!args_.remoteId.empty()) editor.putText(at, SubCode::remoteIdOpt, args_.remoteId);
}

void InfoInsertion::addVendorData(Editor& editor) const {
    const Kcore::Bytes block = vendorBytes(args_);
    const U32 size = static_cast<U32>(block.size());
    U32 at = editor.end;
    if (foreignVendor_) {
        at = foreignVendor_.dataEnd();
        editor.moveTail(editor.shifts[0], at, static_cast<S32>(size));
        Wire::store<U8>(editor.pkt, foreignVendor_.at + DhcpConst::optlen_offset,
                        static_cast<U8>(foreignVendor_.len + size));
    } else {
        at = editor.putHeader(at, SubCode::vendorSpecificSubOption, size);
    }
    editor.end = std::max(editor.end, editor.put(at, block.span()));
    traceVendorAdded(vendorAdded_);
}

void InfoInsertion::writeLinkSelection(Editor& editor) const {
    // First, so that what is new goes to its last place, and nothing of it is cut that a shorter name leaves room for.
    if (vpn_ && vpn_.len != args_.vpnId.size())
        editor.moveTail(editor.shifts[1], editor.placeOf(vpn_) + headerBytes + vpn_.len,
                        args_.vpnPart() - headerBytes - vpn_.len);
    U32 at = editor.putAddress(editor.end, SubCode::linkSelectionId, link_, args_.linkSelection);
    // Without an address, what would be written lies beyond what option 82 counts.
    if (server_ || !args_.serverId.isAny())
        at = editor.putAddress(at, SubCode::serverIdOverride, server_, args_.serverId);
    // Nor does an address of zero count that an existing sub-option takes: what follows goes over it.
    if (server_ && args_.serverId.isAny()) at = editor.placeOf(server_);
    Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "{}Inserted Option 82 link selection information", caller);
    at = writeVpn(editor, at);
    if (!vss_ && args_.hasVssControl()) editor.putHeader(at, SubCode::vssControl, 0);
}

/// Sub-option 151: new at `at`, or in the place of one with a name of another size; one of the same size stays as it
/// is. Returns the position behind it.
U32 InfoInsertion::writeVpn(Editor& editor, U32 at) const {
    if (vpn_) at = editor.placeOf(vpn_);
    const bool stays = vpn_ && vpn_.len == args_.vpnId.size();
    if (stays) return at + SubOptionShape::headerBytes + vpn_.len;
    if (!args_.vpnId.empty()) at = editor.putText(at, SubCode::vpnId, args_.vpnId);
    if (!vpn_) Tyk::DualTrace(traceHandle(), TraceLevel::verbose, {}, "{}Inserted Option 82 VRF information", caller);
    return at;
}

}  // namespace DhcpLib
