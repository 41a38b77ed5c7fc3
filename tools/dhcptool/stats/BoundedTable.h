#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "Kcore/Types.h"

namespace DhcpTool {

/// Rows by key, with bounded memory whatever keys arrive: when the table is full, the half with the smallest weights
/// moves into one row for all others. A key with a large weight therefore stays, however many keys appear once. The
/// weight of a key that was moved and came back is too small; nothing is lost from the sum of all rows.
///
/// A Row has `weight()` and `add(const Row&)`.
template <class Row>
class BoundedTable {
public:
    using Entry = std::pair<const std::string, Row>;

    /// Requires: at least 2 rows.
    explicit BoundedTable(std::size_t mostRows) : mostRows_(mostRows) {}

    /// The row of `key`, new if there is none. Valid until the next call.
    Row& row(std::string_view key) {
        auto found = rows_.find(key);
        if (found != rows_.end()) return found->second;
        if (rows_.size() == mostRows_) makeRoom();
        return rows_.try_emplace(std::string(key)).first->second;
    }

    /// The rows with the largest weights, the largest first; all rows if there are not as many.
    std::vector<const Entry*> top(std::size_t count) const {
        std::vector<const Entry*> entries;
        for (const Entry& entry : rows_) entries.push_back(&entry);
        const auto heavier = [](const Entry* a, const Entry* b) { return a->second.weight() > b->second.weight(); };
        std::ranges::stable_sort(entries, heavier);
        if (entries.size() > count) entries.resize(count);
        return entries;
    }

    std::size_t size() const { return rows_.size(); }
    /// The sum of all rows but the first `count`, those included that were moved out of the table.
    Row rest(std::size_t count) const {
        Row sum = other_;
        const auto all = top(rows_.size());
        for (std::size_t at = count; at < all.size(); ++at) sum.add(all[at]->second);
        return sum;
    }

private:
    void makeRoom() {
        const auto kept = top(mostRows_ / 2);
        const Kcore::U64 least = kept.back()->second.weight();
        std::size_t room = mostRows_ - kept.size();
        for (auto row = rows_.begin(); row != rows_.end() && room != 0;) {
            if (row->second.weight() > least) {
                ++row;
                continue;
            }
            other_.add(row->second);
            row = rows_.erase(row);
            --room;
        }
    }

    const std::size_t mostRows_;
    std::map<std::string, Row, std::less<>> rows_;
    Row other_;
};

}  // namespace DhcpTool
