// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/numbers.h"

#include <QLocale>
#include <clocale>
#include <cmath>
#include <limits>

#include "common/run_time_error.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

TEST(Picture, RoundsTheDecimalTextHalfAwayFromZero) {
    EXPECT_EQ(Picture(152.35, "###0.0"), "152.4");
    EXPECT_EQ(Picture(152.34999999999999, "###0.0"), "152.4");
    EXPECT_EQ(Picture(152.3499999999, "###0.0"), "152.3");
    EXPECT_EQ(Picture(2.675, "0.00"), "2.68");
    EXPECT_EQ(Picture(1.005, "0.00"), "1.01");
    EXPECT_EQ(Picture(0.5, "0"), "1");
    EXPECT_EQ(Picture(1.5, "0"), "2");
    EXPECT_EQ(Picture(2.5, "0"), "3");
    EXPECT_EQ(Picture(-2.5, "0"), "-3");
    EXPECT_EQ(Picture(-152.35, "###0.0"), "-152.4");
    EXPECT_EQ(Picture(0.05, "0.0"), "0.1");
    EXPECT_EQ(Picture(0.049999999999, "0.0"), "0.0");
    EXPECT_EQ(Picture(9.996, "0.00"), "10.00");
    EXPECT_EQ(Picture(99999.95, "###0.0"), "100000.0");
}

TEST(Picture, WritesTheFormsOfTheRecordFile) {
    EXPECT_EQ(Picture(0.0124, "###0.0000"), "0.0124");
    EXPECT_EQ(Picture(500 * 0.0002, "###0.0000"), "0.1000");
    EXPECT_EQ(Picture(500 * 0.0001, "###0.0000"), "0.0500");
    EXPECT_EQ(Picture(1523 * 0.1, "###0.0"), "152.3");
    EXPECT_EQ(Picture(65535, "###0.0"), "65535.0");
    EXPECT_EQ(Picture(0, "##0.0"), "0.0");
    EXPECT_EQ(Picture(3, "00"), "03");
    EXPECT_EQ(Picture(12, "00"), "12");
    EXPECT_EQ(Picture(123, "00"), "123");
    EXPECT_EQ(Picture(12, "000"), "012");
    EXPECT_EQ(Picture(-7, "000"), "-007");
    EXPECT_EQ(Picture(1000.0 / 3, "##0.000"), "333.333");
    EXPECT_EQ(Picture(std::fabs(241.2 - 240) / 240 * 100, "##0.00"), "0.50");
    EXPECT_EQ(Picture(std::fabs(238.8 - 240) / 240 * 100, "##0.00"), "0.50");
    EXPECT_EQ(Picture(123.46, "###0.0"), "123.5");
}

TEST(Picture, HasNoSignWhenItRoundsToZero) {
    EXPECT_EQ(Picture(-0.0, "0.0"), "0.0");
    EXPECT_EQ(Picture(-0.04, "0.0"), "0.0");
    EXPECT_EQ(Picture(-0.05, "0.0"), "-0.1");
}

TEST(Picture, LeavesOptionalDigitsOut) {
    EXPECT_EQ(Picture(0.25, "#.00"), ".25");
    EXPECT_EQ(Picture(-0.25, "#.00"), "-.25");
    EXPECT_EQ(Picture(12.25, "#.00"), "12.25");
    EXPECT_EQ(Picture(0, "#.0"), ".0");
    EXPECT_EQ(Picture(0, "###"), "");
    EXPECT_EQ(Picture(7, "###"), "7");
    EXPECT_EQ(Picture(1.5, "0.0##"), "1.5");
    EXPECT_EQ(Picture(1.25, "0.0##"), "1.25");
    EXPECT_EQ(Picture(1, "0.##"), "1.");
}

TEST(Picture, HoldsHugeAndTinyValues) {
    EXPECT_EQ(Picture(1e22, "0.0"), "1" + std::string(22, '0') + ".0");
    EXPECT_EQ(Picture(1.7976931348623157e308, "0"), "179769313486232" + std::string(294, '0'));
    EXPECT_EQ(Picture(5e-324, "0.0000"), "0.0000");
    EXPECT_EQ(Picture(-5e-324, "0.0000"), "0.0000");
}

TEST(Picture, OverflowsOnWhatIsNoNumber) {
    EXPECT_EQ(test::ErrorBy([] { Picture(kInfinity, "0.0"); }), 6);
    EXPECT_EQ(test::ErrorBy([] { Picture(-kInfinity, "0.0"); }), 6);
    EXPECT_EQ(test::ErrorBy([] { Picture(kNotANumber, "0.0"); }), 6);
    EXPECT_EQ(test::ErrorBy([] { GeneralNumber(kNotANumber); }), 6);
}

TEST(RoundByPicture, ReadsThePictureBack) {
    EXPECT_EQ(RoundByPicture(1.8149999999999999, "####0.00"), 1.82);
    EXPECT_EQ(RoundByPicture(1.8149, "####0.00"), 1.81);
    EXPECT_EQ(RoundByPicture(-0.0004, "####0.000"), 0.0);
    EXPECT_FALSE(std::signbit(RoundByPicture(-0.0004, "####0.000")));
    EXPECT_EQ(RoundByPicture(1.23456785, "0.0000000"), 1.2345679);
}

TEST(GeneralNumber, IsTheShortestTextOfFifteenDigits) {
    EXPECT_EQ(GeneralNumber(48), "48");
    EXPECT_EQ(GeneralNumber(333.333), "333.333");
    EXPECT_EQ(GeneralNumber(0.1 + 0.2), "0.3");
    EXPECT_EQ(GeneralNumber(1523 * 0.1), "152.3");
    EXPECT_EQ(GeneralNumber(3 * 0.0001), "0.0003");
    EXPECT_EQ(GeneralNumber(-2.5), "-2.5");
    EXPECT_EQ(GeneralNumber(0), "0");
    EXPECT_EQ(GeneralNumber(-0.0), "0");
    EXPECT_EQ(GeneralNumber(100), "100");
    EXPECT_EQ(GeneralNumber(1.0 / 3), "0.333333333333333");
    EXPECT_EQ(GeneralNumber(123456789012345), "123456789012345");
}

TEST(GeneralNumber, TurnsToAnExponentAtItsLimits) {
    EXPECT_EQ(GeneralNumber(999999999999999), "999999999999999");
    EXPECT_EQ(GeneralNumber(1e15), "1E+15");
    EXPECT_EQ(GeneralNumber(-1.25e20), "-1.25E+20");
    EXPECT_EQ(GeneralNumber(1e100), "1E+100");
    EXPECT_EQ(GeneralNumber(0.0001), "0.0001");
    EXPECT_EQ(GeneralNumber(0.000015), "1.5E-05");
    EXPECT_EQ(GeneralNumber(1e-5), "1E-05");
    EXPECT_EQ(GeneralNumber(5e-324), "4.94065645841247E-324");
}

TEST(NumericValue, ReadsTheNumberAtTheStart) {
    EXPECT_EQ(NumericValue("12"), 12);
    EXPECT_EQ(NumericValue(" 12"), 12);
    EXPECT_EQ(NumericValue(" 1 2"), 12);
    EXPECT_EQ(NumericValue("12abc"), 12);
    EXPECT_EQ(NumericValue("152.3 VOLTS"), 152.3);
    EXPECT_EQ(NumericValue("0.124AMPS"), 0.124);
    EXPECT_EQ(NumericValue(".5"), 0.5);
    EXPECT_EQ(NumericValue("5."), 5);
    EXPECT_EQ(NumericValue("1.2.3"), 1.2);
    EXPECT_EQ(NumericValue("-1.5"), -1.5);
    EXPECT_EQ(NumericValue("+1.5"), 1.5);
    EXPECT_EQ(NumericValue("- 1.5"), -1.5);
    EXPECT_EQ(NumericValue("1,5"), 1);
}

TEST(NumericValue, ReadsExponentsOfEAndD) {
    EXPECT_EQ(NumericValue("1E3"), 1000);
    EXPECT_EQ(NumericValue("1e+3"), 1000);
    EXPECT_EQ(NumericValue("1D3"), 1000);
    EXPECT_EQ(NumericValue("15d-1x"), 1.5);
    EXPECT_EQ(NumericValue("1 E 3"), 1000);
    EXPECT_EQ(NumericValue("2E"), 2);
    EXPECT_EQ(NumericValue("2E+"), 2);
    EXPECT_EQ(NumericValue("2 DEG"), 2);
}

TEST(NumericValue, IsZeroWithoutANumber) {
    for (const char* text :
         {"", " ", "-", "+", ".", "-.", "--5", "abc", "E5", "N/A", "inf", "nan", "\xE4"}) {
        EXPECT_EQ(NumericValue(text), 0) << text;
        EXPECT_FALSE(std::signbit(NumericValue(text))) << text;
    }
    EXPECT_EQ(NumericValue("0x10"), 0);
}

TEST(NumericValue, OverflowsAboveAndIsZeroBelowTheRangeOfADouble) {
    EXPECT_EQ(test::ErrorBy([] { NumericValue("1E309"); }), 6);
    EXPECT_EQ(test::ErrorBy([] { NumericValue("-1E999999999999"); }), 6);
    EXPECT_EQ(test::ErrorBy([] { NumericValue(std::string(400, '9')); }), 6);
    EXPECT_EQ(NumericValue("1E-999999999999"), 0);
    EXPECT_EQ(NumericValue("0." + std::string(400, '0') + "1"), 0);
    EXPECT_EQ(NumericValue("0E999"), 0);
    EXPECT_EQ(NumericValue("5E-324"), 5e-324);
}

TEST(LeadingNumericValue, TakesTheNumberAtTheBeginning) {
    EXPECT_EQ(LeadingNumericValue("240.7:1"), 240.7);
    EXPECT_EQ(LeadingNumericValue(" 241.2 "), 241.2);
    EXPECT_EQ(LeadingNumericValue("24?.1"), 24);
    EXPECT_EQ(LeadingNumericValue("-.5E1x"), -5);
    EXPECT_EQ(LeadingNumericValue("0:1"), 0);
    for (const char* text : {"", " ", "-", ".", ":1", "x1", "1E999:1"})
        EXPECT_FALSE(LeadingNumericValue(text).has_value()) << text;
}

TEST(WholeNumericValue, TakesNothingButANumber) {
    EXPECT_EQ(WholeNumericValue(" 241.2 "), 241.2);
    EXPECT_EQ(WholeNumericValue("-.5"), -0.5);
    EXPECT_EQ(WholeNumericValue("5."), 5);
    EXPECT_EQ(WholeNumericValue("1E3"), 1000);
    EXPECT_EQ(WholeNumericValue("0"), 0);
    for (const char* text : {"", " ", "-", ".", "12abc", "1 2", "1,5", "1E", "1.2.3", "0x10", "inf",
                             "nan", "1E309", "12\t"}) {
        EXPECT_FALSE(WholeNumericValue(text).has_value()) << text;
    }
}

TEST(ToInteger16, RoundsHalvesToEven) {
    EXPECT_EQ(ToInteger16(0.5), 0);
    EXPECT_EQ(ToInteger16(1.5), 2);
    EXPECT_EQ(ToInteger16(2.5), 2);
    EXPECT_EQ(ToInteger16(-0.5), 0);
    EXPECT_EQ(ToInteger16(-1.5), -2);
    EXPECT_EQ(ToInteger16(-2.5), -2);
    EXPECT_EQ(ToInteger16(2.4), 2);
    EXPECT_EQ(ToInteger16(-2.6), -3);
}

TEST(ToInteger16, OverflowsOutsideSixteenBits) {
    EXPECT_EQ(ToInteger16(32767.4), 32767);
    EXPECT_EQ(ToInteger16(-32768.5), -32768);
    EXPECT_EQ(test::ErrorBy([] { ToInteger16(32767.5); }), 6);
    EXPECT_EQ(test::ErrorBy([] { ToInteger16(-32768.51); }), 6);
    EXPECT_EQ(test::ErrorBy([] { ToInteger16(1e300); }), 6);
    EXPECT_EQ(test::ErrorBy([] { ToInteger16(kInfinity); }), 6);
    EXPECT_EQ(test::ErrorBy([] { ToInteger16(kNotANumber); }), 6);
}

TEST(SignedText, HasABlankForAMissingSign) {
    EXPECT_EQ(SignedText(1), " 1");
    EXPECT_EQ(SignedText(0), " 0");
    EXPECT_EQ(SignedText(-99), "-99");
}

TEST(Numbers, DoNotDependOnTheLocale) {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    // Where the machine has no such locale the C library keeps its own: Qt's is changed in any
    // case.
    const std::string old = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "de_DE.UTF-8");
    EXPECT_EQ(Picture(1234.5, "###0.00"), "1234.50");
    EXPECT_EQ(GeneralNumber(1234.5), "1234.5");
    EXPECT_EQ(NumericValue("1.5"), 1.5);
    EXPECT_EQ(NumericValue("1,5"), 1);
    std::setlocale(LC_ALL, old.c_str());
    QLocale::setDefault(before);
}

}  // namespace
}  // namespace davo
