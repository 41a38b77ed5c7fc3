#include "stats/StatsJson.h"

#include "view/TimeText.h"

namespace DhcpTool {

namespace {

class Writer {
public:
    Writer(JsonWriter& json, const Statistics& statistics, std::size_t top)
        : json_(json), statistics_(statistics), top_(top) {}

    void write() {
        time("start", statistics_.start());
        time("end", statistics_.end());
        json_.member("messages", statistics_.messages());
        types("dhcp4", false);
        types("dhcp6", true);
        members(statistics_.all());
        problems();
        list("servers", "server", statistics_.servers(), [](const std::string& server) { return server; });
        list("vlans", "vlan", statistics_.vlans(), [](const std::string& vlan) { return vlan; });
        list("ports", "port", statistics_.ports(), [](const std::string& port) { return hex(port); });
        list("clients", "client", statistics_.clients(), [](const std::string& client) { return client; });
    }

private:
    void time(std::string_view name, const std::optional<Nanoseconds>& when) {
        json_.key(name);
        if (when)
            json_.built([&](std::string& out) { TimeText().append(out, *when); });
        else
            json_.null();
    }

    void types(std::string_view name, bool dhcp6) {
        json_.key(name).object([&] {
            for (std::size_t at = 0; at < messageKindCount; ++at) {
                const auto kind = static_cast<MessageKind>(at);
                if (roleOf(kind).dhcp6 == dhcp6 && statistics_.messagesOf(kind) != 0)
                    json_.member(roleOf(kind).name, statistics_.messagesOf(kind));
            }
        });
    }

    void problems() {
        json_.key("marks").object([&] {
            for (std::size_t at = 0; at < markKindCount; ++at) {
                const auto mark = static_cast<MarkKind>(at);
                if (statistics_.exchangesWith(mark) != 0)
                    json_.member(Kcore::enumName(mark), statistics_.exchangesWith(mark));
            }
        });
    }

    /// The rows of a table, then the rest of the table and the rows that were moved out of it as the row null.
    template <class Row, class NameOf>
    void list(std::string_view name, std::string_view key, const BoundedTable<Row>& table, NameOf nameOf) {
        json_.key(name).startArray();
        for (const auto* entry : table.top(top_))
            json_.object([&] {
                json_.key(key).string(nameOf(entry->first));
                members(entry->second);
            });
        if (const Row rest = table.rest(top_); rest.exchanges != 0)
            json_.object([&] {
                json_.key(key).null();
                members(rest);
            });
        json_.endArray();
    }

    void members(const ExchangeTally& tally) {
        json_.member("exchanges", tally.exchanges);
        json_.member("answerDue", tally.asked);
        json_.member("notAnswered", tally.notAnswered);
        json_.member("problems", tally.problems);
    }

    void members(const ServerTally& tally) {
        json_.member("exchanges", tally.exchanges);
        json_.member("refusals", tally.refusals);
        times("offers", tally.offers);
        times("replies", tally.replies);
    }

    void times(std::string_view name, const Histogram& histogram) {
        json_.key(name).object([&] {
            json_.member("count", histogram.count());
            json_.member("medianNs", histogram.percentile(0.5).count());
            json_.member("p90Ns", histogram.percentile(0.9).count());
            json_.member("p99Ns", histogram.percentile(0.99).count());
            bars(histogram.bars());
        });
    }

    void bars(const std::array<U64, Histogram::barCount>& counts) {
        json_.key("histogram").startArray();
        for (std::size_t bar = 0; bar < counts.size(); ++bar) {
            if (counts[bar] == 0) continue;
            json_.object([&] {
                json_.member("fromNs", Histogram::barStart(bar).count());
                json_.member("count", counts[bar]);
            });
        }
        json_.endArray();
    }

    JsonWriter& json_;
    const Statistics& statistics_;
    const std::size_t top_;
};

}  // namespace

void writeStatistics(JsonWriter& json, const Statistics& statistics, std::size_t top) {
    json.object([&] { Writer(json, statistics, top).write(); });
}

}  // namespace DhcpTool
