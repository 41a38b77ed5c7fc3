#pragma once

#include <string>

#include "exchange/Event.h"
#include "message/Message.h"

namespace DhcpTool {

/// Takes from messages what following an exchange needs.
class EventReader {
public:
    /// Null if the frame holds no DHCP message whose type can be read. The event is valid until the next call, and as
    /// long as the message.
    Event* read(const Message& message);

private:
    void read4(const Message& message);
    void read6(const Message& message);
    void identify4(const Message& message);

    Event event_;
    std::string client_, server_, interface_;  ///< texts of `event_` that are not in the frame
};

}  // namespace DhcpTool
