#pragma once

#include "view/View.h"

namespace DhcpTool {

/// One line of at most 100 columns: frame number, time of day, VLAN, message type, client, the addresses that it asks
/// for or gets, the server, and the reason of a refusal.
class QuickView final : public View {
public:
    explicit QuickView(const ViewSettings& settings) : time_(settings.time), coloured_(settings.coloured) {}
    void append(std::string& out, const Message& message) override;

    static constexpr std::size_t columns = 100;

private:
    TimeText time_;
    const bool coloured_;
    std::string line_;
};

}  // namespace DhcpTool
