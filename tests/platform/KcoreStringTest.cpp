#include <gtest/gtest.h>

#include "Kcore/Kcore.h"
#include "Refusal.h"

using namespace Kcore;

namespace {

constexpr std::size_t boundary = String::inlineCapacity;  // longer strings share their bytes

std::string letters(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i % 251);
    return bytes;
}

TEST(KcoreString, HoldsAnyBytesInlineOrShared) {
    const std::size_t sizes[] = {0, 1, 8, boundary - 1, boundary, boundary + 1, 255, 256, 65536};
    for (const std::size_t size : sizes) {
        SCOPED_TRACE(size);
        const std::string bytes = letters(size);
        const String made(bytes);
        EXPECT_EQ(made.view(), bytes);
        EXPECT_TRUE(made == String(bytes.data(), size) && made == bytes && made != bytes + "x");
        EXPECT_EQ(made.hash(), String(bytes).hash());
        EXPECT_NE(made.hash(), String(bytes + '\0').hash());
        EXPECT_EQ(refusalOf([&] { made.at(size); }), "Kcore::String::at beyond size() not allowed");
        EXPECT_EQ(refusalOf([&] { made.substr(size + 1); }), "Kcore::String::substr beyond size() not allowed");
        EXPECT_EQ(made.substrOrEmpty(size + 1), "");
        EXPECT_EQ(made.substrOrEmpty(0, size / 2) + made.substr(size / 2), made);
        for (const std::size_t other : sizes) {
            String assigned(letters(other));
            assigned = made;
            assigned = *&assigned;
            EXPECT_EQ(assigned, made);
            String moved(std::move(assigned));
            // NOLINTNEXTLINE(bugprone-use-after-move): a string that was moved from is empty
            EXPECT_TRUE(moved == made && assigned.empty());
            assigned = letters(other);
            EXPECT_EQ((moved + assigned).view(), bytes + letters(other));
            EXPECT_EQ(moved < assigned, bytes < letters(other));
            EXPECT_EQ(moved > assigned, bytes > letters(other));
        }
    }
}

}  // namespace
