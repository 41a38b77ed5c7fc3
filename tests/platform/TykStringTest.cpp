#include <gtest/gtest.h>

#include <string>

#include "Kcore/Hash.h"
#include "Kcore/Text.h"
#include "Refusal.h"
#include "Tyk/Exception.h"
#include "Tyk/String.h"

namespace {

using Name = Tyk::BoundedString<100>;

TEST(TykBoundedString, RefusesOneByteTooManyAndKeepsWhatItHeld) {
    constexpr char refusal[] = "Tyk::String::bytes > maxLength() not allowed";
    EXPECT_EQ(Name::maxLength(), 100u);
    for (const std::size_t size : {0u, 30u, 31u, 99u, 100u, 101u, 256u, 65536u}) {
        const std::string bytes(size, '\0');
        const char* expected = size > 100 ? refusal : "";
        Name held("default");
        EXPECT_EQ(refusalOf([&] { held = bytes; }), expected) << size;
        EXPECT_EQ(held.view(), size > 100 ? "default" : bytes);
        EXPECT_EQ(refusalOf([&] { Name made{Tyk::String(bytes)}; }), expected) << size;
        EXPECT_EQ(refusalOf([&] { held = Tyk::BoundedString<65536>(bytes); }), expected) << size;
    }
    EXPECT_EQ(refusalOf([] { Tyk::BoundedString<0> none("x"); }), refusal);
}

TEST(TykBoundedString, ReadsLikeAString) {
    const Name vrf("management");
    const std::string_view asView = vrf;
    EXPECT_EQ(asView, "management");
    EXPECT_EQ(std::string(vrf.begin(), vrf.end()), "management");
    EXPECT_TRUE(vrf == "management" && vrf == Name("management") && vrf == Tyk::String("management"));
    EXPECT_TRUE(vrf != "Management" && vrf < Name("mgmt") && Name().empty());
    EXPECT_EQ(vrf[9], 't');
    EXPECT_EQ(vrf.find("age"), 3u);
    EXPECT_EQ(vrf.find('e', 6), 7u);
    EXPECT_EQ(vrf.substr(3, 3), "age");
    EXPECT_EQ(vrf.substrOrEmpty(11), "");
    EXPECT_NE(refusalOf([&] { vrf.at(10); }), "");
    EXPECT_EQ(Kcore::hashOf(vrf), Kcore::hashOf(Tyk::String("management")));
    EXPECT_EQ(Kcore::textOf(vrf), "management");
}

TEST(TykInternalException, CarriesItsMessage) {
    const std::string message("length value exceeds pkt-length.");
    try {
        throw Tyk::InternalException(std::string_view(message + "cut").substr(0, message.size()));
    } catch (const std::exception& e) {
        EXPECT_EQ(e.what(), message);
    }
}

}  // namespace
