#include "view/MessageJson.h"

#include "common/AttributeJson.h"

namespace DhcpTool {

namespace {

using DhcpLib::Dhcp6Const;
using DhcpLib::DuidFields;

/// The start of every object: the frame, then the attributes of the parser.
template <class Parser>
Json startOf(const Arrival& frame, const Parser& parser) {
    Json object{{"frame", frame.number}};
    if (frame.live) {
        object["interface"] = jsonOf(frame.intf);
        object["outgoing"] = frame.outgoing;
    }
    object.update(jsonOf(parser));
    return object;
}

/// The result of `jsonOfValue`, or null if there is no value.
template <class T, class JsonOfValue>
Json orNull(const std::optional<T>& value, JsonOfValue jsonOfValue) {
    return value ? jsonOfValue(*value) : Json();
}

Json duidJson(const Message6::Duid& duid) {
    Json object{{"data", hex(duid.bytes)}};
    if (!duid.fields) return object;
    const DuidFields& fields = *duid.fields;
    object["type"] = duidTypeName(fields.duidType);
    if (DuidFields::hasLinkLayer(fields.duidType)) object["llAddr"] = jsonOf(fields.llAddr);
    if (DuidFields::hasTime(fields.duidType)) object["time"] = fields.duidTime;
    if (fields.duidType == Dhcp6Const::duidType_uuid) object["uuid"] = uuidText(fields.uuid);
    if (fields.duidType == Dhcp6Const::duidType_en) {
        object["entno"] = fields.entno;
        object["entId"] = hex(fields.entId);
    }
    return object;
}

Json iaJson(const Message6::Ia& ia) {
    Json object{{"type", ia.kind}, {"iaid", ia.iaid}, {"t1", ia.t1}, {"t2", ia.t2}};
    object["addresses"] = object["prefixes"] = Json::array();
    for (const Message6::Lease& lease : ia.leases) {
        Json entry{{"address", jsonOf(lease.address)}};
        if (lease.prefixBits) entry["length"] = *lease.prefixBits;
        entry["preferred"] = lease.preferred;
        entry["valid"] = lease.valid;
        object[lease.prefixBits ? "prefixes" : "addresses"].push_back(entry);
    }
    return object;
}

Json interfaceIdJson(const Message6::InterfaceId& id) {
    Json object{{"data", hex(id.bytes)}};
    if (id.fields.intfName.empty()) return object;
    object["intfName"] = hex(id.fields.intfName);
    object["vrfName"] = hex(id.fields.vrfName);
    object["srcVtepIp"] = jsonOf(id.fields.srcVtepIp);
    object["srcVtepMac"] = jsonOf(id.fields.srcVtepMac);
    return object;
}

Json remoteIdJson(const Message6::RemoteId& id) {
    Json object{{"data", hex(id.bytes)}, {"entno", id.fields.entno}};
    if (!id.fields.l2PortInfoValid()) return object;
    object["duidllAddr"] = jsonOf(id.fields.duidllAddr);
    object["l3IntfId"] = id.fields.l3IntfId;
    object["l2IntfId"] = jsonOf(id.fields.l2IntfId);
    object["vlanId"] = jsonOf(id.fields.vlanId);
    return object;
}

void addRelayOptions(Json& object, const Message6& message) {
    object["interfaceId"] = orNull(message.interfaceId, interfaceIdJson);
    object["remoteId"] = orNull(message.remoteId, remoteIdJson);
}

Json hopJson(const Message6& message) {
    Json object{{"messageType", jsonOf(message.type)},
                {"hopCount", message.hopCount},
                {"linkAddr", jsonOf(message.linkAddr)},
                {"peerAddr", jsonOf(message.peerAddr)}};
    addRelayOptions(object, message);
    return object;
}

/// Adds the fields of `message`. Type and transaction id are null if there is no message (type 0).
void addMessage(Json& object, const Message6& message) {
    const bool present = message.type != DhcpLib::Dhcp6MsgType{};
    object["messageType"] = present ? jsonOf(message.type) : Json();
    object["xid"] = present ? jsonOf(message.xid) : Json();
    object["clientId"] = orNull(message.clientId, duidJson);
    object["serverId"] = orNull(message.serverId, duidJson);
    object["ia"] = Json::array();
    for (const Message6::Ia& ia : message.ias) object["ia"].push_back(iaJson(ia));
    addRelayOptions(object, message);
}

}  // namespace

std::string messageJson(const Arrival& frame, const DhcpLib::PacketParser& parser) {
    return startOf(frame, parser).dump();
}

std::string messageJson(const Arrival& frame, const DhcpLib::Dhcp6PacketParser& parser,
                        const std::vector<Message6>& chain) {
    Json object = startOf(frame, parser);
    Json relay = Json::array();
    Message6 innermost;
    for (const Message6& message : chain)
        if (message.isRelay())
            relay.push_back(hopJson(message));
        else
            innermost = message;
    addMessage(object, innermost);
    object["relay"] = relay;
    return object.dump();
}

}  // namespace DhcpTool
