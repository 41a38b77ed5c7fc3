#include "DhcpLib/Dhcp6Hdr/InterfaceId.h"

#include <limits>
#include <vector>

#include "DhcpLib/Toggle.h"
#include "Tyk/Exception.h"

namespace DhcpLib {

namespace {

constexpr char nameSeparator = ':';

InterfaceIdFields decodeText(std::string_view data) {
    const std::size_t separator = data.find(nameSeparator);
    if (separator == data.npos || separator == 0 || data.back() == nameSeparator) return {};
    InterfaceIdFields fields;
    fields.intfName = data.substr(0, separator);
    fields.vrfName = data.substr(separator + 1);
    return fields;
}

/// False for an unknown code.
bool takeElement(InterfaceIdFields& fields, U8 code, Wire::ByteView value) {
    switch (static_cast<Dhcp6InterfaceIdCode>(code)) {
        case Dhcp6InterfaceIdCode::intfName:
            fields.intfName = value.text(0, value.size());
            return true;
        case Dhcp6InterfaceIdCode::vrfName:
            fields.vrfName = value.text(0, value.size());
            return true;
        case Dhcp6InterfaceIdCode::srcVtepIp:
            if (value.size() == sizeof(Kitnet::IpAddr)) fields.srcVtepIp = value.load<Kitnet::IpAddr>(0);
            if (value.size() == sizeof(Kitnet::Ip6Addr)) fields.srcVtepIp = value.load<Kitnet::Ip6Addr>(0);
            return true;
        case Dhcp6InterfaceIdCode::srcVtepMac:
            if (value.has(0, sizeof(Kitnet::EthAddr))) fields.srcVtepMac = value.load<Kitnet::EthAddr>(0);
            return true;
    }
    return false;
}

InterfaceIdFields decodeElements(std::string_view data) {
    const Wire::ByteView bytes(reinterpret_cast<const U8*>(data.data()), static_cast<U32>(data.size()));
    InterfaceIdFields fields;
    bool wellFormed = true;
    const auto inside = [&](U8 cursor) { return cursor < bytes.size(); };
    walkItems<SubOptionShape, U8>(bytes, 0, 0, inside, [&](const auto& head, U8 next) {
        const bool whole = bytes.has(head.dataAt(), head.len) && next > head.at;
        return wellFormed = whole && takeElement(fields, head.code, {bytes.data() + head.dataAt(), head.len});
    });
    return wellFormed ? fields : InterfaceIdFields{};
}

struct Element {
    Dhcp6InterfaceIdCode code;
    std::string_view value;

    std::size_t wireBytes() const { return SubOptionShape::headerBytes + value.size(); }
};

/// The elements to write for `fields`, in the order of their codes. They refer to `fields`.
std::vector<Element> elementsOf(const InterfaceIdFields& fields) {
    using Code = Dhcp6InterfaceIdCode;
    std::vector<Element> elements{{Code::intfName, fields.intfName}, {Code::vrfName, fields.vrfName}};
    const Kitnet::IpGenAddr& vtep = fields.srcVtepIp;
    if (!vtep.v4Addr().isAny()) elements.push_back({Code::srcVtepIp, Wire::imageOf(vtep.v4Addr())});
    if (!vtep.v6Addr().isUnspecified()) elements.push_back({Code::srcVtepIp, Wire::imageOf(vtep.v6Addr())});
    if (!fields.srcVtepMac.isZero()) elements.push_back({Code::srcVtepMac, Wire::imageOf(fields.srcVtepMac)});
    return elements;
}

}  // namespace

InterfaceIdFields decodeInterfaceId(std::string_view data) {
    return dhcpRelayTunnelEncapReplies() ? decodeElements(data) : decodeText(data);
}

std::optional<U16> interfaceIdBytes(const InterfaceIdFields& fields) {
    if (fields.intfName.empty() || fields.vrfName.empty()) return std::nullopt;
    std::size_t bytes = fields.intfName.size() + sizeof nameSeparator + fields.vrfName.size();
    std::size_t most = std::numeric_limits<U16>::max();
    if (dhcpRelayTunnelEncapReplies()) {
        bytes = 0;
        for (const Element& element : elementsOf(fields)) bytes += element.wireBytes();
        most = std::numeric_limits<U8>::max();
    }
    if (bytes > most) return std::nullopt;
    return static_cast<U16>(bytes);
}

Dhcp6InterfaceId::Ptr dhcp6InterfaceIdFactory(const Dhcp6OptionPtr& opt) {
    return Kcore::makeNode<Dhcp6InterfaceId>(opt);
}
const Kcore::TypeData& Dhcp6InterfaceId::typeData() const { return Kcore::typeDataOf<Dhcp6InterfaceId>(); }
Dhcp6InterfaceId::Ptr Dhcp6InterfaceId::Dhcp6InterfaceIdIs(const Dhcp6OptionPtr& opt) {
    return dhcp6InterfaceIdFactory(opt);
}

void Dhcp6InterfaceId::handleInitialized() {
    if (!beginInitialization()) return;
    const InterfaceIdFields fields = decodeInterfaceId(text(Dhcp6Const::intfId_offset, optLen()));
    vrfName_ = fields.vrfName;  // first, because it may throw
    intfName_ = fields.intfName;
    srcVtepIp_ = fields.srcVtepIp;
    srcVtepMac_ = fields.srcVtepMac;
}

void Dhcp6InterfaceId::setInterfaceIdDataInPkt() {
    if (intfName_.empty() || vrfName_.empty()) throw Tyk::InternalException("Intf Name or Vrf Name is not set");
    if (dhcpRelayTunnelEncapReplies())
        writeElements();
    else
        writeText();
}

void Dhcp6InterfaceId::writeText() {
    std::string data(intfName_);
    data.append(1, nameSeparator).append(vrfName_);
    store(Dhcp6Const::intfId_offset, std::string_view(data));
}

void Dhcp6InterfaceId::writeElements() {
    const InterfaceIdFields fields{intfName_.view(), vrfName_.view(), srcVtepIp_, srcVtepMac_};
    const std::vector<Element> elements = elementsOf(fields);
    Kitnet::Pkt& pkt = writablePkt();
    const auto forEachPlace = [&](auto visit) {
        U8 start = 0;  // docs/compatibility.md#offsets-in-an-option-wrap-at-256
        for (const Element& element : elements) {
            visit(packetPosition(U32{position(Dhcp6Const::intfId_offset)} + start), element);
            start = static_cast<U8>(start + element.wireBytes());
        }
    };
    forEachPlace([&](U16 at, const Element& element) {
        if (element.value.size() > std::numeric_limits<U8>::max()) Wire::throwNoRoom();
        Wire::requireRoom(pkt, at, static_cast<U32>(element.wireBytes()));
    });
    forEachPlace([&](U16 at, const Element& element) {
        Wire::store<U8>(pkt, at, static_cast<U8>(element.code));
        Wire::store<U8>(pkt, at + 1u, static_cast<U8>(element.value.size()));
        Wire::store(pkt, at + SubOptionShape::headerBytes, element.value);
    });
}

}  // namespace DhcpLib
