#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Tyk/Trace.h"

namespace {

thread_local std::size_t allocations = 0;

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
    ++allocations;
    if (void* block = std::malloc(size)) return block;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace TykTest {

enum class Gear : Kcore::U8 { low = 1, high = 2 };
enum class Valve : Kcore::U16 { open = 700 };

}  // namespace TykTest

template <>
struct Kcore::EnumTable<TykTest::Gear> {
    static constexpr std::string_view name = "Gear";
    static constexpr EnumMember<TykTest::Gear> members[] = {{TykTest::Gear::low, "low"}, {TykTest::Gear::high, "high"}};
};
template <>
struct Kcore::EnumTable<TykTest::Valve> {
    static constexpr std::string_view name = "Valve";
    static constexpr EnumMember<TykTest::Valve> members[] = {{TykTest::Valve::open, "open"}};
};

namespace {

using TykTest::Gear;

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
    struct Line {
        std::string handle, file, function, text;
        int level;
        unsigned line;
    };

    TykTrace() {
        Tyk::traceSinkIs([this](const Tyk::TraceLine& l) {
            lines.push_back({std::string(l.handle), std::string(l.file), std::string(l.function), std::string(l.text),
                             l.level, l.line});
        });
        handle.levelIs(4);
        Tyk::RingTrace::levelIs(1);
        Tyk::RingTrace::clear();
    }
    ~TykTrace() override { Tyk::traceSinkIs({}); }

    std::vector<std::string> texts() const {
        std::vector<std::string> all;
        for (const Line& line : lines) all.push_back(line.text);
        return all;
    }
    static std::vector<std::string> kept() {
        std::vector<std::string> all;
        Tyk::RingTrace::visit([&](const auto& record) { all.emplace_back(record.text); });
        return all;
    }

    Tyk::TraceHandle handle{"TykTraceTest", false};
    std::vector<Line> lines;
};

TEST_F(TykTrace, LevelsDecideWhereALineGoesAndThatItIsFormattedAtMostOnce) {
    struct Row {
        int handleLevel, ringLevel, level;
        bool inText, inRing;
    };
    for (const Row& row : {Row{0, 0, 1, false, false}, Row{-1, 0, 1, false, false}, Row{1, 0, 1, true, false},
                           Row{1, 1, 2, false, false}, Row{0, 1, 1, false, true}, Row{4, 1, 4, true, false},
                           Row{2, 4, 3, false, true}, Row{9, 9, 9, true, true}}) {
        SCOPED_TRACE(testing::Message() << row.handleLevel << ' ' << row.ringLevel << ' ' << row.level);
        lines.clear();
        Tyk::RingTrace::clear();
        handle.levelIs(row.handleLevel);
        Tyk::RingTrace::levelIs(row.ringLevel);
        int text = 0, dual = 0, helper = 0;
        Tyk::fmtrace(handle, row.level, {}, "text {}", Counting{text});
        Tyk::DualTrace(handle, row.level, {}, "dual {}", Counting{dual});
        Tyk::TraceHelper(handle, row.level).stream() << "helper " << Counting{helper};
        EXPECT_EQ(text, row.inText);
        EXPECT_EQ(dual, row.inText || row.inRing);
        EXPECT_EQ(helper, row.inText);
        using Texts = std::vector<std::string>;
        EXPECT_EQ(texts(), row.inText ? Texts({"text counted", "dual counted", "helper counted"}) : Texts());
        EXPECT_EQ(kept(), row.inRing ? Texts({"dual counted"}) : Texts());
    }
}

TEST_F(TykTrace, ALineNamesItsPlace) {
    const auto fmtraceLine = __LINE__ + 1;
    Tyk::fmtrace(handle, 4, {}, "entry");
    Tyk::DualTrace(handle, 1, {"bool DhcpLib::f(const Ptr&, U32)"}, "given");
    Tyk::TraceHelper(handle, 2, "g").stream() << 1 << " of " << 2;
    ASSERT_EQ(lines.size(), 3u);
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_EQ(lines[i].handle, "TykTraceTest");
        EXPECT_TRUE(lines[i].file.ends_with("TykTraceTest.cpp")) << lines[i].file;
        EXPECT_EQ(lines[i].line, fmtraceLine + i);
    }
    EXPECT_EQ(lines[0].function, "TestBody");
    EXPECT_EQ(lines[1].function, "bool DhcpLib::f(const Ptr&, U32)");
    EXPECT_EQ(lines[2].function, "g");
    EXPECT_EQ(lines[2].text, "1 of 2");
    EXPECT_EQ(lines[0].level * 100 + lines[1].level * 10 + lines[2].level, 412);
}

TEST_F(TykTrace, ArgumentsTakeTheirPlaces) {
    const std::string hostile("{} \0", 4);
    const std::vector<int> several{1, 2};
    Tyk::fmtrace(handle, 4, {}, "{}{}{}", Kcore::U8{65}, -1, true);
    Tyk::fmtrace(handle, 4, {}, "<{}> {}", hostile, "literal");
    Tyk::fmtrace(handle, 4, {}, "{}, {}, {}.", Kcore::String("s"), Gear::high, static_cast<Gear>(7));
    Tyk::fmtrace(handle, 4, {}, "} {}{", several);
    EXPECT_EQ(texts(),
              (std::vector<std::string>{"65-1true", std::string("<{} \0> literal", 14), "s, high, 7.", "} [1, 2]{"}));
}

TEST_F(TykTrace, AnArgumentAndASinkMayTraceThemselves) {
    struct Chatty {
        const Tyk::TraceHandle& handle;
        void appendText(std::string& out) const {
            Tyk::fmtrace(handle, 4, {}, "inner {}", std::string(500, 'i'));
            out.append("chatty");
        }
    };
    Tyk::fmtrace(handle, 4, {}, "outer {} end", Chatty{handle});
    EXPECT_EQ(texts(), (std::vector<std::string>{"inner " + std::string(500, 'i'), "outer chatty end"}));

    std::string seen;
    Tyk::traceSinkIs([&](const Tyk::TraceLine& line) {
        Tyk::traceSinkIs([&](const Tyk::TraceLine& nested) { seen.append(nested.text); });
        Tyk::fmtrace(handle, 4, {}, "nested ");
        seen.append(line.text);
    });
    Tyk::fmtrace(handle, 4, {}, "first");
    EXPECT_EQ(seen, "nested first");
}

TEST_F(TykTrace, StderrGetsWhatNoSinkTakesAndNeverRawBytes) {
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
    EXPECT_TRUE(printed(handle).ends_with(shown));
    EXPECT_EQ(printed(stamped).find(" TykTraceTest 2 "), std::string_view("23:59:59.999999").size());
    Tyk::traceSinkIs([](const Tyk::TraceLine&) { throw std::runtime_error("disk full"); });
    EXPECT_TRUE(printed(handle).ends_with(shown));
}

TEST(TykTraceHandle, SharesItsLevelByNameAndTakesTheFirstFromTheEnvironment) {
    struct Row {
        const char* text;
        int level;
    };
    for (const Row& row : {Row{"3", 3}, Row{"0", 0}, Row{"10", 10}, Row{"", 0}, Row{"4x", 0}, Row{" 4", 0},
                           Row{"-2", 0}, Row{"+2", 0}, Row{"verbose", 0}, Row{"99999999999999999999", 0}}) {
        setenv("DHCPLIB_TRACE", row.text, 1);
        EXPECT_EQ(Tyk::TraceHandle(std::string("environment ") + row.text, false).level(), row.level) << row.text;
    }
    unsetenv("DHCPLIB_TRACE");
    Tyk::TraceHandle one("shared", false);
    EXPECT_EQ(one.level(), 0);
    Tyk::TraceHandle("shared", true).levelIs(3);
    EXPECT_TRUE(one.wanted(3) && !one.wanted(4) && !Tyk::TraceHandle("shared ", false).wanted(1));
}

TEST_F(TykTrace, TheRingKeepsTheNewestMessagesCutsThemAndForgetsOnDemand) {
    handle.levelIs(0);
    for (int i = 0; i < 515; ++i) Tyk::DualTrace(handle, 1, {}, "{}", i);
    auto texts = kept();
    ASSERT_EQ(texts.size(), 512u);
    for (std::size_t i = 0; i < texts.size(); ++i) EXPECT_EQ(texts[i], std::to_string(i + 3));

    Tyk::RingTrace::clear();
    EXPECT_TRUE(kept().empty());
    for (const std::size_t size : {223u, 224u, 225u, 70000u})
        Tyk::DualTrace(handle, 1, {}, "{}", std::string(size, 'x'));
    texts = kept();
    ASSERT_EQ(texts.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(texts[i], std::string(i == 0 ? 223 : 224, 'x'));

    Tyk::RingTrace::clear();
    Tyk::DualTrace(handle, 1, {}, "one\n");
    Tyk::DualTrace(handle, 1, {}, "two");
    std::ostringstream out;
    Tyk::RingTrace::dump(out);
    const std::string dump = out.str();
    EXPECT_EQ(std::ranges::count(dump, '\n'), 2);
    EXPECT_LT(dump.find(" TykTraceTest 1 \"one\\x0a\"\n"), dump.find(" TykTraceTest 1 \"two\"\n"));
}

TEST_F(TykTrace, RecordingDoesNotAllocate) {
    handle.levelIs(0);
    const auto trace = [this] { Tyk::DualTrace(handle, 1, {}, "a text of more than fifteen bytes {}", Gear::low); };
    trace();
    const std::size_t before = allocations;
    for (int i = 0; i < 600; ++i) trace();
    EXPECT_EQ(allocations, before);
}

TEST_F(TykTrace, EnumerationsOfDualTracesRegisterOnce) {
    using TykTest::Valve;
    const auto valves = [] {
        std::vector<Tyk::RingTrace::Formatter> all = Tyk::RingTrace::formatters();
        std::erase_if(all, [](const auto& formatter) { return formatter.name != "Valve"; });
        return all;
    };
    Tyk::fmtrace(handle, 4, {}, "{}", Valve::open);
    EXPECT_TRUE(valves().empty());
    for (int i = 0; i < 2; ++i) Tyk::DualTrace(handle, 1, {}, "{} {}", Valve::open, Valve::open);
    Tyk::RingTrace::formatterIs({"Valve", [](std::string& out, Kcore::U64) { out.append("another library's"); }});
    ASSERT_EQ(valves().size(), 1u);
    std::string names;
    for (const Kcore::U64 value : {700u, 701u}) valves()[0].append(names, value);
    EXPECT_EQ(names, "open701");
}

TEST_F(TykTrace, ThreadsNeverTearAMessage) {
    handle.levelIs(0);
    std::vector<std::thread> writers;
    for (char c = 'a'; c < 'e'; ++c)
        writers.emplace_back([this, c] {
            for (int i = 0; i < 2000; ++i) Tyk::DualTrace(handle, 1, {}, "{}", std::string(200, c));
        });
    const auto whole = [](const std::string& text) { return text == std::string(200, text.front()); };
    for (int i = 0; i < 20; ++i) EXPECT_TRUE(std::ranges::all_of(kept(), whole));
    for (std::thread& writer : writers) writer.join();
    EXPECT_EQ(kept().size(), 512u);
    EXPECT_TRUE(std::ranges::all_of(kept(), whole));
}

}  // namespace
