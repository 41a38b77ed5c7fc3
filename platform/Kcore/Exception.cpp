#include "Kcore/Exception.h"

#include <string>

namespace Kcore {

RangeException::RangeException(std::string_view message) : std::runtime_error(std::string(message)) {}
RangeException::~RangeException() = default;

void throwException(std::string_view message) { throw RangeException(message); }

}  // namespace Kcore
