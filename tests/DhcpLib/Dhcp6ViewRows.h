#pragma once

#include <functional>

#include "AreaRows.h"
#include "DhcpLib/Dhcp6Hdr.h"
#include "Recorders.h"
#include "platform/Refusal.h"

/// Tables of what views over a DHCPv6 option read from its bytes.
namespace DhcpTest {

/// "name=value" of each attribute but those that are the same everywhere.
inline std::string attributesOf(const Kcore::Node& node) {
    std::string all;
    for (const auto& attribute : node.typeData().attributes()) {
        if (attribute.name == "opt" || attribute.name == "initialized" || attribute.name.ends_with("InPkt")) continue;
        attribute.appendText(all.append(all.empty() ? "" : " ").append(attribute.name).append("="), &node);
    }
    if (const auto* remoteId = dynamic_cast<const DhcpLib::Dhcp6RemoteIdBase*>(&node); remoteId && remoteId->duid())
        all.append(" {").append(attributesOf(*remoteId->duid())).append("}");
    return all;
}

struct ReadRow {
    const char* rule;
    std::string option;
    std::string attributes;
};

/// At every cut, what stands behind the packet has no part in what is read; and a view reads but once.
template <class View, std::size_t n>
void expectRead(std::function<Kcore::Ptr<View>(const DhcpLib::Dhcp6OptionPtr&)> make, const ReadRow (&rows)[n]) {
    constexpr U16 at = 3;
    for (const ReadRow& row : rows) {
        SCOPED_TRACE(row.rule);
        const Octets whole = Octets(at, scratch) + hex(row.option);
        for (std::size_t size = at; size <= whole.size(); ++size) {
            const std::string read = attributesOf(*make(DhcpLib::dhcp6OptionFactory(packet(first(whole, size)), at)));
            for (const PktPtr& pkt : packets(first(whole, size))) {
                const auto view = make(DhcpLib::dhcp6OptionFactory(pkt, at));
                std::fill_n(pkt->data(), pkt->bytes(), U8{0});
                view->handleInitialized();
                EXPECT_EQ(attributesOf(*view), read) << "cut to " << size << " bytes, with others behind";
            }
            EXPECT_EQ(size < whole.size() ? row.attributes : read, row.attributes);
        }
        EXPECT_EQ(View::memAllocationTracker_.live(), 0u);
    }
}

}  // namespace DhcpTest
