#pragma once

#include "DhcpLib/OptionParser/RelayRewrite.h"
#include "DhcpLib/OptionParser/VendorSubOption.h"
#include "DhcpLib/OptionParser/internal/OptionIndex.h"

namespace DhcpLib {

using S32 = std::int32_t;

inline constexpr S32 longestOption = 255;

/// The arguments of a rewrite, wherever they live.
struct RewriteArgs {
    BootpOption op;
    bool infoOpt;
    const Tyk::String& circuitId;
    const Tyk::String& remoteId;
    const Tyk::String& vpnId;
    const Kitnet::IpAddr& serverId;
    const Kitnet::IpAddr& linkSelection;
    U32 offset;
    bool vssControlDisable;
    const Tyk::String& intfName;
    const Kitnet::IpGenAddr& srcVtep;

    static RewriteArgs of(const RelayRewrite& r) {
        return {r.op,
                r.infoOpt,
                r.circuitId,
                r.remoteId,
                r.vpnId,
                r.serverId,
                r.linkselectionId,
                r.offset,
                r.vssControlDisable,
                r.vendorSpecificSubOptIntfName,
                r.vendorSpecificSubOptSrcVtepIp};
    }

    bool isInsertion() const { return op == BootpOption::bootpRequest && infoOpt; }
    bool isReply() const { return op == BootpOption::bootpReply; }
    bool hasVendorData() const { return isVendorDataPresent(intfName, srcVtep); }
    bool hasVssControl() const { return !vpnId.empty() && !vssControlDisable; }

    /// What the sub-options take in option 82, headers included; 0 for those that are left out.
    S32 circuitPart() const { return partOf(circuitId); }
    S32 remotePart() const { return partOf(remoteId); }
    S32 vpnPart() const { return partOf(vpnId); }
    S32 vssPart() const { return hasVssControl() ? headerBytes : 0; }
    S32 serverPart() const { return serverId.isAny() ? 0 : addressPart; }
    S32 linkPart() const { return linkSelection.isAny() ? 0 : addressPart; }

    bool anyTooLong() const {
        constexpr std::size_t longest = longestOption;
        return circuitId.size() > longest || remoteId.size() > longest || vpnId.size() > longest ||
               intfName.size() > longest;
    }

    static constexpr S32 headerBytes = SubOptionShape::headerBytes;
    static constexpr S32 addressPart = headerBytes + S32{sizeof(Kitnet::IpAddr)};

private:
    static S32 partOf(const Tyk::String& data) {
        return data.empty() ? 0 : static_cast<S32>(data.size()) + headerBytes;
    }
};

/// Why a rewrite stops before it changes anything: a refusal, or else an assertion.
struct RewriteStop {
    RelayRewriteVerdict refusal = RelayRewriteVerdict::fine;
    const char* assertion = nullptr;

    explicit operator bool() const { return refusal != RelayRewriteVerdict::fine || assertion != nullptr; }
};

/// Traces the entry of `function` with its arguments.
void traceRewriteEntry(std::string_view function, const RewriteArgs& args);
/// Traces why `function` refuses; always false.
bool traceRefusal(std::string_view function, RelayRewriteVerdict refusal);
/// The bytes behind the end option at `endAt`. Asserts for the function of that signature if there were none of it.
S32 currentPadding(const Kitnet::Pkt& pkt, U32 endAt, const char* signature);
/// Grows the packet's tail by `n` bytes after a trace line.
void growTail(Kitnet::Pkt& pkt, U32 n);

/// The size to which the message at `offset` is brought whose last option is the end option at `endAt`.
U32 normalisedBytes(const RewriteArgs& args, U32 endAt, bool hasMaxMsgSize);
/// Brings the message to that size: pads it, or trims pad bytes behind the end option, which is written anew.
void normaliseSize(Kitnet::Pkt& pkt, const RewriteArgs& args, U32 endAt, bool hasMaxMsgSize);

/// The two generations' forecasts.
RelayRewriteForecast forecastRewrite(Wire::ByteView bytes, const RewriteArgs& args);
RelayRewriteForecast forecastRewriteNew(Wire::ByteView bytes, const RewriteArgs& args);
/// A forecast of what stops the rewrite.
RelayRewriteForecast forecastOf(const RewriteStop& stop, const OptionIndex& index);
/// A forecast from where the option 82 that is rewritten, if there is one, stands before the end option.
RelayRewriteForecast forecastOf(const RawOption& info, const RawOption& end, const OptionIndex& index,
                                U32 messageBytes);

}  // namespace DhcpLib
