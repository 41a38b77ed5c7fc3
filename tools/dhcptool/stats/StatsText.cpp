#include "stats/StatsText.h"

#include <langinfo.h>

#include <algorithm>
#include <clocale>
#include <cstdio>

#include "common/Printable.h"
#include "exchange/ExchangeText.h"
#include "view/TimeText.h"

namespace DhcpTool {

namespace {

constexpr std::size_t nameColumns = 28, numberColumns = 11;

/// "12.5 %"
std::string percentText(U64 part, U64 whole) {
    const U64 thousandths = whole == 0 ? 0 : part * 1000 / whole;
    return std::to_string(thousandths / 10) + '.' + std::to_string(thousandths % 10) + " %";
}

class Writer {
public:
    Writer(const Statistics& statistics, const StatsTextSettings& settings)
        : statistics_(statistics), settings_(settings) {}

    std::string take() {
        summary();
        messages();
        marks();
        responseTimes();
        tallies("VLAN", statistics_.vlans(), [](const std::string& vlan) { return vlan; });
        tallies("port", statistics_.ports(), [](const std::string& port) { return textOrHex(port); });
        tallies("client", statistics_.clients(), [](const std::string& client) { return client; });
        return std::move(out_);
    }

private:
    void name(std::string_view text) {
        out_.append(text);
        if (text.size() < nameColumns) out_.append(nameColumns - text.size(), ' ');
    }
    void number(std::string_view text, std::size_t columns = numberColumns) {
        out_.append(columns - std::min(text.size(), columns - 1), ' ').append(text);
    }
    void number(U64 value) { number(std::to_string(value)); }
    /// Starts a table.
    void heading(std::string_view title, std::initializer_list<std::string_view> columns, std::size_t width) {
        out_.append("\n");
        name(title);
        for (const std::string_view column : columns) number(column, width);
    }

    void summary() {
        const ExchangeTally& all = statistics_.all();
        if (statistics_.start()) {
            appendSecond(out_, std::chrono::floor<std::chrono::seconds>(*statistics_.start()));
            out_.append("Z, ").append(durationText(timeBetween(*statistics_.start(), *statistics_.end()))).append(": ");
        }
        out_.append(std::to_string(statistics_.messages())).append(" messages, ");
        out_.append(std::to_string(all.exchanges)).append(" exchanges\n");
        out_.append("not answered: ").append(percentText(all.notAnswered, all.asked));
        out_.append(" (").append(std::to_string(all.notAnswered)).append(" of ").append(std::to_string(all.asked));
        out_.append("), with problems: ").append(std::to_string(all.problems)).append("\n");
    }

    void messages() {
        heading("messages", {"count"}, numberColumns);
        out_.append("\n");
        for (std::size_t at = 0; at < messageKindCount; ++at) {
            const auto kind = static_cast<MessageKind>(at);
            if (statistics_.messagesOf(kind) == 0) continue;
            name(std::string("  ").append(roleOf(kind).name).append(roleOf(kind).dhcp6 ? " (v6)" : ""));
            number(statistics_.messagesOf(kind));
            out_.append("\n");
        }
    }

    void marks() {
        if (statistics_.all().problems == 0) return;
        heading("problems", {"exchanges"}, numberColumns);
        out_.append("\n");
        for (std::size_t at = 0; at < markKindCount; ++at) {
            const auto mark = static_cast<MarkKind>(at);
            if (statistics_.exchangesWith(mark) == 0) continue;
            name("  " + std::string(Kcore::enumName(mark)));
            number(statistics_.exchangesWith(mark));
            out_.append("\n");
        }
    }

    struct Response {
        std::string name;
        const Histogram* times;
    };

    /// `others`: the servers without a row of their own.
    std::vector<Response> responses(const ServerTally& others) const {
        std::vector<Response> all;
        const auto add = [&](const std::string& server, const ServerTally& tally) {
            if (tally.offers.count() != 0) all.push_back({server + " offers", &tally.offers});
            if (tally.replies.count() != 0) all.push_back({server + " replies", &tally.replies});
        };
        for (const auto* entry : statistics_.servers().top(settings_.top)) add(entry->first, entry->second);
        add("(others)", others);
        return all;
    }

    /// All histograms have the same scale, so that servers can be compared.
    void responseTimes() {
        const ServerTally others = statistics_.servers().rest(settings_.top);
        const std::vector<Response> all = responses(others);
        if (all.empty()) return;
        std::size_t first = Histogram::barCount - 1, last = 0;
        for (const Response& response : all) {
            const auto bars = response.times->bars();
            for (std::size_t bar = 0; bar < bars.size(); ++bar) {
                if (bars[bar] == 0) continue;
                first = std::min(first, bar);
                last = std::max(last, bar);
            }
        }
        heading("response times", {"count", "median", "90 %", "99 %"}, timeColumns);
        out_.append("  ").append(durationText(Histogram::barStart(first))).append(" - ");
        out_.append(durationText(Histogram::barStart(last + 1))).append("\n");
        for (const Response& response : all) {
            name("  " + response.name);
            number(std::to_string(response.times->count()), timeColumns);
            for (const double share : {0.5, 0.9, 0.99})
                number(durationText(response.times->percentile(share)), timeColumns);
            picture(*response.times, first, last);
        }
    }

    /// A character for each bar, higher the more times are in it. A bar with any time in it is never empty.
    void picture(const Histogram& times, std::size_t first, std::size_t last) {
        static constexpr std::string_view blocks[] = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
        static constexpr std::string_view ascii[] = {" ", ".", ":", "-", "=", "+", "*", "%", "#"};
        const auto bars = times.bars();
        const U64 most = std::max<U64>(1, std::ranges::max(bars));
        out_.append("  |");
        for (std::size_t bar = first; bar <= last; ++bar) {
            const U64 height = (bars[bar] * (std::size(blocks) - 1) + most - 1) / most;
            out_.append(settings_.blocks ? blocks[height] : ascii[height]);
        }
        out_.append("|\n");
    }

    template <class NameOf>
    void tallies(std::string_view title, const BoundedTable<ExchangeTally>& table, NameOf nameOf) {
        if (table.size() == 0) return;
        heading(title, {"exchanges", "unanswered", "share", "problems"}, numberColumns);
        out_.append("\n");
        for (const auto* row : table.top(settings_.top)) tally(nameOf(row->first), row->second);
        const ExchangeTally rest = table.rest(settings_.top);
        if (rest.exchanges != 0) tally("(others)", rest);
    }

    void tally(const std::string& rowName, const ExchangeTally& row) {
        name("  " + rowName);
        number(row.exchanges);
        number(row.notAnswered);
        number(percentText(row.notAnswered, row.asked));
        number(row.problems);
        out_.append("\n");
    }

    static constexpr std::size_t timeColumns = 8;

    const Statistics& statistics_;
    const StatsTextSettings& settings_;
    std::string out_;
};

}  // namespace

std::string statsText(const Statistics& statistics, const StatsTextSettings& settings) {
    return Writer(statistics, settings).take();
}

bool localeIsUtf8() {
    std::setlocale(LC_CTYPE, "");
    return std::string_view(nl_langinfo(CODESET)) == "UTF-8";
}

}  // namespace DhcpTool
