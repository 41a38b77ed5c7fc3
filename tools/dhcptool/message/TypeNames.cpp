#include "message/TypeNames.h"

#include <array>
#include <string>

#include "DhcpLib/Dhcp6Hdr/Enums.h"
#include "DhcpLib/OptionParser/OptionWalk.h"

namespace DhcpTool {

namespace {

/// The names of all 256 types, made once.
using Names = std::array<std::string, 256>;

template <class NameOf>
Names namesOf(const std::string& prefix, NameOf nameOf) {
    Names names;
    for (unsigned type = 0; type < names.size(); ++type) {
        names[type] = nameOf(type);
        if (names[type].empty()) names[type] = prefix + std::to_string(type);
    }
    return names;
}

}  // namespace

std::string_view typeName4(Kcore::U8 type) {
    static const Names names = namesOf("DHCP type ", [](unsigned number) {
        return number < DhcpLib::DhcpMsgTypeTbl.size() ? std::string(DhcpLib::DhcpMsgTypeTbl[number].view())
                                                       : std::string();
    });
    return names[type];
}

std::string_view typeName6(Kcore::U8 type) {
    static const Names names = namesOf("DHCPv6 type ", [](unsigned number) {
        return std::string(Kcore::enumName(static_cast<DhcpLib::Dhcp6MsgType>(number)));
    });
    return names[type];
}

std::string_view operationName(DhcpLib::BootpOpType operation, bool isBootp) {
    switch (operation) {
        case DhcpLib::BootpOpType::bootpReq:
            return isBootp ? "BOOTP bootpReq" : "DHCP bootpReq";
        case DhcpLib::BootpOpType::bootpRep:
            return isBootp ? "BOOTP bootpRep" : "DHCP bootpRep";
        default:
            return isBootp ? "BOOTP bootpOpUnknown" : "DHCP bootpOpUnknown";
    }
}

std::string_view statusName(Kcore::U16 code) {
    static constexpr std::string_view names[] = {
        "Success",       "UnspecFail",       "NoAddrsAvail",   "NoBinding",           "NotOnLink",  "UseMulticast",
        "NoPrefixAvail", "UnknownQueryType", "MalformedQuery", "NotConfigured",       "NotAllowed", "QueryTerminated",
        "DataMissing",   "CatchUpComplete",  "NotSupported",   "TLSConnectionRefused"};
    return code < std::size(names) ? names[code] : std::string_view();
}

}  // namespace DhcpTool
