#pragma once

#include <memory>

#include "message/Message.h"
#include "view/TimeText.h"

namespace DhcpTool {

/// Prints messages in one form.
class View {
public:
    virtual ~View() = default;
    /// Appends the message and a newline.
    virtual void append(std::string& out, const Message& message) = 0;
};

enum class ViewKind { quick, line, verbose, json };

struct ViewSettings {
    ViewKind kind = ViewKind::line;
    TimeForm time = TimeForm::absolute;  ///< not for JSON
    bool coloured = false;               ///< not for JSON
    bool bridgingConfig = false;         ///< JSON: with the attribute `bridgingConfig`
};

std::unique_ptr<View> makeView(const ViewSettings& settings);

}  // namespace DhcpTool
