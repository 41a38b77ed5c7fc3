#pragma once

#include "DhcpLib/OptionParser/internal/OptionIndex.h"
#include "Kcore/SourceSite.h"
#include "Kitnet/IpGenAddr.h"

namespace DhcpLib {

/// The data items of the own vendor block that a reader has found.
struct VendorItems {
    RawOption intfName;
    RawOption srcVtep;

    void keepLast(U8 code, const RawOption& item) {
        if (RawOption* slot = slotOf(code)) *slot = item;
    }
    void keepFirst(U8 code, const RawOption& item) {
        if (RawOption* slot = slotOf(code); slot != nullptr && !*slot) *slot = item;
    }

private:
    RawOption* slotOf(U8 code) {
        switch (static_cast<DhcpVendorSpecificDataType>(code)) {
            case DhcpVendorSpecificDataType::interfaceName:
                return &intfName;
            case DhcpVendorSpecificDataType::sourceVtepIp:
                return &srcVtep;
        }
        return nullptr;
    }
};

/// Whether the item has the size of an IPv4 or IPv6 address. If not, traces it for `function`.
bool isVtepWellFormed(const RawOption& item, std::string_view function,
                      Kcore::SourceSite caller = Kcore::SourceSite::here());
/// Requires: isVtepWellFormed(item).
Kitnet::IpGenAddr vtepOf(const RawOption& item);

}  // namespace DhcpLib
