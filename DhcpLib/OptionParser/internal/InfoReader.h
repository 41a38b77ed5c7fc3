#pragma once

#include "DhcpLib/OptionParser/internal/VendorItems.h"

namespace DhcpLib {

/// The sub-options of option 82 that the readers look for, as far as they were found.
class InfoSubOptions {
public:
    explicit InfoSubOptions(Wire::ByteView bytes, Positions positions = Positions::ofViews)
        : bytes_(bytes), positions_(positions) {
        places_.fill(none);
    }

    /// Their codes, in the order in which they are looked up.
    static constexpr std::array codes = {DhcpInformationSubOptionType::circuitId,
                                         DhcpInformationSubOptionType::remoteIdOpt,
                                         DhcpInformationSubOptionType::vpnId,
                                         DhcpInformationSubOptionType::vssControl,
                                         DhcpInformationSubOptionType::serverIdOverride,
                                         DhcpInformationSubOptionType::linkSelectionId,
                                         DhcpInformationSubOptionType::vendorSpecificSubOption};

    void keepLast(U8 code, U32 at) {
        if (const U8 slot = slotOf(code); slot != unread) places_[slot] = at;
    }
    void keepFirst(U8 code, U32 at) {
        if (const U8 slot = slotOf(code); slot != unread && places_[slot] == none) places_[slot] = at;
    }
    RawOption operator[](DhcpInformationSubOptionType code) const {
        const U32 at = places_[slotOf(static_cast<U8>(code))];
        return at != none ? RawOption(bytes_, at, positions_) : RawOption();
    }

private:
    static constexpr U32 none = 0xffffffff;
    static constexpr U8 unread = 0xff;
    static constexpr std::array<U8, 256> slots = [] {
        std::array<U8, 256> all{};
        all.fill(unread);
        for (std::size_t i = 0; i < codes.size(); ++i) all[static_cast<U8>(codes[i])] = static_cast<U8>(i);
        return all;
    }();
    static constexpr U8 slotOf(U8 code) { return slots[code]; }

    Wire::ByteView bytes_;
    Positions positions_;
    std::array<U32, codes.size()> places_;
};

/// Writes a failure line of the function with that signature.
void traceReadFailure(const char* signature, std::string_view text,
                      Kcore::SourceSite caller = Kcore::SourceSite::here());
/// Writes the trace line of infoSubOptPresent.
void traceSubOptPresent(DhcpInformationSubOptionType subType, Kcore::SourceSite caller = Kcore::SourceSite::here());
/// Whether the options area has a cookie, an option and an end option. Traces the first of them that is missing.
bool isAreaComplete(bool cookie, bool anyOption, bool end);
/// Whether option 82 has no data; if so, traces it.
bool isInfoOptionEmpty(U8 len);
/// Collects the sub-options of the option 82 at `info` as DhcpInformationSubOptions does.
void readInfoSubOptions(const RawOption& info, InfoSubOptions& found);

/// Gives the result of parseInfoOptNew for the area of `index`, and writes its trace lines.
bool readInfoNew(const OptionIndex& index, InfoSubOptions& found);
/// The items of the own block in sub-option 9, found as the views find them. A source address of a wrong length is
/// traced and left out.
VendorItems readVendorBlockNew(const RawOption& vendorSpecific);

}  // namespace DhcpLib
