#pragma once

#include "DhcpLib/DhcpHdr/Options.h"
#include "Kitnet/IpGenAddr.h"
#include "Tyk/String.h"

namespace DhcpLib {

/// Finds the end option of the message whose BOOTP header starts at `offset`, by views. `options` is set in every case
/// but a missing cookie. False, after a trace line, without cookie, without any option, or without end option.
DHCPLIB_EXPORT bool parseDhcpOptions(const PktPtr& pkt, U32 offset, DhcpMsgOptions::Ptr& options,
                                     DhcpMsgOption::Ptr& endOption);
/// Finds option 82 and its sub-options; without option 82 both outputs stay as they are. False, after a trace line, for
/// an option 82 of length 0.
DHCPLIB_EXPORT bool parseInfoSubOptions(DhcpMsgOptions::Ptr& options, DhcpMsgOption::Ptr& infoOption,
                                        DhcpInformationSubOptions::Ptr& infoSubOptions);
/// Whether the collection, which may be null, holds a sub-option of `subType`.
DHCPLIB_EXPORT bool infoSubOptPresent(Kcore::Ptr<const DhcpInformationSubOptions> infoSubOptions,
                                      DhcpInformationSubOptionType subType);

/// Reads the relay agent information option (RFC 3046) of the message whose BOOTP header starts at `offset`:
///   1 circuitId   2 remoteId   151 vpnId   152 vssControl (by its presence)   11 serverIdOverride   5 linkSelection
///   9 intfName and srcVtepIp, from the block with Constants::quorvaEntNum
/// An output whose sub-option is absent stays as it is: initialise every one. Of 11 and 5 the first four data bytes are
/// taken whatever their length says.
/// Sub-options are read up to the end option, also past option 82's own length; the last one of a code wins. False only
/// where the options cannot be walked: an absent or empty option 82 is traced.
DHCPLIB_EXPORT bool parseInfoOpt(const PktPtr& pkt, Tyk::String& circuitId, Tyk::String& remoteId, Tyk::String& vpnId,
                                 bool& vssControl, Kitnet::IpAddr& serverIdOverride, Kitnet::IpAddr& linkSelection,
                                 Tyk::String& intfName, Kitnet::IpGenAddr& srcVtepIp, U32 offset);
/// The same by the rules of the keyed collections: option 82's own length bounds the sub-options, the first one of a
/// code wins, also behind the end option; false for an option 82 of length 0 as well. The vendor block is always read
/// in the RFC 4243 layout.
DHCPLIB_EXPORT bool parseInfoOptNew(const PktPtr& pkt, Tyk::String& circuitId, Tyk::String& remoteId,
                                    Tyk::String& vpnId, bool& vssControl, Kitnet::IpAddr& serverIdOverride,
                                    Kitnet::IpAddr& linkSelection, Tyk::String& intfName, Kitnet::IpGenAddr& srcVtepIp,
                                    U32 offset);

}  // namespace DhcpLib
