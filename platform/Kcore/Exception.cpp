#include "Kcore/Exception.h"

#include <string>

#include "Kcore/Counter.h"
#include "Kcore/Node.h"

namespace Kcore {

std::atomic<bool> ThreadControl::multiThreaded_{false};

Node::~Node() = default;

RangeException::RangeException(std::string_view message) : std::runtime_error(std::string(message)) {}
RangeException::~RangeException() = default;

void throwException(std::string_view message) { throw RangeException(message); }

}  // namespace Kcore
