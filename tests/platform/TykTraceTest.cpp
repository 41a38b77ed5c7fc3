#include "Tyk/Trace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace TykTest {

enum class Gear : Kcore::U16 { low = 1, high = 700 };

}  // namespace TykTest

template <>
struct Kcore::EnumTable<TykTest::Gear> {
    static constexpr std::string_view name = "Gear";
    static constexpr EnumMember<TykTest::Gear> members[] = {{TykTest::Gear::low, "low"}, {TykTest::Gear::high, "high"}};
};

namespace {

using TykTest::Gear;
using Texts = std::vector<std::string>;

/// Counts how often it is formatted.
struct Counting {
    int& formatted;
    void appendText(std::string& out) const {
        ++formatted;
        out.append("counted");
    }
};

class TykTrace : public testing::Test {
protected:
    TykTrace() {
        Tyk::traceSinkIs([this](const Tyk::TraceLine& l) {
            texts.emplace_back(l.text);
            places.push_back(std::string(l.handle) + ' ' + std::to_string(l.level) + ' ' +
                             std::string(l.file.substr(l.file.rfind('/') + 1)) + ':' + std::to_string(l.line) + ' ' +
                             std::string(l.function));
        });
        handle.levelIs(4);
        Tyk::RingTrace::levelIs(1);
        Tyk::RingTrace::clear();
    }
    ~TykTrace() override { Tyk::traceSinkIs({}); }

    static Texts kept() {
        Texts all;
        Tyk::RingTrace::visit([&](const auto& record) { all.emplace_back(record.text); });
        return all;
    }

    Tyk::TraceHandle handle{"TykTraceTest", false};
    Texts texts, places;
};

TEST_F(TykTrace, LevelsSelectOutputsAndALineIsFormattedAtMostOnce) {
    const struct {
        int handleLevel, ringLevel, level;
        bool inText, inRing;
    } rows[] = {{1, 1, 2, false, false}, {1, 0, 1, true, false}, {2, 4, 3, false, true}, {9, 9, 9, true, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.level);
        texts.clear();
        Tyk::RingTrace::clear();
        handle.levelIs(row.handleLevel);
        Tyk::RingTrace::levelIs(row.ringLevel);
        int text = 0, dual = 0, helper = 0;
        Tyk::fmtrace(handle, row.level, {}, "text {}", Counting{text});
        Tyk::DualTrace(handle, row.level, {}, "dual {}", Counting{dual});
        Tyk::TraceHelper(handle, row.level).stream() << "helper " << Counting{helper};
        EXPECT_TRUE(text == row.inText && dual == (row.inText || row.inRing) && helper == row.inText);
        EXPECT_EQ(texts, row.inText ? Texts({"text counted", "dual counted", "helper counted"}) : Texts());
        EXPECT_EQ(kept(), row.inRing ? Texts({"dual counted"}) : Texts());
    }
}

TEST_F(TykTrace, ALineContainsItsSourceLineAndArguments) {
    const auto helper = [&](Tyk::TraceText<int> text) { Tyk::fmtrace(handle, 4, {nullptr, text.caller()}, text, 1); };
    const auto at = [line = __LINE__](int n) { return "TykTraceTest.cpp:" + std::to_string(line + n); };
    Tyk::fmtrace(handle, 4, {}, "<{}> {}, {}{{{}", std::string("{} \0", 4), Gear::high, static_cast<Gear>(7), true);
    Tyk::DualTrace(handle, 1, {"bool DhcpLib::f(const Ptr&, U32)"}, "given");
    Tyk::TraceHelper(handle, 2, "g").stream() << 1 << " of " << 2;
    helper("a {}");  // names the line and the function that called it
    EXPECT_EQ(places, (Texts{"TykTraceTest 4 " + at(1) + " TestBody",
                             "TykTraceTest 1 " + at(2) + " bool DhcpLib::f(const Ptr&, U32)",
                             "TykTraceTest 2 " + at(3) + " g", "TykTraceTest 4 " + at(4) + " TestBody"}));
    EXPECT_EQ(texts, (Texts{std::string("<{} \0> high, 7{{true", 20), "given", "1 of 2", "a 1"}));
}

TEST_F(TykTrace, LinesWithoutASinkGoToStderrQuoted) {
    const Tyk::TraceHandle stamped("TykTraceTest", true);
    const std::string hostile("a\x1b[2J\n\x9b\x7f\xc3\xa9\\x\0~ ", 15);
    const std::string shown = " f(): \"name a\\x1b[2J\\x0a\\x9b\\x7f\\xc3\\xa9\\\\x\\x00~ \"\n";
    const auto printed = [&](const Tyk::TraceHandle& to) {
        testing::internal::CaptureStderr();
        Tyk::fmtrace(to, 2, {"f()"}, "name {}", hostile);
        return testing::internal::GetCapturedStderr();
    };
    Tyk::traceSinkIs({});
    EXPECT_TRUE(printed(handle).starts_with("TykTraceTest 2 "));
    EXPECT_EQ(printed(stamped).find(" TykTraceTest 2 "), std::string_view("23:59:59.999999").size());
    Tyk::traceSinkIs([](const Tyk::TraceLine&) { throw std::runtime_error("disk full"); });
    EXPECT_TRUE(printed(handle).ends_with(shown));
}

TEST_F(TykTrace, InstallingASinkWaitsForCallsOfAllReplacedOnes) {
    std::atomic<bool> firstCalled = false, secondCalled = false, secondEnded = false;
    const auto trace = [&] { Tyk::fmtrace(handle, 1, {"f()"}, "line"); };
    Tyk::traceSinkIs([&](const Tyk::TraceLine&) {
        if (firstCalled.exchange(true)) return;
        while (!secondCalled) std::this_thread::yield();
        Tyk::traceSinkIs({});  // replaces the second sink, not itself
    });
    std::thread first(trace);
    while (!firstCalled) std::this_thread::yield();
    std::thread second([&] {
        while (!secondCalled) trace();
    });
    Tyk::traceSinkIs([&](const Tyk::TraceLine&) {
        if (secondCalled.exchange(true)) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        secondEnded = true;
    });
    EXPECT_TRUE(secondEnded);
    first.join();
    second.join();
}

TEST(TykTraceHandle, SharesItsLevelByNameAndReadsItFromTheEnvironment) {
    for (const auto& [text, level] : std::map<const char*, int>{{"10", 10}, {"", 0}, {"4x", 0}, {"-2", 0}}) {
        setenv("DHCPLIB_TRACE", text, 1);
        EXPECT_EQ(Tyk::TraceHandle(std::string("environment ") + text, false).level(), level) << text;
    }
    unsetenv("DHCPLIB_TRACE");
    Tyk::TraceHandle one("shared", false);
    EXPECT_EQ(one.level(), 0);
    Tyk::TraceHandle("shared", true).levelIs(3);
    EXPECT_TRUE(one.wanted(3) && !one.wanted(4) && !Tyk::TraceHandle("shared ", false).wanted(1));
}

TEST_F(TykTrace, TheRingKeepsTheNewestMessagesAndCutsThem) {
    handle.levelIs(0);
    for (int i = 0; i < 515; ++i) Tyk::DualTrace(handle, 1, {}, "{}", i);
    auto all = kept();
    ASSERT_EQ(all.size(), 512u);
    for (std::size_t i = 0; i < all.size(); ++i) EXPECT_EQ(all[i], std::to_string(i + 3));

    Tyk::RingTrace::clear();
    for (const std::size_t size : {224u, 225u, 70000u}) Tyk::DualTrace(handle, 1, {}, "{}", std::string(size, 'x'));
    EXPECT_EQ(kept(), Texts(3, std::string(224, 'x')));

    Tyk::RingTrace::clear();
    Tyk::DualTrace(handle, 1, {}, "one\n");
    std::ostringstream out;
    Tyk::RingTrace::dump(out);
    EXPECT_TRUE(out.str().ends_with(" TykTraceTest 1 \"one\\x0a\"\n")) << out.str();
}

}  // namespace
