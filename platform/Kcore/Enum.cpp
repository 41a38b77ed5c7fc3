#include "Kcore/Enum.h"

#include "Kcore/Encoding.h"

namespace Kcore::Detail {

namespace {

std::string messageFor(std::string_view enumeration) { return std::string(enumeration).append(" has no member "); }

}  // namespace

void noSuchMember(std::string_view enumeration, unsigned number) {
    throwException(messageFor(enumeration).append(std::to_string(number)));
}

void noSuchMember(std::string_view enumeration, std::string_view name) {
    std::string message = messageFor(enumeration);
    appendQuoted(message, name);
    throwException(message);
}

}  // namespace Kcore::Detail
