#include "Kcore/Assert.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace Kcore {

namespace {

std::atomic<AssertionHandler> handlerInForce{nullptr};

}  // namespace

std::string Assertion::text() const {
    std::string out(module);
    out.append(":").append(std::to_string(line)).append(": ").append(function);
    out.append(": assertion '").append(expression).append("' failed");
    return out;
}

AssertionError::AssertionError(const Assertion& assertion)
    : std::logic_error(assertion.text()), expression_(assertion.expression) {}
AssertionError::~AssertionError() = default;

AssertionHandler assertionHandlerIs(AssertionHandler handler) { return handlerInForce.exchange(handler); }

void assertionFailed(const Assertion& assertion) {
    if (const AssertionHandler handler = handlerInForce.load())
        handler(assertion);
    else
        std::fprintf(stderr, "%s\n", assertion.text().c_str());
    std::abort();
}

void assertionFailed(std::string_view expression, std::string_view function, std::string_view module, SourceSite here) {
    assertionFailed({expression, function, module, here.line});
}

}  // namespace Kcore
