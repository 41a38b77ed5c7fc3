#include "Kitnet/WireBytes.h"

#include "Kcore/Encoding.h"

namespace Kitnet {

void refuseText(std::string_view type, std::string_view text) {
    std::string message(type);
    Kcore::appendQuoted(message.append(": "), text);
    Kcore::throwException(message.append(" is not valid"));
}

void refuseByte(std::string_view type, std::size_t last) {
    std::string message(type);
    Kcore::appendText(message.append("::byte > "), last);
    Kcore::throwException(message.append(" not allowed"));
}

}  // namespace Kitnet
