#include "view/JsonView.h"

#include "DhcpLib/Dhcp6Hdr/RelayIdentification.h"
#include "common/JsonWriter.h"
#include "common/Printable.h"
#include "message/OptionTable.h"
#include "message/TypeNames.h"
#include "view/DuidText.h"
#include "view/OptionText.h"

namespace DhcpTool {

namespace {

using DhcpLib::Dhcp6Const;
using DhcpLib::Dhcp6OptionType;
using DhcpLib::DuidFields;

/// Writes the members of one object.
class Writer {
public:
    Writer(JsonWriter& json, const Message& message, std::string& scratch)
        : json_(json), message_(message), scratch_(scratch) {}

    void writeFrame(TimeText& time) {
        const Arrival& arrival = message_.arrival;
        json_.member("frame", arrival.number);
        json_.key("time").built([&](std::string& out) { time.append(out, arrival); });
        json_.member("interface", arrival.intf);
        if (arrival.ifIndex != 0) json_.member("ifIndex", arrival.ifIndex);
        if (arrival.live) json_.member("outgoing", arrival.outgoing);
        json_.member("sentBytes", arrival.sentBytes);
        json_.key("rejection");
        if (message_.verdict == Message::Verdict::refused)
            json_.value(message_.rejection);
        else
            json_.null();
        json_.key("fault");
        if (message_.fault)
            json_.built([&](std::string& out) { appendFault(out, *message_.fault); });
        else
            json_.null();
    }

    /// `xid` has one form for both protocols.
    template <class Parser>
    void writeAttributes(const Parser& parser, bool bridgingConfig) {
        Kcore::forEachAttribute(parser, [&](std::string_view name, const auto& value) {
            if (name == "bridgingConfig" && !bridgingConfig) return;
            json_.key(name);
            if (name == "xid")
                json_.built([&](std::string& out) {
                    appendHex(out.append("0x"), DhcpLib::Wire::imageOf(message_.header.xid()));
                });
            else
                json_.value(value);
        });
    }

    void writeMessage4() {
        const DhcpLib::DhcpHdr& header = message_.header;
        json_.member("hops", header.hops());
        json_.member("secs", header.secs());
        json_.member("broadcast", DhcpLib::Flags(header.flags()).broadcast());
        json_.member("siaddr", header.siaddr());
        writeText("sname", message_.sname);
        writeText("file", message_.file);
        writeOptions("options", message_.options, optionInfo4);
        writeOptions("relayInfo", message_.relayInfo, relayOptionInfo);
    }

    void writeMessage6() {
        const Layer6* const inside = message_.innermost();
        json_.key("messageType");
        if (inside != nullptr)
            json_.value(inside->type);
        else
            json_.null();
        json_.key("xid");
        if (inside != nullptr)
            json_.value(inside->xid);
        else
            json_.null();
        writeDuid("clientId", inside, Dhcp6OptionType::clientId);
        writeDuid("serverId", inside, Dhcp6OptionType::serverId);
        writeStatus(message_.status6);
        json_.key("ia").objects(message_.ias, [&](const Ia6& ia) { writeIa(ia); });
        writeRelayOptions(inside);
        json_.key("relay").startArray();
        for (const Layer6& layer : message_.layers)
            if (layer.isRelay()) json_.object([&] { writeHop(layer); });
        json_.endArray();
    }

private:
    void writeText(std::string_view name, std::string_view text) {
        scratch_.clear();
        appendHarmless(scratch_, text);
        json_.member(name, std::string_view(scratch_));
    }

    template <class Items, class InfoOf>
    void writeOptions(std::string_view name, const Items& items, InfoOf infoOf) {
        json_.key(name).startArray();
        for (const Item& item : items) {
            const OptionInfo* const info = infoOf(item.code);
            if (info != nullptr && info->layout == Layout::relayMessage) continue;  // printed as a message
            json_.object([&] {
                json_.member("code", item.code);
                if (info != nullptr) json_.key("name").plain(info->name);
                json_.key("data").hex(item.data);
            });
        }
        json_.endArray();
    }

    /// Writes an object with the option's data and the members of `writeFields(item)`; null if the option is absent or
    /// shorter than `leastBytes`.
    template <class WriteFields>
    void writeOption(std::string_view name, const Layer6* layer, Dhcp6OptionType code, WriteFields writeFields,
                     U16 leastBytes = 0) {
        json_.key(name);
        const Item* const item = layer != nullptr ? message_.option(*layer, code) : nullptr;
        if (item == nullptr || item->length < leastBytes) return json_.null();
        json_.object([&] {
            json_.key("data").hex(item->data);
            writeFields(*item);
        });
    }

    void writeDuid(std::string_view name, const Layer6* layer, Dhcp6OptionType code) {
        writeOption(name, layer, code, [&](const Item& item) {
            if (const auto fields = duidFields(item.data)) writeDuidFields(*fields);
        });
    }

    void writeDuidFields(const DuidFields& fields) {
        json_.member("type", duidTypeName(fields.duidType));
        if (DuidFields::hasLinkLayer(fields.duidType)) json_.member("llAddr", fields.llAddr);
        if (DuidFields::hasTime(fields.duidType)) json_.member("time", fields.duidTime);
        if (fields.duidType == Dhcp6Const::duidType_uuid)
            json_.key("uuid").built([&](std::string& out) { appendUuid(out, fields.uuid); });
        if (fields.duidType != Dhcp6Const::duidType_en) return;
        json_.member("entno", fields.entno);
        json_.key("entId").hex(fields.entId);
    }

    void writeStatus(const std::optional<Status6>& status) {
        json_.key("status");
        if (!status) return json_.null();
        json_.object([&] {
            json_.member("code", status->code);
            if (const std::string_view name = statusName(status->code); !name.empty()) json_.member("name", name);
            writeText("text", status->text);
        });
    }

    void writeIa(const Ia6& ia) {
        json_.member("type", ia.kind);
        json_.member("iaid", ia.iaid);
        json_.member("t1", ia.t1);
        json_.member("t2", ia.t2);
        writeStatus(ia.status);
        writeLeases("addresses", ia, false);
        writeLeases("prefixes", ia, true);
    }

    void writeLeases(std::string_view name, const Ia6& ia, bool prefixes) {
        json_.key(name).startArray();
        for (const Lease6& lease : message_.leasesOf(ia))
            if (lease.prefixBits.has_value() == prefixes) json_.object([&] { writeLease(lease); });
        json_.endArray();
    }

    void writeLease(const Lease6& lease) {
        json_.member("address", lease.address);
        if (lease.prefixBits) json_.member("length", *lease.prefixBits);
        json_.member("preferred", lease.preferred);
        json_.member("valid", lease.valid);
        writeStatus(lease.status);
    }

    void writeRelayOptions(const Layer6* layer) {
        writeOption("interfaceId", layer, Dhcp6OptionType::interfaceId,
                    [&](const Item& item) { writeInterfaceId(item); });
        writeOption(
            "remoteId", layer, Dhcp6OptionType::remoteId, [&](const Item& item) { writeRemoteId(item); },
            Dhcp6Const::entno_size);
        if (layer != nullptr)
            writeOptions("options", message_.optionsOf(*layer), optionInfo6);
        else
            writeOptions("options", std::span<const Item>(), optionInfo6);
    }

    void writeInterfaceId(const Item& item) {
        const DhcpLib::InterfaceIdFields fields = DhcpLib::decodeInterfaceId(item.data);
        if (fields.intfName.empty()) return;
        json_.key("intfName").hex(fields.intfName);
        json_.key("vrfName").hex(fields.vrfName);
        json_.member("srcVtepIp", fields.srcVtepIp);
        json_.member("srcVtepMac", fields.srcVtepMac);
    }

    void writeRemoteId(const Item& item) {
        const auto fields = DhcpLib::dhcp6RemoteIdentifier(
            DhcpLib::dhcp6OptionFactory(message_.arrival.pkt, static_cast<U16>(item.offset)));
        json_.member("entno", fields.entno);
        if (!fields.l2PortInfoValid()) return;
        json_.member("duidllAddr", fields.duidllAddr);
        json_.member("l3IntfId", fields.l3IntfId);
        json_.member("l2IntfId", fields.l2IntfId);
        json_.member("vlanId", fields.vlanId);
    }

    void writeHop(const Layer6& layer) {
        json_.member("messageType", layer.type);
        json_.member("hopCount", layer.hopCount);
        json_.member("linkAddr", layer.linkAddr);
        json_.member("peerAddr", layer.peerAddr);
        writeRelayOptions(&layer);
    }

    JsonWriter& json_;
    const Message& message_;
    std::string& scratch_;
};

}  // namespace

void JsonView::append(std::string& out, const Message& message) {
    JsonWriter json(out);
    json.startObject();
    Writer writer(json, message, text_);
    writer.writeFrame(time_);
    if (message.isDhcp6()) {
        writer.writeAttributes(message.parser6, bridgingConfig_);
        writer.writeMessage6();
    } else {
        writer.writeAttributes(message.parser, bridgingConfig_);
        writer.writeMessage4();
    }
    json.endObject();
    out.push_back('\n');
}

}  // namespace DhcpTool
