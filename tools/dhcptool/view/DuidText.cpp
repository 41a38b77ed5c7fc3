#include "view/DuidText.h"

#include "common/Printable.h"
#include "view/TimeText.h"

namespace DhcpTool {

namespace {

using DhcpLib::Dhcp6Const;
using DhcpLib::DuidFields;
using DhcpLib::Wire::ByteView;

bool isWhole(const DuidFields& duid, std::size_t bytes) {
    switch (duid.duidType) {
        case Dhcp6Const::duidType_llt:
            return bytes == Dhcp6Const::duidllt_size && duid.hardwareType == DhcpLib::Constants::hardwareTypeEthernet;
        case Dhcp6Const::duidType_ll:
            return bytes == Dhcp6Const::duidll_size && duid.hardwareType == DhcpLib::Constants::hardwareTypeEthernet;
        case Dhcp6Const::duidType_uuid:
            return bytes == Dhcp6Const::duiduuid_size;
        case Dhcp6Const::duidType_en:
            return bytes >= Dhcp6Const::baseDuiden_size;
        default:
            return false;
    }
}

/// Seconds since 2000.
void appendDuidTime(std::string& out, Kcore::U32 seconds) {
    constexpr std::chrono::sys_days start = std::chrono::year{2000} / 1 / 1;
    appendSecond(out, std::chrono::seconds(start.time_since_epoch()) + std::chrono::seconds(seconds));
    out.push_back('Z');
}

}  // namespace

std::optional<DuidFields> duidFields(std::string_view duid) {
    const ByteView bytes(reinterpret_cast<const Kcore::U8*>(duid.data()), static_cast<Kcore::U32>(duid.size()));
    DuidFields fields = DhcpLib::decodeDuid(bytes, 0, 0);
    if (!isWhole(fields, duid.size())) return std::nullopt;
    // decodeDuid takes the size of the identifier from the header of an option, which is not part of `duid`.
    if (fields.duidType == Dhcp6Const::duidType_en) fields.entId = duid.substr(Dhcp6Const::baseDuiden_size);
    return fields;
}

std::string_view duidTypeName(Kcore::U16 type) {
    constexpr std::string_view names[] = {"LLT", "EN", "LL", "UUID"};
    return names[type - Dhcp6Const::duidType_llt];
}

void appendUuid(std::string& out, std::string_view uuid) {
    constexpr std::size_t groups[] = {4, 2, 2, 2, 6};
    for (const std::size_t bytes : groups) {
        appendHex(out, uuid.substr(0, bytes));
        uuid.remove_prefix(bytes);
        if (!uuid.empty()) out.push_back('-');
    }
}

void appendDuid(std::string& out, std::string_view duid) {
    const auto fields = duidFields(duid);
    if (!fields) return appendHex(out.append("0x"), duid);
    out.append(duidTypeName(fields->duidType)).push_back(' ');
    if (DuidFields::hasLinkLayer(fields->duidType)) fields->llAddr.appendText(out);
    if (DuidFields::hasTime(fields->duidType)) {
        out.push_back(' ');
        appendDuidTime(out, fields->duidTime);
    }
    if (fields->duidType == Dhcp6Const::duidType_uuid) appendUuid(out, fields->uuid);
    if (fields->duidType != Dhcp6Const::duidType_en) return;
    Kcore::appendText(out, fields->entno);
    out.push_back(' ');
    appendTextOrHex(out, fields->entId);
}

void appendDomains(std::string& out, std::string_view names) {
    constexpr std::size_t longestLabel = 63;
    constexpr std::string_view separators = " .,";  // of names and fields: a label with one could forge another field
    const std::size_t start = out.size();
    const std::string_view all = names;
    bool inName = false;
    while (!names.empty()) {
        const auto length = static_cast<unsigned char>(names.front());
        const std::string_view label = names.substr(1, length);
        if (length > longestLabel || label.size() != length || label.find_first_of(separators) != label.npos) {
            out.resize(start);
            return appendHex(out.append("0x"), all);
        }
        if (length != 0 && out.size() != start) out.push_back(inName ? '.' : ',');
        appendHarmless(out, label);
        inName = length != 0;
        names.remove_prefix(length + std::size_t{1});
    }
}

}  // namespace DhcpTool
