#pragma once

#include "DhcpLib/OptionParser/internal/RewritePlan.h"

namespace DhcpLib {

/// Traces at the verbose level that the option 82 at `info` holds the own vendor data, if it does.
void traceOwnVendorData(Wire::ByteView bytes, const RawOption& info, U32 endAt);

/// Computes how preparePacket changes or creates option 82, and the data of the result.
/// Lengths are signed 32-bit numbers until they are known to fit into a byte.
class InPlaceInsertion {
public:
    /// `info` is the packet's option 82, if there is one. Sub-options are searched up to the end option at `endAt`.
    InPlaceInsertion(Wire::ByteView bytes, const RewriteArgs& args, const RawOption& info, U32 endAt);

    RewriteStop stop() const;
    /// Number of pad bytes that the insertion requests. More than it uses if option 82 exists already.
    S32 neededPadding() const;
    /// Writes the data of the new option 82. False if it cuts a sub-option or lacks one that was asked for.
    /// Requires: !stop().
    bool build(Kcore::Bytes& data) const;
    /// Traces what is added. Requires: !stop().
    void traceAdditions() const;

private:
    /// The sub-options of one code that option 82 holds.
    struct Existing {
        U32 at = 0;    ///< of the first one
        U8 len = 0;    ///< of the first one
        S32 size = 0;  ///< bytes of all of them, headers included

        explicit operator bool() const { return size != 0; }
    };
    using Head = TlvHead<SubOptionShape>;
    class Writer;

    void scan(U32 endAt);
    void noteRelaySubOption(Existing& existing, const Head& head);
    void noteVendorSubOption(const Head& head);
    void planLengths();
    S32 vendorBlockLen() const;
    bool addsVendorData() const { return vendorAdded_ != 0; }
    RelayRewriteVerdict refusal() const;
    const char* assertion() const;

    /// End of the bytes of the existing option 82 that are kept.
    U32 stayingEnd() const { return dataAt_ + static_cast<U32>(firstLen_ - cut_); }
    bool copyExisting(Writer& writer) const;
    void copyVendor(Writer& writer, const Head& head) const;
    void reuse(Writer& writer, const Head& head) const;
    Writer addMissing(Writer writer) const;
    bool cutsOthers() const { return cut_ != 0 && existingFrom_ < stayingEnd(); }
    bool isVendorDataReadable() const;

    /// The record of 5, 11, 151 or 152, or null for every other code.
    template <class Self>
    static auto* recordOf(Self& self, U8 code) {
        switch (static_cast<DhcpInformationSubOptionType>(code)) {
            case DhcpInformationSubOptionType::linkSelectionId:
                return &self.link_;
            case DhcpInformationSubOptionType::serverIdOverride:
                return &self.server_;
            case DhcpInformationSubOptionType::vpnId:
                return &self.vpn_;
            case DhcpInformationSubOptionType::vssControl:
                return &self.vss_;
            default:
                return decltype(&self.link_){};
        }
    }

    Wire::ByteView bytes_;
    const RewriteArgs& args_;
    bool creates_;
    U32 dataAt_;    ///< of the existing option 82
    S32 firstLen_;  ///< length of option 82 before anything is added
    S32 cut_ = 0;   ///< number of bytes to cut off its end first
    S32 vendorAdded_ = 0;
    S32 selectionAdded_ = 0;  ///< bytes that 5, 11, 151 and 152 add; less than 0 if they take fewer than before
    S32 finalLen_ = 0;

    Existing link_, server_, vpn_, vss_;
    S32 existing_ = 0;               ///< bytes of those four, a 152 counted as its header alone
    U32 existingFrom_ = 0xffffffff;  ///< position of the first of them
    bool existingOverruns_ = false, existingBehind_ = false;  ///< one of them passes, or follows, option 82's end
    Existing foreignVendor_;                                  ///< the last sub-option 9 without own vendor data
    bool ownVendor_ = false;                                  ///< a sub-option 9 holds own vendor data
    U32 readableVendorEnd_ = 0xffffffff;                      ///< end of the first one in which readers find it
};

}  // namespace DhcpLib
