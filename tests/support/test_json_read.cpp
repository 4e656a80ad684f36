// Strict reading of JSON records.
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/json_read.h"

namespace morvane {
namespace {

using testing::HasSubstr;

TEST(JsonRead, ReadsEveryType) {
    const auto record =
        parseJson(R"({"t":"文","f":true,"i":-3,"w":2.0,"n":1.5,"a":["x",""],"o":{},"z":null})");
    EXPECT_EQ(requiredText(record, "t"), "文");
    EXPECT_TRUE(requiredFlag(record, "f"));
    EXPECT_EQ(requiredInteger(record, "i"), -3);
    EXPECT_EQ(requiredInteger(record, "w"), 2);
    EXPECT_EQ(requiredNumber(record, "n"), 1.5);
    EXPECT_EQ(requiredNumber(record, "i"), -3.0);
    EXPECT_EQ(requiredTexts(record, "a"), (std::vector<std::string>{"x", ""}));
    EXPECT_EQ(requiredArray(record, "a").size(), 2U);
    EXPECT_TRUE(requiredObject(record.at("o")).empty());
    EXPECT_EQ(optionalText(record, "t"), "文");
    EXPECT_EQ(optionalFlag(record, "f"), true);
    EXPECT_FALSE(optionalText(record, "z").has_value());
    EXPECT_FALSE(optionalFlag(record, "z").has_value());
    EXPECT_FALSE(optionalText(record, "missing").has_value());
    EXPECT_FALSE(optionalFlag(record, "missing").has_value());
}

TEST(JsonRead, NamesTheKeyThatFails) {
    const auto record = parseJson(R"({"t":"x","f":1,"n":null,"a":{},"mixed":["x",1]})");
    const auto fails = [](const auto& read, const char* key) {
        try {
            read();
        } catch (const JsonError& error) {
            EXPECT_THAT(error.what(), HasSubstr(key));
            return true;
        }
        return false;
    };
    EXPECT_TRUE(fails([&] { return requiredText(record, "gone"); }, "gone"));
    EXPECT_TRUE(fails([&] { return requiredText(record, "n"); }, "（n）"));
    EXPECT_TRUE(fails([&] { return requiredFlag(record, "f"); }, "（f）"));
    EXPECT_TRUE(fails([&] { return requiredInteger(record, "t"); }, "（t）"));
    EXPECT_TRUE(fails([&] { return requiredNumber(record, "t"); }, "（t）"));
    EXPECT_TRUE(fails([&] { return requiredArray(record, "a").size(); }, "（a）"));
    EXPECT_TRUE(fails([&] { return requiredTexts(record, "mixed"); }, "mixed"));
    EXPECT_TRUE(fails([&] { return optionalText(record, "f"); }, "（f）"));
    EXPECT_TRUE(fails([&] { return optionalFlag(record, "t"); }, "（t）"));
    EXPECT_THROW(requiredText(parseJson("[]"), "t"), JsonError);
    EXPECT_THROW(optionalText(parseJson("3"), "t"), JsonError);
    EXPECT_THROW(requiredObject(parseJson("\"x\"")), JsonError);
}

TEST(JsonRead, IntegersKeepTheirRange) {
    const auto integer = [](const std::string& text) {
        return requiredInteger(parseJson("{\"i\":" + text + "}"), "i");
    };
    EXPECT_EQ(integer("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(integer("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(integer("1e3"), 1000);
    EXPECT_EQ(integer("-0.0"), 0);
    for (const char* text : {"9223372036854775808", "18446744073709551616", "1e300", "0.5", "-1e19"})
        EXPECT_THROW(integer(text), JsonError) << text;
    // 2^63 is the first that does not fit, -2^63 the last that does.
    EXPECT_THROW(integer("9223372036854775808.0"), JsonError);
    EXPECT_EQ(integer("-9223372036854775808.0"), std::numeric_limits<std::int64_t>::min());
}

TEST(JsonRead, RefusesWhatIsNoDocument) {
    for (const char* text :
         {"", " ", "{", "{}x", "{'a':1}", "[1,]", "nul", "NaN", "\"\xFF\"", "\"\xED\xA0\x80\"", "// c\n{}"})
        EXPECT_THROW(parseJson(text), JsonError) << text;
    EXPECT_TRUE(parseJson("\xEF\xBB\xBF{}").is_object());  // a byte-order mark is let through
}

TEST(JsonRead, SurvivesDeepNesting) {
    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    EXPECT_TRUE(parseJson(deep).is_array());
}

}  // namespace
}  // namespace morvane
