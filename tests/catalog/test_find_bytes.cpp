#include "catalog/find_bytes.h"

#include <memory>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(FindBytes, FindsTheFirstPlaceAtOrAfter) {
    const std::string block = std::string(100, '.') + "needle" + std::string(100, '.') + "needle";
    EXPECT_EQ(findBytes(block, "needle", 0), 100U);
    EXPECT_EQ(findBytes(block, "needle", 100), 100U);
    EXPECT_EQ(findBytes(block, "needle", 101), 206U);
    EXPECT_EQ(findBytes(block, "needle", 207), std::string::npos);
    EXPECT_EQ(findBytes(block, "needles", 0), std::string::npos);
    EXPECT_EQ(findBytes("ab", "abc", 0), std::string::npos);
    EXPECT_EQ(findBytes("", "a", 0), std::string::npos);
    EXPECT_EQ(findBytes("a", "a", 1), std::string::npos);
    EXPECT_EQ(findBytes("a", "a", 5), std::string::npos);
}

TEST(FindBytes, NeverReadsBeyondTheBlock) {
    // Blocks of their own, exactly as long as their text: a sanitizer sees a byte too many.
    for (std::size_t size = 1; size < 300; ++size) {
        const auto block = std::make_unique<char[]>(size);
        std::fill_n(block.get(), size, 'a');
        block[size - 1] = 'b';
        const std::string_view text(block.get(), size);
        EXPECT_EQ(findBytes(text, "b", 0), size - 1);
        EXPECT_EQ(findBytes(text, "c", 0), std::string_view::npos);
        if (size > 1) {
            EXPECT_EQ(findBytes(text, "ab", 0), size - 2);
        }
    }
}

TEST(FindBytes, AgreesWithTheLibraryEverywhere) {
    std::mt19937 chance(7);
    for (int round = 0; round < 20000; ++round) {
        std::string block(chance() % 400, ' ');
        for (char& byte : block)
            byte = "ab\xE9\0"[chance() % 4];
        std::string word(chance() % 5 + 1, ' ');
        for (char& byte : word)
            byte = "ab\xE9\0"[chance() % 4];
        const std::size_t from = chance() % 420;
        ASSERT_EQ(findBytes(block, word, from), std::string_view(block).find(word, from)) << round;
    }
}

}  // namespace
}  // namespace morvane
