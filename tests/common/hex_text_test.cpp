// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/numbers.h"

#include <cstdint>
#include <limits>
#include <random>

#include "common/run_time_error.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

ErrorNumber NumberThrownBy(std::string_view text) {
    return test::NumberThrownBy([&] { ParseHexText(text); });
}

TEST(ParseHexText, ReadsHexadecimal) {
    EXPECT_EQ(ParseHexText("1A"), 26);
    EXPECT_EQ(ParseHexText("0"), 0);
    EXPECT_EQ(ParseHexText("FF"), 255);
    EXPECT_EQ(ParseHexText("00FF"), 255);
    EXPECT_EQ(ParseHexText("7FFFFFFF"), 2147483647);
    EXPECT_EQ(ParseHexText("a80000000"), std::numeric_limits<std::int32_t>::min());
}

TEST(ParseHexText, EmptyTextIsZero) {
    EXPECT_EQ(ParseHexText(""), 0);
}

TEST(ParseHexText, DigitsRunToZButWeigh16) {
    EXPECT_EQ(ParseHexText("G"), 16);
    EXPECT_EQ(ParseHexText("Z"), 35);
    EXPECT_EQ(ParseHexText("Z0"), 560);
    EXPECT_EQ(ParseHexText("ZZ"), 595);
}

TEST(ParseHexText, WhatIsNoDigitCountsMinusOne) {
    EXPECT_EQ(ParseHexText("a"), -1);
    EXPECT_EQ(ParseHexText("1a"), 15);
    EXPECT_EQ(ParseHexText("ff"), -17);
    EXPECT_EQ(ParseHexText(" 1"), -15);
    EXPECT_EQ(ParseHexText("1 "), 15);
    EXPECT_EQ(ParseHexText(std::string_view("\0", 1)), -1);
    EXPECT_EQ(ParseHexText("\xE4"), -1);
}

TEST(ParseHexText, OutsideThe32BitRangeOverflows) {
    EXPECT_EQ(NumberThrownBy("80000000"), ErrorNumber::Overflow);
    EXPECT_EQ(NumberThrownBy("FFFFFFFF"), ErrorNumber::Overflow);
    EXPECT_EQ(NumberThrownBy("100000000"), ErrorNumber::Overflow);
}

TEST(ParseHexText, NegativeSums) {
    EXPECT_EQ(ParseHexText("--------"), -286331153);
    EXPECT_EQ(NumberThrownBy("---------"), ErrorNumber::Overflow);
}

TEST(ParseHexText, ATextTooLongForADoubleOverflows) {
    EXPECT_EQ(NumberThrownBy(std::string(400, 'F')), ErrorNumber::Overflow);
    EXPECT_EQ(NumberThrownBy(std::string(400, '-')), ErrorNumber::Overflow);
    EXPECT_EQ(NumberThrownBy(std::string(400, '0')), ErrorNumber::Overflow);
    EXPECT_EQ(ParseHexText(std::string(200, '0') + "1A"), 26);
}

// The same rule in whole numbers, digit by digit from the front.
std::int64_t Reference(const std::string& text) {
    std::int64_t sum = 0;
    for (const char c : text) {
        std::int64_t digit = -1;
        if (c >= '0' && c <= '9') digit = c - '0';
        if (c >= 'A' && c <= 'Z') digit = c - 'A' + 10;
        sum = sum * 16 + digit;
    }
    return sum;
}

TEST(ParseHexText, AgreesWithWholeNumbersOnRandomTexts) {
    std::mt19937_64 random(test::RandomSeed(std::random_device{}()));
    std::uniform_int_distribution<int> length(0, 11);
    std::uniform_int_distribution<int> code(0, 255);
    std::uniform_int_distribution<int> place(0, 15);
    std::uniform_int_distribution<int> oneIn(0, 9);
    for (int i = 0; i < 20000; ++i) {
        std::string text(static_cast<std::size_t>(length(random)), '0');
        for (char& c : text) {
            c = oneIn(random) == 0 ? static_cast<char>(code(random))
                                   : "0123456789ABCDEF"[place(random)];
        }
        const std::int64_t expected = Reference(text);
        if (expected < INT32_MIN || expected > INT32_MAX) {
            EXPECT_EQ(NumberThrownBy(text), ErrorNumber::Overflow) << text;
        } else {
            EXPECT_EQ(ParseHexText(text), expected) << text;
        }
    }
}

}  // namespace
}  // namespace davo
