#pragma once

#include <functional>

#include "AreaRows.h"
#include "DhcpLib/Dhcp6Hdr.h"
#include "Recorders.h"
#include "platform/Refusal.h"

/// Tables of what views over a DHCPv6 option read from its bytes.
namespace DhcpTest {

/// "name=value" of each attribute, without those that are the same in all rows.
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

/// Expects that a view reads the values of the row, whatever bytes follow the packet, and reads them only once.
template <class View, std::size_t n>
void expectRead(std::function<Kcore::Ptr<View>(const DhcpLib::Dhcp6OptionPtr&)> make, const ReadRow (&rows)[n]) {
    for (const ReadRow& row : rows)
        for (const PktPtr& pkt : packets(hex("A5*3 " + row.option))) {
            const auto view = make(DhcpLib::dhcp6OptionFactory(pkt, 3));
            std::fill_n(pkt->data(), pkt->bytes(), U8{0});
            view->handleInitialized();
            EXPECT_EQ(attributesOf(*view), row.attributes) << row.rule;
        }
    EXPECT_EQ(View::memAllocationTracker_.live(), 0u);
}

}  // namespace DhcpTest
