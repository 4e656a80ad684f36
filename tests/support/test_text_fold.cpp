// Search folding and the Unicode helpers.
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "support/text_fold.h"

namespace morvane {
namespace {

using std::string;

string utf8(UChar32 codePoint) {
    string text;
    icu::UnicodeString(codePoint).toUTF8String(text);
    return text;
}

string normalized(const string& text, const icu::Normalizer2* (*form)(UErrorCode&)) {
    UErrorCode status = U_ZERO_ERROR;
    string result;
    form(status)->normalize(icu::UnicodeString::fromUTF8(text), status).toUTF8String(result);
    EXPECT_TRUE(U_SUCCESS(status));
    return result;
}

string nfc(const string& text) {
    return normalized(text, &icu::Normalizer2::getNFCInstance);
}
string nfd(const string& text) {
    return normalized(text, &icu::Normalizer2::getNFDInstance);
}

struct FoldCase {
    string text;
    string expected;
};

void PrintTo(const FoldCase& value, std::ostream* out) {
    *out << value.text;
}

class Folding : public testing::TestWithParam<FoldCase> {};

TEST_P(Folding, GivesTheSearchKey) {
    const FoldCase& given = GetParam();
    EXPECT_EQ(fold(given.text), given.expected);
    EXPECT_EQ(fold(nfc(given.text)), given.expected);
    EXPECT_EQ(fold(nfd(given.text)), given.expected);
    EXPECT_EQ(fold(fold(given.text)), given.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Folding,
    testing::Values(FoldCase{"", ""}, FoldCase{"A001_C002.MOV", "a001_c002.mov"},
                    FoldCase{"空镜 航拍.MP4", "空镜 航拍.mp4"},
                    FoldCase{"Élan Über naïve", "elan uber naive"}, FoldCase{"İstanbul ıI", "istanbul ıi"},
                    FoldCase{"Straße ẞ", "strasse ss"}, FoldCase{"Ångström Å", "angstrom a"},
                    FoldCase{"ΣΊΣΥΦΟΣς", "σισυφοσσ"}, FoldCase{"ѣЙё", "ѣие"},
                    FoldCase{"Việt Nam ĐẶNG", "viet nam đang"},
                    // Width in both directions, the ideographic space, signs.
                    FoldCase{"ＡＢＣ　１２３！", "abc 123!"}, FoldCase{"￥￦￠", "¥₩¢"},
                    FoldCase{"ｶﾒﾗ", "カメラ"}, FoldCase{"ﾊﾟﾝ", "ハン"}, FoldCase{"パン", "ハン"},
                    FoldCase{"ガ", "カ"}, FoldCase{"ｶﾞ", "カ"}, FoldCase{"が", "か"},
                    // Hangul stays whole, whichever way it is written.
                    FoldCase{"한글 각", "한글 각"}, FoldCase{"\u1112\u1161\u11AB", "한"},
                    FoldCase{"\uFFBE\uFFC2", "ㅎㅏ"},
                    // Points and accents go, dependent vowels stay.
                    FoldCase{"שָׁלוֹם", "שלום"}, FoldCase{"مُحَمَّد", "محمد"}, FoldCase{"कि की", "कि की"},
                    FoldCase{"ก้ำ", "กำ"}, FoldCase{"কো", "কো"},
                    // Emoji: the variation selector goes, joined ones stay joined.
                    FoldCase{"❤️", "❤"}, FoldCase{"👩‍👩‍👧.PNG", "👩‍👩‍👧.png"},
                    FoldCase{"🇨🇳", "🇨🇳"},
                    // A canonical singleton, compatibility ideographs, a mark without a base.
                    FoldCase{"\u212B\uF900", "a豈"}, FoldCase{"\u0301x", "x"}));

TEST(Fold, InvalidBytesBecomeReplacementCharacters) {
    EXPECT_EQ(fold("A\xFF"
                   "B"),
              "a\uFFFD"
              "b");
    EXPECT_EQ(fold("\xE4\xB8"), "\uFFFD\uFFFD");                      // a sequence cut short
    EXPECT_EQ(fold("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");            // a surrogate
    EXPECT_EQ(fold("\xC0\xAF"), "\uFFFD\uFFFD");                      // overlong
    EXPECT_EQ(fold("\xF5\x80\x80\x80"), "\uFFFD\uFFFD\uFFFD\uFFFD");  // beyond U+10FFFF
    EXPECT_EQ(fold("\x80中"), "\uFFFD中");
}

TEST(Fold, KeepsNulBytesAndControls) {
    const string text("A\0B\n\r\t", 6);
    EXPECT_EQ(fold(text), string("a\0b\n\r\t", 6));
}

TEST(Fold, EveryCodePointFoldsTheSameInBothFormsAndOnlyOnce) {
    for (UChar32 codePoint = 0; codePoint <= 0x1FFFF; ++codePoint) {
        if (U_IS_SURROGATE(codePoint) || u_isdefined(codePoint) == 0)
            continue;
        const string text = utf8(codePoint);
        const string key = fold(text);
        ASSERT_EQ(fold(nfd(text)), key) << std::hex << codePoint;
        ASSERT_EQ(fold(nfc(text)), key) << std::hex << codePoint;
        ASSERT_EQ(fold(key), key) << std::hex << codePoint;
        ASSERT_EQ(nfc(key), key) << std::hex << codePoint;
    }
}

TEST(Fold, CaseNeverMatters) {
    constexpr UChar32 dotlessI = 0x131;  // its capital is the plain I: a letter of its own
    for (UChar32 codePoint = 0; codePoint <= 0x1FFFF; ++codePoint) {
        if (U_IS_SURROGATE(codePoint) || u_isdefined(codePoint) == 0 || codePoint == dotlessI ||
            u_getCombiningClass(codePoint) != 0)
            continue;
        ASSERT_EQ(fold(utf8(u_toupper(u_tolower(codePoint)))), fold(utf8(u_tolower(codePoint))))
            << std::hex << codePoint;
    }
}

TEST(Fold, FastAndSlowPartsOfATextAgree) {
    // The slow path of "é" must not change what stands around it.
    const string plain = "IMG_0001 空镜.MOV";
    EXPECT_EQ(fold(plain + "é" + plain), fold(plain) + "e" + fold(plain));
    string huge;
    string folded;
    for (int count = 0; count < 20'000; ++count) {
        huge += "A中É";
        folded += "a中e";
    }
    EXPECT_EQ(fold(huge), folded);
}

TEST(Fold, ManyThreadsAtOnce) {
    std::vector<string> results(4);
    std::vector<std::thread> threads;
    for (string& result : results) {
        threads.emplace_back([&result] {
            for (int count = 0; count < 300; ++count)
                result = fold("ﾊﾟﾝ Élan 한글") + std::to_string(characterCount("e\u0301👩‍👩‍👧"));
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(results, std::vector<string>(4, "ハン elan 한글2"));
}

TEST(FoldCaseAndDiacritics, KeepsWidth) {
    EXPECT_EQ(foldCaseAndDiacritics("A.MOV"), foldCaseAndDiacritics("a.mov"));
    EXPECT_EQ(foldCaseAndDiacritics("É.mov"), foldCaseAndDiacritics("e\u0301.MOV"));
    EXPECT_EQ(foldCaseAndDiacritics("É.mov"), "e.mov");
    EXPECT_EQ(foldCaseAndDiacritics("Ａ"), "ａ");
    EXPECT_NE(foldCaseAndDiacritics("Ａ"), foldCaseAndDiacritics("A"));
    EXPECT_NE(foldCaseAndDiacritics("ｶ"), foldCaseAndDiacritics("カ"));
    EXPECT_EQ(foldCaseAndDiacritics("한글"), "한글");
}

TEST(SplitAtWhitespace, DropsEmptyPieces) {
    EXPECT_EQ(splitAtWhitespace(""), std::vector<string>{});
    EXPECT_EQ(splitAtWhitespace(" \t\n\u3000\u00A0\u2003 "), std::vector<string>{});
    EXPECT_EQ(splitAtWhitespace("空镜\u3000航拍  a\u2028b\u0085"),
              (std::vector<string>{"空镜", "航拍", "a", "b"}));
    EXPECT_EQ(splitAtWhitespace("a\u200Bb"), (std::vector<string>{"a\u200Bb"}));  // not white space
    EXPECT_EQ(splitAtWhitespace("\xFF \xA0"), (std::vector<string>{"\xFF", "\xA0"}));
}

TEST(Trimmed, TakesBothEnds) {
    EXPECT_EQ(trimmed(""), "");
    EXPECT_EQ(trimmed(" \r\n\u3000"), "");
    EXPECT_EQ(trimmed("\u3000 项目 一\t\n"), "项目 一");
    EXPECT_EQ(trimmed("a"), "a");
    EXPECT_EQ(trimmed(" \xFF "), "\xFF");
}

TEST(CaseMapping, IsFullAndOfNoLanguage) {
    EXPECT_EQ(lowerCased("MOV ÉΣ"), "mov éς");
    EXPECT_EQ(upperCased("straße mp4 i"), "STRASSE MP4 I");
    EXPECT_EQ(lowerCased("中文"), "中文");
    EXPECT_EQ(lowerCased("A\xFF"), "a\uFFFD");
    EXPECT_EQ(upperCased(""), "");
}

TEST(ValidUtf8, KnowsWhatIsWellFormed) {
    for (const string& text : {string(), string("abc"), string("中é👩‍👩‍👧"), string("\0", 1),
                               utf8(0x10FFFF), utf8(0xFFFF)})
        EXPECT_TRUE(isValidUtf8(text)) << text;
    for (const char* text : {"\x80", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80",
                             "\xF4\x90\x80\x80", "\xF0\x8F\xBF\xBF", "a\xE4\xB8", "\xFF", "\xE4\xB8\x2D"})
        EXPECT_FALSE(isValidUtf8(text));
}

TEST(ValidUtf8, ReplacesOneByteAtATime) {
    EXPECT_EQ(withInvalidBytesReplaced("", "_"), "");
    EXPECT_EQ(withInvalidBytesReplaced("中文.mov", "_"), "中文.mov");
    EXPECT_EQ(withInvalidBytesReplaced("a\xFF\xFE"
                                       "b",
                                       "_"),
              "a__b");
    EXPECT_EQ(withInvalidBytesReplaced("\xE4\xB8.mov", "_"), "__.mov");
    EXPECT_EQ(withInvalidBytesReplaced("\xED\xA0\x80", "_"), "___");
    EXPECT_EQ(withInvalidBytesReplaced("x\xFFy", ""), "xy");
}

TEST(Characters, CountsWhatTheUserPerceives) {
    EXPECT_EQ(characterCount(""), 0U);
    EXPECT_EQ(characterCount("abc 空镜"), 6U);
    EXPECT_EQ(characterCount("e\u0301"), 1U);
    EXPECT_EQ(characterCount("空\u0301镜"), 2U);
    EXPECT_EQ(characterCount("👩‍👩‍👧"), 1U);
    EXPECT_EQ(characterCount("🇨🇳🇫🇷"), 2U);
    EXPECT_EQ(characterCount("a\r\nb"), 3U);
    EXPECT_EQ(characterCount("\u1112\u1161\u11AB"), 1U);
    EXPECT_EQ(characterCount("\xFF\xFE"
                             "a"),
              3U);
    EXPECT_EQ(characterCount("中\xE4\xB8"), 3U);
}

TEST(Characters, OffsetsNeverCutACharacter) {
    const string text = "/Volumes/空e\u0301👩‍👩‍👧\r\n🇨🇳\xFFz";
    const std::size_t count = characterCount(text);
    EXPECT_EQ(count, 16U);
    std::vector<string> pieces;
    for (std::size_t index = 0; index < count; ++index)
        pieces.push_back(text.substr(characterOffset(text, index),
                                     characterOffset(text, index + 1) - characterOffset(text, index)));
    EXPECT_EQ(pieces, (std::vector<string>{"/", "V", "o", "l", "u", "m", "e", "s", "/", "空", "e\u0301",
                                           "👩‍👩‍👧", "\r\n", "🇨🇳", "\xFF", "z"}));
    EXPECT_EQ(characterOffset(text, count + 1), text.size());
    EXPECT_EQ(characterOffset("", 3), 0U);
    EXPECT_EQ(characterOffset("ab", 0), 0U);
}

TEST(Characters, TheCharacterBeforeTheLimitKeepsItsMark) {
    // The mark lies right behind what the plain characters alone would give.
    EXPECT_EQ(characterOffset("ab\u0301c", 2), string("ab\u0301").size());
    EXPECT_EQ(characterOffset("空\u0301镜", 1), string("空\u0301").size());
    EXPECT_EQ(characterOffset("a\u0301", 0), 0U);
}

}  // namespace
}  // namespace morvane
