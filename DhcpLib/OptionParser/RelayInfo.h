#pragma once

#include "DhcpLib/DhcpHdr/Options.h"
#include "Kitnet/IpGenAddr.h"
#include "Tyk/String.h"

namespace DhcpLib {

/// Creates the collection of options of the message whose BOOTP header starts at `offset`, and looks up the end option.
/// Returns false after a trace line if there is no magic cookie, no option or no end option. `options` is set unless
/// the cookie is missing.
DHCPLIB_EXPORT bool parseDhcpOptions(const PktPtr& pkt, U32 offset, DhcpMsgOptions::Ptr& options,
                                     DhcpMsgOption::Ptr& endOption);
/// Looks up option 82 and its sub-options. Without option 82, or if `options` is null, both outputs stay unchanged.
/// Returns false after a trace line for an option 82 of length 0.
DHCPLIB_EXPORT bool parseInfoSubOptions(DhcpMsgOptions::Ptr& options, DhcpMsgOption::Ptr& infoOption,
                                        DhcpInformationSubOptions::Ptr& infoSubOptions);
/// Whether the collection holds a sub-option of `subType`. A null collection holds none.
DHCPLIB_EXPORT bool infoSubOptPresent(Kcore::Ptr<const DhcpInformationSubOptions> infoSubOptions,
                                      DhcpInformationSubOptionType subType);

/// Reads the relay agent information option (RFC 3046) of the message whose BOOTP header starts at `offset`:
///    1  circuitId     2  remoteId     5  linkSelection     11  serverIdOverride     151  vpnId
///    152  vssControl: true if present     9  intfName and srcVtepIp, from the own block (Constants::quorvaEntNum)
/// An output whose sub-option is absent stays unchanged, so initialise all outputs. Returns false if the options area
/// is malformed; an absent or empty option 82 is only traced. Sub-options are read up to the end option, past the end
/// of option 82 (docs/compatibility.md#sub-options-up-to-the-end-option). The last one of a code wins. Takes the
/// first four data bytes of 5 and 11 (docs/compatibility.md#four-bytes-whatever-the-length).
DHCPLIB_EXPORT bool parseInfoOpt(const PktPtr& pkt, Tyk::String& circuitId, Tyk::String& remoteId, Tyk::String& vpnId,
                                 bool& vssControl, Kitnet::IpAddr& serverIdOverride, Kitnet::IpAddr& linkSelection,
                                 Tyk::String& intfName, Kitnet::IpGenAddr& srcVtepIp, U32 offset);
/// As parseInfoOpt, but reads through the views: sub-options end with option 82, the first one of a code wins, option
/// 82 is found after the end option as well, the vendor block is always read in the layout of RFC 4243, and an option
/// 82 of length 0 gives false. docs/choosing.md compares the two.
DHCPLIB_EXPORT bool parseInfoOptNew(const PktPtr& pkt, Tyk::String& circuitId, Tyk::String& remoteId,
                                    Tyk::String& vpnId, bool& vssControl, Kitnet::IpAddr& serverIdOverride,
                                    Kitnet::IpAddr& linkSelection, Tyk::String& intfName, Kitnet::IpGenAddr& srcVtepIp,
                                    U32 offset);

}  // namespace DhcpLib
