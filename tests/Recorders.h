#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "Kcore/Assert.h"
#include "Tyk/Exception.h"
#include "Tyk/Trace.h"

namespace DhcpTest {

/// Records the trace lines of some handles as "level text" while it exists.
class TraceRecorder {
public:
    explicit TraceRecorder(int level, std::vector<const char*> handles = {"DhcpLib"}) : handles_(std::move(handles)) {
        levelIs(level);
        Tyk::traceSinkIs([this](const Tyk::TraceLine& line) {
            if (std::count(handles_.begin(), handles_.end(), line.handle) != 0)
                lines_.push_back(std::to_string(line.level) + ' ' + std::string(line.text));
        });
    }
    ~TraceRecorder() {
        Tyk::traceSinkIs({});
        levelIs(0);
    }
    TraceRecorder(const TraceRecorder&) = delete;
    TraceRecorder& operator=(const TraceRecorder&) = delete;

    /// The lines since the previous call.
    std::vector<std::string> lines() { return std::exchange(lines_, {}); }

private:
    void levelIs(int level) const {
        for (const char* handle : handles_) Tyk::TraceHandle(handle, false).levelIs(level);
    }

    std::vector<const char*> handles_;
    std::vector<std::string> lines_;
};

/// "module|function|expression" of the assertion that fails in `act`; empty if none fails.
template <class Act>
std::string assertionOf(Act act) {
    static thread_local std::string failed;
    failed.clear();
    const auto before = Kcore::assertionHandlerIs([](const Kcore::Assertion& a) {
        failed = std::string(a.module) + '|' + std::string(a.function) + '|' + std::string(a.expression);
        throw Kcore::AssertionError(a);
    });
    try {
        act();
    } catch (const Kcore::AssertionError&) {
    }
    Kcore::assertionHandlerIs(before);
    return failed;
}

/// The message of the Tyk::InternalException that `act` throws; empty if it throws none.
template <class Act>
std::string internalErrorOf(Act act) {
    try {
        act();
    } catch (const Tyk::InternalException& e) {
        return e.what();
    }
    return {};
}

}  // namespace DhcpTest
