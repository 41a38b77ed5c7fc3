#pragma once

#include <stdexcept>
#include <string_view>

#include "Kcore/Export.h"

namespace Tyk {

/// Thrown if an operation on a view would exceed its bounds. Callers are not expected to catch it in normal operation.
class DHCPPLATFORM_EXPORT InternalException : public std::runtime_error {
public:
    /// An exception whose what() is `message`.
    explicit InternalException(std::string_view message);
    ~InternalException() override;
};

}  // namespace Tyk
