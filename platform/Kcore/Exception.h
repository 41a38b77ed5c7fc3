#pragma once

#include <stdexcept>
#include <string_view>

#include "Kcore/Export.h"

namespace Kcore {

/// Thrown if a value is out of the range of its type.
class DHCPPLATFORM_EXPORT RangeException : public std::runtime_error {
public:
    /// An exception whose what() is `message`.
    explicit RangeException(std::string_view message);
    ~RangeException() override;
};

/// Throws `RangeException` with `message`.
[[noreturn]] DHCPPLATFORM_EXPORT void throwException(std::string_view message);

}  // namespace Kcore
