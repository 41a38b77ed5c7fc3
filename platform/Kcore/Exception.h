#pragma once

#include <stdexcept>
#include <string_view>

#include "Kcore/Export.h"

namespace Kcore {

/// A value type was given a value outside its range.
class DHCPPLATFORM_EXPORT RangeException : public std::runtime_error {
public:
    explicit RangeException(std::string_view message);
    ~RangeException() override;
};

/// Raises `RangeException` with `message`.
[[noreturn]] DHCPPLATFORM_EXPORT void throwException(std::string_view message);

}  // namespace Kcore
