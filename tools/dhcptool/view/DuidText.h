#pragma once

#include <optional>
#include <string>

#include "DhcpLib/Dhcp6Hdr/Duid.h"

namespace DhcpTool {

/// The fields of a DUID; unset if the bytes are not a whole one of a known type for Ethernet.
std::optional<DhcpLib::DuidFields> duidFields(std::string_view duid);

/// "LLT", "EN", "LL" or "UUID" (RFC 8415, section 11). Requires: a known type.
std::string_view duidTypeName(Kcore::U16 type);
/// Appends "00112233-4455-6677-8899-aabbccddeeff". Requires: 16 bytes.
void appendUuid(std::string& out, std::string_view uuid);
/// Appends "LL 02:00:00:00:00:01", "LLT 02:00:00:00:00:01 2024-05-01T10:11:12Z", "EN 32473 "id"" or "UUID ..."; a
/// DUID that is none of these as 0x and hexadecimal.
void appendDuid(std::string& out, std::string_view duid);

/// Appends names in the format of DNS (RFC 1035, section 3.1) with commas between: "a.example,b.example". If one is
/// compressed or malformed, or has a blank, dot or comma in a label, all as 0x and hexadecimal.
void appendDomains(std::string& out, std::string_view names);

}  // namespace DhcpTool
