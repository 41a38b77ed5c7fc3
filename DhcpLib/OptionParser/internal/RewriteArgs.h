#pragma once

#include "DhcpLib/OptionParser/RelayRewrite.h"
#include "DhcpLib/OptionParser/VendorSubOption.h"
#include "DhcpLib/Walk.h"

namespace DhcpLib {

using S32 = std::int32_t;

inline constexpr S32 longestOption = 255;
inline constexpr S32 subOptionHeaderBytes = SubOptionShape::headerBytes;

/// The arguments of a rewrite. Refers to the caller's strings and addresses.
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

    bool isRequest() const { return op == BootpOption::bootpRequest; }
    bool isReply() const { return op == BootpOption::bootpReply; }
    bool isInsertion() const { return isRequest() && infoOpt; }
    bool hasVendorData() const { return isVendorDataPresent(intfName, srcVtep); }
    bool hasLinkSelection() const { return !linkSelection.isAny(); }
    bool hasServerId() const { return !serverId.isAny(); }
    bool hasVssControl() const { return !vpnId.empty() && !vssControlDisable; }

    /// Bytes that the sub-options take in option 82, headers included; 0 for those that are left out.
    S32 circuitPart() const { return partOf(circuitId); }
    S32 remotePart() const { return partOf(remoteId); }
    S32 vpnPart() const { return partOf(vpnId); }
    S32 vssPart() const { return hasVssControl() ? subOptionHeaderBytes : 0; }
    S32 serverPart() const { return hasServerId() ? addressPart : 0; }
    S32 linkPart() const { return hasLinkSelection() ? addressPart : 0; }

    /// Whether a text would not fit in a sub-option, even one that this rewrite does not use.
    bool anyTooLong() const {
        constexpr std::size_t longest = longestOption;
        return circuitId.size() > longest || remoteId.size() > longest || vpnId.size() > longest ||
               intfName.size() > longest;
    }

private:
    static constexpr S32 addressPart = subOptionHeaderBytes + S32{sizeof(Kitnet::IpAddr)};
    static S32 partOf(const Tyk::String& data) {
        return data.empty() ? 0 : static_cast<S32>(data.size()) + subOptionHeaderBytes;
    }
};

}  // namespace DhcpLib
