#pragma once

#include "DhcpLib/OptionParser/internal/OptionIndex.h"
#include "Kitnet/IpGenAddr.h"

namespace DhcpLib {

/// The data items of the system's enterprise block that a reader has come across.
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

/// Whether the item's length is that of an address of either family; traces for `caller` where it is not.
bool isVtepWellFormed(const RawOption& item, std::string_view caller);
/// Requires: isVtepWellFormed(item).
Kitnet::IpGenAddr vtepOf(const RawOption& item);

}  // namespace DhcpLib
