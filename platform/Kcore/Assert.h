#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "Kcore/Export.h"
#include "Kcore/SourceSite.h"

namespace Kcore {

/// A broken internal invariant, as it is reported.
struct Assertion {
    std::string_view expression;  ///< text of the asserted expression
    std::string_view function;    ///< signature text of the function that asserts
    std::string_view module;      ///< source module, such as "DhcpLib/OptionParser"
    unsigned line;
    /// "module:line: function: assertion 'expression' failed"
    DHCPPLATFORM_EXPORT std::string text() const;
};

/// What a throwing handler raises: `assertionHandlerIs([](const Assertion& a) { throw AssertionError(a); })`.
class DHCPPLATFORM_EXPORT AssertionError : public std::logic_error {
public:
    explicit AssertionError(const Assertion& assertion);
    ~AssertionError() override;
    const std::string& expression() const { return expression_; }

private:
    std::string expression_;
};

using AssertionHandler = void (*)(const Assertion&);

/// Installs what is called when an assertion fails; null restores the default (one line on stderr, then abort).
/// A handler that returns aborts the process all the same. Returns the handler that was in force.
DHCPPLATFORM_EXPORT AssertionHandler assertionHandlerIs(AssertionHandler handler);

/// Reports a failed assertion; leaves only through an exception of the handler.
[[noreturn]] DHCPPLATFORM_EXPORT void assertionFailed(const Assertion& assertion);
/// The line of the report is the caller's.
[[noreturn]] DHCPPLATFORM_EXPORT void assertionFailed(std::string_view expression, std::string_view function,
                                                      std::string_view module, SourceSite here = SourceSite::here());

}  // namespace Kcore
