#include <gtest/gtest.h>

#include <string>

#include "Refusal.h"
#include "Tyk/String.h"

namespace {

using Name = Tyk::BoundedString<100>;

TEST(TykBoundedString, RefusesTooManyBytesAndStaysUnchanged) {
    for (const std::size_t size : {0u, 100u, 101u, 256u, 65536u}) {
        const std::string bytes(size, '\0');
        const char* expected = size > 100 ? "Tyk::String::bytes > maxLength() not allowed" : "";
        Name held("default");
        EXPECT_EQ(refusalOf([&] { held = bytes; }), expected) << size;
        EXPECT_EQ(held.view(), size > 100 ? "default" : bytes);
        EXPECT_EQ(refusalOf([&] { Name made{Tyk::String(bytes)}; }), expected) << size;
        EXPECT_EQ(refusalOf([&] { held = Tyk::BoundedString<65536>(bytes); }), expected) << size;
    }
}

TEST(TykBoundedString, ConcatenatesAndConvertsToString) {
    const Name name("red");
    const Tyk::String converted = name;
    EXPECT_EQ(converted, "red");
    EXPECT_EQ(name + "-" + name + Tyk::BoundedString<4>("blue") + Tyk::String("!"), "red-redblue!");
    EXPECT_EQ(std::string(99, 'v') + name, std::string(99, 'v') + "red");
}

}  // namespace
