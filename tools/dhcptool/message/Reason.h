#pragma once

#include <string_view>

#include "message/Message.h"

namespace DhcpTool {

/// Why the parser refused the frame: a static text. A frame that the snap length cut, or the first IP fragment, is
/// named as that. Requires: the frame is refused.
std::string_view refusalText(const Message& message);

}  // namespace DhcpTool
