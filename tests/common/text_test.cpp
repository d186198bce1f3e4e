// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/text.h"

#include <set>

#include "tests/support/testing.h"

namespace davo {
namespace {

TEST(TrimBlanks, TakesBlanksOnlyAndAtTheEndsOnly) {
    EXPECT_EQ(TrimBlanks("  a b  "), "a b");
    EXPECT_EQ(TrimBlanks(" \ta\r\n "), "\ta\r\n");
    EXPECT_EQ(TrimBlanks("   "), "");
    EXPECT_EQ(TrimBlanks(""), "");
}

TEST(PadRight, FillsAndNeverCuts) {
    EXPECT_EQ(PadRight("ab", 4), "ab  ");
    EXPECT_EQ(PadRight("abcd", 4), "abcd");
    EXPECT_EQ(PadRight("abcde", 4), "abcde");
    EXPECT_EQ(PadRight("\xE4", 2), "\xE4 ");
}

TEST(RemoveBlanksAndLineEnds, TakesThemEverywhere) {
    EXPECT_EQ(RemoveBlanksAndLineEnds(" 0A \r\n1B\n\r 2\t"), "0A1B2\t");
}

TEST(Contains, FindsAPart) {
    EXPECT_TRUE(Contains("xxDONE", "DONE"));
    EXPECT_FALSE(Contains("xxDON", "DONE"));
    EXPECT_FALSE(Contains("done", "DONE"));
}

TEST(ReplaceControls, PutsAQuestionMarkInTheirPlaceAndCountsThem) {
    std::string all;
    for (int code = 0; code < 256; ++code)
        all += static_cast<char>(code);
    std::string text = all;
    EXPECT_EQ(ReplaceControls(text), 33U);
    for (std::size_t code = 0; code < all.size(); ++code) {
        const bool control = code < 32 || code == 127;
        EXPECT_EQ(text[code], control ? '?' : all[code]) << code;
    }
    text = "a\tb\r\nc\vd";
    EXPECT_EQ(ReplaceControls(text, "\t\r\n"), 1U);
    EXPECT_EQ(text, "a\tb\r\nc?d");
}

TEST(Middle, GoesNoFurtherThanTheText) {
    EXPECT_EQ(Middle("abcdef", 2, 3), "cde");
    EXPECT_EQ(Middle("abcdef", 4, 9), "ef");
    EXPECT_EQ(Middle("abcdef", 2), "cdef");
    EXPECT_EQ(Middle("abcdef", 6), "");
    EXPECT_EQ(Middle("abcdef", 99, 1), "");
    EXPECT_EQ(Middle("", 0), "");
}

TEST(Page, BringsEveryByteBackAndTellsThemApart) {
    std::set<char16_t> characters;
    for (int code = 0; code < 256; ++code) {
        const std::string byte(1, static_cast<char>(code));
        const QString text = FromPage(byte);
        ASSERT_EQ(text.size(), 1) << code;
        characters.insert(text.front().unicode());
        const auto back = ToPage(text);
        ASSERT_TRUE(back.has_value()) << code;
        EXPECT_EQ(*back, byte) << code;
    }
    EXPECT_EQ(characters.size(), 256U);
}

TEST(Page, IsWindows1252) {
    EXPECT_EQ(FromPage("\x80\x8A\x99\x9F\xA0\xE4\xFF"), u"€Š™Ÿ\u00A0äÿ"_s);
    for (const int open : {0x81, 0x8D, 0x8F, 0x90, 0x9D}) {
        EXPECT_EQ(FromPage(std::string(1, static_cast<char>(open))).front().unicode(), open);
    }
}

TEST(Page, RefusesWhatItCannotHold) {
    EXPECT_FALSE(ToPage(u"ab\u0416"_s).has_value());
    EXPECT_FALSE(ToPage(u"\u0100"_s).has_value());
    EXPECT_FALSE(ToPage(u"\u0080"_s).has_value());
    EXPECT_FALSE(ToPage(u"\U0001F600"_s).has_value());
    EXPECT_EQ(ToPage(QString()), "");
}

TEST(RunsText, NamesTheEndsOfThreeAndMore) {
    const auto name = [](int number) { return u"T%1"_s.arg(number); };
    EXPECT_EQ(RunsText({}, name), u""_s);
    EXPECT_EQ(RunsText({3}, name), u"T3"_s);
    EXPECT_EQ(RunsText({3, 4}, name), u"T3, T4"_s);
    EXPECT_EQ(RunsText({1, 2, 3, 5, 7, 8}, name), u"T1 to T3, T5, T7, T8"_s);
}

}  // namespace
}  // namespace davo
