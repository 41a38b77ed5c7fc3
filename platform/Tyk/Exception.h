#pragma once

#include <stdexcept>
#include <string_view>

#include "Kcore/Export.h"

namespace Tyk {

/// A view was asked for something that its bounds forbid. Callers are not expected to catch it in normal operation.
class DHCPPLATFORM_EXPORT InternalException : public std::runtime_error {
public:
    explicit InternalException(std::string_view message);
    ~InternalException() override;
};

}  // namespace Tyk
