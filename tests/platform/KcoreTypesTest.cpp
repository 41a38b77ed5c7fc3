#include <gtest/gtest.h>

#include <sstream>

#include "Emulation.h"
#include "Kcore/Kcore.h"
#include "Refusal.h"

namespace KcoreTest {

enum class Gear : Kcore::U8 { low = 1, lower = 2, highest = 255 };

}  // namespace KcoreTest

template <>
struct Kcore::EnumTable<KcoreTest::Gear> {
    using enum KcoreTest::Gear;
    static constexpr std::string_view name = "Gear";
    static constexpr EnumMember<KcoreTest::Gear> members[] = {{low, "low"}, {lower, "lower"}, {highest, "highest"}};
};

using namespace Kcore;
using KcoreTest::Gear;

namespace {

TEST(KcoreEnum, IsPrintedAndParsedByItsTable) {
    std::ostringstream out;
    out << Gear::low << ' ' << static_cast<Gear>(7) << ' ' << stringValue(Gear::highest);
    EXPECT_EQ(out.str(), "low 7 highest");
    EXPECT_EQ(enumInstance<Gear>(255), Gear::highest);
    EXPECT_EQ(enumInstance<Gear>(String("lower")), Gear::lower);
    EXPECT_EQ(refusalOf([] { enumInstance<Gear>(257); }), "Gear has no member 257");  // not 1, its low byte
    EXPECT_EQ(refusalOf([] { enumInstance<Gear>(String("l\x1bo")); }), R"(Gear has no member "l\x1bo")");
    const struct {
        const char* text;
        const char* rest;  // null: the text is refused
        Gear value;
    } rows[] = {{"lower", "", Gear::lower}, {"low,x", ",x", Gear::low}, {"lowest", nullptr, {}},
                {"lo", nullptr, {}},        {"", nullptr, {}},          {"1", nullptr, {}}};
    for (const auto& row : rows) {
        CharRange range(row.text);
        Gear gear = Gear::highest;
        EXPECT_EQ(sequenceToValue(range, &gear), row.rest != nullptr) << row.text;
        EXPECT_EQ(range.rest(), row.rest != nullptr ? row.rest : row.text);
        EXPECT_EQ(gear, row.rest != nullptr ? row.value : Gear::highest);
    }
}

struct Inner {
    U16 port = 0;
    Gear gear = Gear::low;
    friend bool operator==(const Inner& a, const Inner& b) { return equalAttributes(a, b); }
    std::size_t hash() const { return hashAttributes(*this); }
    static constexpr auto declaration() {
        return declare("Inner", attribute("port", &Inner::port), attribute("gear", &Inner::gear));
    }
};
struct Outer {
    bool on = false;
    String name;
    Inner inner;
    std::int32_t delta = 0;
    friend bool operator==(const Outer& a, const Outer& b) { return equalAttributes(a, b); }
    std::size_t hash() const { return hashAttributes(*this); }
    static constexpr auto declaration() {
        return declare("Outer", attribute("on", &Outer::on), attribute("name", &Outer::name),
                       attribute("inner", &Outer::inner), attribute("delta", &Outer::delta));
    }
};

const Outer whole{true, String("q\"\\,}\n\0\xff", 8), {65535, Gear::highest}, -7};
constexpr std::string_view wholeText =
    R"(Outer{on=true,name="q\"\\,}\x0a\x00\xff",inner=Inner{port=65535,gear=highest},delta=-7})";

TEST(KcoreDeclaration, YieldsEqualityAndHash) {
    EXPECT_EQ(hashOf(whole), hashOf(Outer(whole)));
    for (const Outer& other :
         {Outer{false, whole.name, whole.inner, -7}, Outer{true, "q", whole.inner, -7},
          Outer{true, whole.name, {65534, Gear::highest}, -7}, Outer{true, whole.name, {65535, Gear::low}, -7},
          Outer{true, whole.name, whole.inner, 7}}) {
        EXPECT_FALSE(other == whole);
        EXPECT_NE(hashOf(other), hashOf(whole));
    }
}

TEST(KcoreDeclaration, EncodedTextIsDecoded) {
    EXPECT_EQ(encoded(whole), wholeText);
    CharRange range(wholeText);
    Outer read;
    EXPECT_TRUE(sequenceToValue(range, &read) && read == whole && range.empty());
    CharRange followed("Inner{port=1,gear=low},next");
    ASSERT_TRUE(sequenceToValue(followed, &read.inner));
    EXPECT_EQ(followed.rest(), ",next");
}

TEST(KcoreDeclaration, OtherTextIsRefusedAndChangesNothing) {
    const auto refused = [](std::string_view text) {
        CharRange range(text);
        Outer read = whole;
        EXPECT_FALSE(sequenceToValue(range, &read)) << text;
        EXPECT_TRUE(read == whole && range.rest() == text) << text;
    };
    for (std::size_t size = 0; size < wholeText.size(); ++size) refused(wholeText.substr(0, size));
    const std::string_view tail = ",inner=Inner{port=1,gear=low},delta=1}";
    for (const char* head : {R"(outer{on=true,name="")", R"(Outer{on=1,name="")", R"(Outer{name="",on=true)",
                             R"(Outer{on=true,name="\y")", R"(Outer{on=true,name="\xfF")"})
        refused(std::string(head).append(tail));
    refused("Outer{on=true,name=\"\",inner=Inner{port=65536,gear=low},delta=1}");
}

TEST(KcoreText, EachKindOfValueHasOneForm) {
    FlatMap<int, const char*> map;
    map.insert(2, "b");
    map.insert(1, "a");
    const int* const none = nullptr;
    EXPECT_EQ(textOf(map) + textOf(U8{200}) + textOf('c') + textOf(Duration(-5)) + textOf(none) + textOf(true),
              "[2:b, 1:a]200c-5nulltrue");
}

constexpr Assertion broken{"a >= 0", "void f()", "DhcpLib/Module", 12};

TEST(KcoreAssertion, AHandlerMayThrow) {
    assertionHandlerIs([](const Assertion& a) { throw AssertionError(a); });
    try {
        assertionFailed(broken);
    } catch (const AssertionError& e) {
        EXPECT_STREQ(e.what(), "DhcpLib/Module:12: void f(): assertion 'a >= 0' failed");
        EXPECT_EQ(e.what(), broken.text());
    }
    EXPECT_NE(assertionHandlerIs(nullptr), nullptr);
}

TEST(KcoreAssertionDeathTest, AbortsWithoutAHandlerOrIfTheHandlerReturns) {
    if (DhcpTest::emulated) GTEST_SKIP() << "the program starts itself";
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(assertionFailed(broken), testing::KilledBySignal(SIGABRT),
                "^DhcpLib/Module:12: void f\\(\\): assertion 'a >= 0' failed\n$");
    EXPECT_EXIT(
        {
            assertionHandlerIs([](const Assertion&) { std::fputs("handled", stderr); });
            assertionFailed(broken);
        },
        testing::KilledBySignal(SIGABRT), "^handled$");
}

}  // namespace
