#include "Tyk/Exception.h"

#include <string>

namespace Tyk {

InternalException::InternalException(std::string_view message) : std::runtime_error(std::string(message)) {}
InternalException::~InternalException() = default;

}  // namespace Tyk
