#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "Kcore/Export.h"
#include "Kcore/SourceSite.h"

namespace Kcore {

/// The report of a broken internal invariant.
struct Assertion {
    std::string_view expression;  ///< text of the asserted expression
    std::string_view function;    ///< signature text of the function that asserts
    std::string_view module;      ///< source module, such as "DhcpLib/OptionParser"
    unsigned line;                ///< line that asserts
    /// "module:line: function: assertion 'expression' failed"
    DHCPPLATFORM_EXPORT std::string text() const;
};

/// For handlers that throw: `assertionHandlerIs([](const Assertion& a) { throw AssertionError(a); })`.
class DHCPPLATFORM_EXPORT AssertionError : public std::logic_error {
public:
    /// Keeps a copy of the expression.
    explicit AssertionError(const Assertion& assertion);
    ~AssertionError() override;
    /// Text of the asserted expression.
    const std::string& expression() const { return expression_; }

private:
    std::string expression_;
};

/// Receives a failed assertion. The texts are valid during the call.
using AssertionHandler = void (*)(const Assertion&);

/// Installs the function that is called when an assertion fails; null restores the default (one line on stderr, then
/// abort). If the handler returns, the process aborts. Returns the previous handler.
DHCPPLATFORM_EXPORT AssertionHandler assertionHandlerIs(AssertionHandler handler);

/// Reports a failed assertion. Returns only by an exception of the handler.
[[noreturn]] DHCPPLATFORM_EXPORT void assertionFailed(const Assertion& assertion);
/// As above, with the caller's line.
[[noreturn]] DHCPPLATFORM_EXPORT void assertionFailed(std::string_view expression, std::string_view function,
                                                      std::string_view module, SourceSite here = SourceSite::here());

}  // namespace Kcore
