#pragma once

#include "view/Line.h"
#include "view/View.h"

namespace DhcpTool {

/// Several lines for a message: frame number, time and headers, then each option on a line of its own, with its
/// position in the frame, its number, its name and its value. Options inside others are indented.
class VerboseView final : public View {
public:
    explicit VerboseView(const ViewSettings& settings) : time_(settings.time), coloured_(settings.coloured) {}
    void append(std::string& out, const Message& message) override;

private:
    TimeText time_;
    const bool coloured_;
};

}  // namespace DhcpTool
