#pragma once

#include "DhcpLib/OptionParser/internal/RewritePlan.h"

namespace DhcpLib {

/// Traces, where lines are wanted, whether the option 82 at `info` holds the system's vendor data.
void traceOwnVendorData(Wire::ByteView bytes, const RawOption& info, U32 endAt);

/// How preparePacket adds to option 82, or creates it: everything is judged and sized before the first byte changes.
/// Lengths are signed and 32 bits wide until they are known to fit in a byte.
class InfoInsertion {
public:
    /// `info` is the packet's option 82, if it has one; its sub-options are looked for up to the end option at `endAt`.
    InfoInsertion(Wire::ByteView bytes, const RewriteArgs& args, const RawOption& info, U32 endAt);

    /// Writes option 82 and the end option behind it. Requires: `!stop`, and room for `widest` bytes in option 82.
    /// False where option 82 is not where it was, or was to be, written.
    bool write(Kitnet::Pkt& pkt) const;

    /// Where the end option stands afterwards.
    U32 endAt() const { return dataAt() + static_cast<U32>(finalLen); }

    RewriteStop stop;
    U32 infoAt;      ///< where option 82 stands or will stand
    S32 needed = 0;  ///< what the insertion is taken to need behind the end option's place
    S32 widest = 0;  ///< the most bytes that option 82's data takes on the way
    S32 finalLen = 0;

private:
    /// A sub-option that option 82 holds already, by its position: the packet's storage moves. Of the relay's own kind
    /// it is the first one, and `size` is what all of them take.
    struct Existing {
        U32 at = 0;
        U8 len = 0;
        S32 size = 0;
        bool overruns = false;

        explicit operator bool() const { return size != 0; }
        U32 dataEnd() const { return at + SubOptionShape::headerBytes + len; }
    };
    struct Editor;

    U32 dataAt() const { return infoAt + SubOptionShape::headerBytes; }
    bool hasLinkSelection() const { return !args_.linkSelection.isAny(); }
    S32 lenWithVendor() const { return firstLen_ - cut_ + vendorAdded_; }
    void scan(Wire::ByteView bytes, const RawOption& info, U32 endAt);
    void planLengths();
    void planNeeded();
    RelayRewriteVerdict refusal() const;
    const char* assertion() const;
    S32 blockLen() const;

    void create(Editor& editor) const;
    void addVendorData(Editor& editor) const;
    void writeLinkSelection(Editor& editor) const;
    U32 writeVpn(Editor& editor, U32 at) const;

    const RewriteArgs& args_;
    bool creates_;
    bool ownVendorData_ = false;
    Existing foreignVendor_;  ///< the last sub-option 9 without the system's data
    Existing link_, server_, vpn_, vss_;
    S32 existing_ = 0;        ///< what those four take together
    S32 firstLen_;            ///< of option 82 before anything is added
    S32 cut_ = 0;             ///< what is cut off its end first
    S32 vendorAdded_ = 0;     ///< what the vendor data adds to it
    S32 selectionAdded_ = 0;  ///< what 5, 11, 151 and 152 add to it
};

}  // namespace DhcpLib
