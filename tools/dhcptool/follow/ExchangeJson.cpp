#include "follow/ExchangeJson.h"

#include <array>

#include "DhcpLib/Wire.h"
#include "common/Printable.h"
#include "exchange/ExchangeText.h"
#include "message/TypeNames.h"
#include "view/TimeText.h"

namespace DhcpTool {

namespace {

/// Writes the members of one object. Members without a value are left out.
class Writer {
public:
    Writer(JsonWriter& json, const Exchange& exchange) : json_(json), exchange_(exchange) {}

    void write(const std::vector<Mark>& marks) {
        time("time", exchange_.start);
        time("end", exchange_.end);
        json_.key("protocol").string(exchange_.dhcp6() ? "dhcp6" : "dhcp4");
        client();
        json_.key("messages").objects(exchange_.steps, [&](const Step& step) { message(step); });
        json_.key("servers").objects(exchange_.servers, [&](const ExchangeServer& one) { server(one); });
        json_.key("requested").objects(exchange_.requested, [&](const Assigned& one) { address(one); });
        json_.key("assigned").objects(exchange_.assigned, [&](const Assigned& one) { address(one); });
        if (exchange_.relay.isUsable()) json_.member("relay", exchange_.relay);
        json_.key("statuses").objects(exchange_.statuses, [&](const Exchange::Status& one) { status(one); });
        json_.key("marks").objects(marks, [&](const Mark& one) { mark(one); });
    }

private:
    void time(std::string_view name, Nanoseconds when) {
        json_.key(name).built([&](std::string& out) { TimeText().append(out, when); });
    }
    void text(std::string_view name, std::string_view value) {
        if (!value.empty()) json_.key(name).string(harmless(value));
    }
    void bytes(std::string_view name, std::string_view value) {
        if (!value.empty()) json_.key(name).hex(value);
    }
    void duration(std::string_view name, const std::optional<Nanoseconds>& value) {
        if (value) json_.member(name, value->count());
    }

    void client() {
        if (exchange_.mac) json_.member("mac", *exchange_.mac);
        bytes("clientId", exchange_.clientId);
        text("hostname", exchange_.hostname);
        text("interface", exchange_.interface);
        json_.member("vlan", exchange_.vlan);
        bytes("port", exchange_.port);
        bytes("relayedPort", exchange_.farPort);
    }

    void message(const Step& step) {
        static constexpr std::array<std::string_view, 5> purposes{"", "select", "reboot", "renew", "rebind"};
        json_.key("type").string(step.role().name);
        text("purpose", purposes[static_cast<U8>(step.purpose)]);
        json_.key("xid").built([&](std::string& out) {
            const Kitnet::NetU32 xid(step.xid);
            appendHex(out.append("0x"), DhcpLib::Wire::imageOf(xid).substr(exchange_.dhcp6() ? 1 : 0));
        });
        const Sighting& seen = step.clientSide();
        time("time", seen.first);
        if (step.near.seen() && step.far.seen()) time("relayedTime", step.far.first);
        json_.member("count", seen.count);
        if (step.server) json_.member("server", *step.server);
        duration("waitNs", step.wait);
        duration("serverWaitNs", step.serverWait);
        text("text", step.text);
    }

    void server(const ExchangeServer& one) {
        json_.member("address", one.address);
        bytes("id", one.id);
        if (one.direct) json_.member("mac", one.mac);
        if (one.offered.isUsable()) json_.member("offered", one.offered);
        json_.member("chosen", !one.id.empty() && one.id == exchange_.chosenServer);
    }

    void address(const Assigned& one) {
        json_.member("address", one.address);
        if (one.prefixBits) json_.member("prefixLength", *one.prefixBits);
        if (one.seconds) json_.member("lifetime", *one.seconds);
    }

    void status(const Exchange::Status& one) {
        json_.key("type").string(roleOf(one.kind).name);
        json_.member("code", one.code);
        text("name", statusName(one.code));
        text("text", one.text);
    }

    void mark(const Mark& one) {
        json_.key("kind").string(Kcore::enumName(one.kind));
        json_.key("text").string(one.text);
    }

    JsonWriter& json_;
    const Exchange& exchange_;
};

}  // namespace

void writeExchange(JsonWriter& json, const Exchange& exchange, const std::vector<Mark>& marks) {
    json.object([&] { Writer(json, exchange).write(marks); });
}

}  // namespace DhcpTool
