// The order of a file browser, and the locale it takes from the environment.
#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/natural_order.h"
#include "support/user_locale.h"

namespace morvane {
namespace {

using std::string;

// One of the process's locale variables, put back at the end.
class Variable {
public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name)) {
            before_ = before;
            wasSet_ = true;
        }
        if (value != nullptr)
            ::setenv(name, value, 1);
        else
            ::unsetenv(name);
    }
    ~Variable() {
        if (wasSet_)
            ::setenv(name_, before_.c_str(), 1);
        else
            ::unsetenv(name_);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* name_;
    string before_;
    bool wasSet_ = false;
};

string localeOf(const char* all, const char* collate, const char* lang) {
    const Variable a("LC_ALL", all);
    const Variable b("LC_COLLATE", collate);
    const Variable c("LANG", lang);
    return userLocale("LC_COLLATE");
}

TEST(UserLocale, TakesTheFirstThatIsNamed) {
    EXPECT_EQ(localeOf("de_DE.UTF-8", "fr_FR", "sv_SE"), "de_DE");
    EXPECT_EQ(localeOf("", "fr_FR.ISO-8859-1@euro", "sv_SE"), "fr_FR");
    EXPECT_EQ(localeOf(nullptr, nullptr, "sv_SE@x"), "sv_SE");
}

TEST(UserLocale, IsChineseWhereNoneIsNamed) {
    EXPECT_EQ(localeOf(nullptr, nullptr, nullptr), "zh_CN");
    EXPECT_EQ(localeOf("C.UTF-8", "fr_FR", "fr_FR"), "zh_CN");
    EXPECT_EQ(localeOf("C", nullptr, nullptr), "zh_CN");
    EXPECT_EQ(localeOf(nullptr, "POSIX", "fr_FR"), "zh_CN");
    EXPECT_EQ(localeOf(nullptr, nullptr, ".UTF-8"), "zh_CN");
}

std::vector<string> sorted(const std::vector<string>& names) {
    const std::vector<std::string_view> views(names.begin(), names.end());
    std::vector<string> result;
    for (const std::uint32_t index : naturalOrder(views))
        result.push_back(names[index]);
    return result;
}

TEST(NaturalOrder, NumbersByValueAndCaseAside) {
    EXPECT_EQ(sorted({"clip10.mov", "Clip2.mov", "clip1.mov", "CLIP3.mov"}),
              (std::vector<string>{"clip1.mov", "Clip2.mov", "CLIP3.mov", "clip10.mov"}));
    EXPECT_EQ(sorted({"a1000000000000000000001", "a1000000000000000000000", "a2"}),
              (std::vector<string>{"a2", "a1000000000000000000000", "a1000000000000000000001"}));
    EXPECT_EQ(sorted({"镜头12", "镜头2"}), (std::vector<string>{"镜头2", "镜头12"}));
}

TEST(NaturalOrder, NamesThatDifferInCaseOrLeadingZerosAreEqualAndKeepTheirPlaces) {
    EXPECT_EQ(compareNaturally("A.mov", "a.MOV"), 0);
    EXPECT_EQ(compareNaturally("a01", "a1"), 0);
    EXPECT_NE(compareNaturally("e", "é"), 0);
    EXPECT_EQ(sorted({"b", "A", "a", "B", "a"}), (std::vector<string>{"A", "a", "a", "b", "B"}));
    EXPECT_EQ(naturalOrder({"x", "X", "x", "X"}), (std::vector<std::uint32_t>{0, 1, 2, 3}));
}

TEST(NaturalOrder, AcceptsWhatIsNoName) {
    EXPECT_TRUE(naturalOrder({}).empty());
    EXPECT_EQ(naturalOrder({"one"}), std::vector<std::uint32_t>{0});
    EXPECT_EQ(naturalOrder({"a", ""}), (std::vector<std::uint32_t>{1, 0}));
    EXPECT_EQ(compareNaturally("", ""), 0);
    EXPECT_EQ(compareNaturally("\xFF", "\xFE"), 0);  // both a replacement character
    const string longName(100'000, 'x');
    EXPECT_GT(compareNaturally(longName + "2", longName + "1"), 0);
    EXPECT_EQ(sorted({longName + "10", longName + "9"}),
              (std::vector<string>{longName + "9", longName + "10"}));
}

std::vector<string> manyNames(std::size_t count) {
    const std::vector<string> pieces{"IMG_",    "img_", "空镜", "航拍 ", "A",    "a",    "é",
                                     "e\u0301", "ﾊﾟ",   "パ",   "12",    "012",  "9",    "10000",
                                     "_",       "-",    " ",    ".MOV",  ".mov", "\xFF", "👩‍👩‍👧",
                                     "한"};
    std::mt19937 random(7);  // NOLINT: the same names in every run
    std::vector<string> names(count);
    for (string& name : names) {
        for (auto length = random() % 6; length > 0; --length)
            name += pieces[random() % pieces.size()];
    }
    return names;
}

// Both below and above the size from which two threads share the work.
TEST(NaturalOrder, IsTheStableOrderOfTheComparison) {
    for (const std::size_t count : {std::size_t{500}, std::size_t{9001}}) {
        const std::vector<string> names = manyNames(count);
        std::vector<std::uint32_t> expected(count);
        std::iota(expected.begin(), expected.end(), 0U);
        std::stable_sort(expected.begin(), expected.end(), [&names](std::uint32_t left, std::uint32_t right) {
            return compareNaturally(names[left], names[right]) < 0;
        });
        EXPECT_EQ(naturalOrder(std::vector<std::string_view>(names.begin(), names.end())), expected);
    }
}

TEST(NaturalOrder, ManyThreadsAtOnce) {
    const std::vector<string> names = manyNames(5000);
    const std::vector<std::string_view> views(names.begin(), names.end());
    const std::vector<std::uint32_t> expected = naturalOrder(views);
    std::vector<std::vector<std::uint32_t>> results(3);
    std::vector<std::thread> threads;
    for (auto& result : results)
        threads.emplace_back([&] { result = naturalOrder(views); });
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& result : results)
        EXPECT_EQ(result, expected);
}

// The environment is read once a process, so each of these runs in a process of its own.
class OrderOfLocale : public testing::Test {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    [[noreturn]] static void exitTelling(const char* locale, const char* first, const char* second) {
        ::setenv("LC_ALL", locale, 1);
        std::exit(compareNaturally(first, second) < 0 ? 0 : 1);
    }
};

TEST_F(OrderOfLocale, PinyinWhereTheEnvironmentNamesNone) {
    EXPECT_EXIT(exitTelling("C.UTF-8", "阿", "北"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitTelling("C.UTF-8", "航", "空"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitTelling("C.UTF-8", "空", "abc"), testing::ExitedWithCode(0), "");
}

TEST_F(OrderOfLocale, TheRulesOfTheNamedLanguage) {
    EXPECT_EXIT(exitTelling("sv_SE.UTF-8", "z", "ö"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitTelling("de_DE.UTF-8", "ö", "z"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitTelling("xx_NOWHERE", "a2", "A10"), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace morvane
