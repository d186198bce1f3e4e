// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/reference_curve.h"

#include <algorithm>

#include "common/numbers.h"
#include "common/run_time_error.h"
#include "tests/analysis/published_curves.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

std::string Error(std::string_view bytes) {
    try {
        ParseReferenceCurve(bytes);
    } catch (const RunTimeError& error) {
        return error.what();
    }
    return {};
}

TEST(ReferenceCurve, IsReadWithPointsAndWithCommas) {
    const std::vector<CurvePoint> expected = {{0.01, 175}, {0.02, 440.5}};
    for (const char* const text :
         {"0.01,175\n0.02,440.5\n", "0,01;175\r\n0,02;440,5\r\n", "0.01;175\n0.02;440.5",
          "0,01\t175\n\n0,02\t440,5\n \n", "A;V\n;\n0,01;175\n;\n0,02;440,5\n;\n \t \n\"\";\"\"\n",
          "0.01,175\n,\n0.02,440.5\n,\n", "\xEF\xBB\xBF\"0.01\",\"175\"\n\"0.02\",\"440.5\"\n",
          " 0.01 , 175 \n1e-2;175\n0.02,440.5"}) {
        SCOPED_TRACE(text);
        std::vector<CurvePoint> points = ParseReferenceCurve(text);
        if (points.size() == 3) points.erase(points.begin() + 1);
        ASSERT_EQ(points.size(), 2U);
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_EQ(points[i].current, expected[i].current);
            EXPECT_EQ(points[i].voltage, expected[i].voltage);
        }
    }
}

TEST(ReferenceCurve, HasTheUnitsOfItsHeading) {
    for (const char* const text :
         {"current_A,voltage_V\n0.25,1500", "I in mA;U in kV\n250;1,5",
          "Voltage [kV],Current [mA]\n1.5,250", "CT 7, core 2\nVOLTAGE (V);CURRENT (A)\n1500;0,25",
          "U/mV\tI/kA\n1500000\t0,00025", "no unit;at all\n0,25;1500"}) {
        SCOPED_TRACE(text);
        const std::vector<CurvePoint> points = ParseReferenceCurve(text);
        ASSERT_EQ(points.size(), 1U);
        EXPECT_DOUBLE_EQ(points[0].current, 0.25);
        EXPECT_DOUBLE_EQ(points[0].voltage, 1500);
    }
}

TEST(ReferenceCurve, HasTypedUnitsWhereItsHeadingNamesNone) {
    for (const char* const text : {"250;1,5", "no unit;at all\n250;1,5", "I in mA;U\n250;1,5"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(NamesUnits(text));
        const std::vector<CurvePoint> points = ParseReferenceCurve(text, "mA; kV");
        ASSERT_EQ(points.size(), 1U);
        EXPECT_DOUBLE_EQ(points[0].current, 0.25);
        EXPECT_DOUBLE_EQ(points[0].voltage, 1500);
    }
    EXPECT_DOUBLE_EQ(ParseReferenceCurve("1,5;250", "kV;mA")[0].voltage, 1500);
    EXPECT_DOUBLE_EQ(ParseReferenceCurve("A;V\n0,25;1500", "mA;kV")[0].voltage, 1500)
        << "the file's own count";
    for (const char* const text : {"A;V", "V,A\n1,2", "core 7\nI/mA\tU/kV\n1\t2"})
        EXPECT_TRUE(NamesUnits(text)) << text;
    for (const char* const text : {"", "A;A\n1;2", "V;kV", "1;2\nA;V", "amperes;volts"})
        EXPECT_FALSE(NamesUnits(text)) << text;
}

TEST(ReferenceCurve, IsKeptInAmperesAndVolts) {
    const std::vector<CurvePoint> points = {{0.00005, 0}, {-1.5, 1e15}, {0.1 + 0.2, 1.0 / 3}};
    const std::string text = ReferenceCurveText(points);
    EXPECT_EQ(text, "A;V\r\n5E-05;0\r\n-1.5;1E+15\r\n0.3;0.333333333333333\r\n");
    EXPECT_EQ(ReferenceCurveText(ParseReferenceCurve(text)), text);
    EXPECT_EQ(ParseReferenceCurve(text)[1], points[1]);
    EXPECT_EQ(ReferenceCurveText({}), "A;V\r\n");
}

TEST(ReferenceCurve, IsThePublishedOne) {
    for (const test::PublishedCurve& curve : test::PublishedCurves()) {
        std::string text = "A;V\n";
        for (const CurvePoint& point : curve.points)
            text += GeneralNumber(point.current) + ";" + GeneralNumber(point.voltage) + "\n";
        std::replace(text.begin(), text.end(), '.', ',');
        const std::vector<CurvePoint> points = ParseReferenceCurve(text);
        ASSERT_EQ(points.size(), curve.points.size());
        for (std::size_t i = 0; i < points.size(); ++i) {
            EXPECT_EQ(points[i].current, curve.points[i].current);
            EXPECT_EQ(points[i].voltage, curve.points[i].voltage);
        }
    }
}

TEST(ReferenceCurve, SaysWhatIsNoPoint) {
    const std::string mismatch = "Run-time error '13': Type mismatch: line ";
    EXPECT_EQ(Error("0.01,175\n0.02\n"), mismatch + "2");
    EXPECT_EQ(Error("A;V\n0,01;175\nend;of it\n"), mismatch + "3");
    EXPECT_EQ(Error("0.01,175,3\n"), mismatch + "1");
    EXPECT_EQ(Error("0,01,175\n"), mismatch + "1");
    EXPECT_EQ(Error("0,01\t175\t3\n"), mismatch + "1") << "of three columns none is left out";
    EXPECT_EQ(Error("0,01;175\n;440,5\n"), mismatch + "2") << "half a point";
    EXPECT_EQ(Error("A;kV\n0,01;0,175\n1;1e308\n"), mismatch + "3");
    // Of thousands or of decimals?
    const std::string mixed = ": points and commas in the numbers";
    EXPECT_EQ(Error("A;V\n0,01;400\n0,02;800\n0,05;1.000\n"), mismatch + "4" + mixed);
    EXPECT_EQ(Error("Core 1.5, new\nA\tV\n0.01\t400\n0.05\t1,000\n"), mismatch + "4" + mixed);
    EXPECT_EQ(Error("0,05;1.330,5\n"), mismatch + "1" + mixed);
    const std::string noLine =
        "Run-time error '62': Input past end of file: no line with two numbers above zero";
    EXPECT_EQ(Error(""), noLine);
    EXPECT_EQ(Error("Current in A,Voltage in V\n"), noLine);
    EXPECT_EQ(Error("A V\n0.1 100\n0.2 200\n"), noLine) << "columns of blanks";
    EXPECT_EQ(Error("A;V\r0,1;100\r0,2;200\r"), noLine) << "lines that end as on old computers";
    EXPECT_EQ(Error({"\xFF\xFE\x31\0\t\0\x31\0\n\0", 10}), noLine) << "two bytes a letter";
    // One column with a decimal comma.
    EXPECT_EQ(Error("V\n0,1\n0,2\n0,3\n"), noLine);
    EXPECT_EQ(Error("A;V\n0;0\n-1;5\n"), noLine);
}

}  // namespace
}  // namespace davo
