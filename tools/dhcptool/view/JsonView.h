#pragma once

#include "view/View.h"

namespace DhcpTool {

/// One JSON object on a line for a message. docs/dhcptool.schema.json describes its members. They are the same for all
/// messages of a protocol.
class JsonView final : public View {
public:
    explicit JsonView(const ViewSettings& settings) : bridgingConfig_(settings.bridgingConfig) {}
    void append(std::string& out, const Message& message) override;

private:
    TimeText time_;
    std::string text_;  // reused
    const bool bridgingConfig_;
};

}  // namespace DhcpTool
