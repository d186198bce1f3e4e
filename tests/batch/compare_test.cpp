// SPDX-License-Identifier: GPL-3.0-or-later
// Tests against a reference, in rows and in sentences.

#include "analysis/comparison.h"

#include <QRegularExpression>
#include <map>

#include "common/numbers.h"
#include "common/text.h"
#include "tests/analysis/published_curves.h"
#include "tests/batch/report_program.h"
#include "tests/support/record_text.h"

namespace davo {
namespace {

using test::Ended;
using test::PutRecord;
using test::Report;
using test::Said;

// The points of a published curve by its letter.
std::vector<CurvePoint> Published(const std::string& name) {
    for (const test::PublishedCurve& curve : test::PublishedCurves()) {
        if (curve.name == name) return curve.points;
    }
    ADD_FAILURE() << "no curve " << name;
    return {};
}

std::string TestText(int number, const std::vector<CurvePoint>& points) {
    test::RecordParts parts;
    parts.number = " " + std::to_string(number);
    parts.points.clear();
    for (const CurvePoint& point : points)
        parts.points.emplace_back(GeneralNumber(point.current), GeneralNumber(point.voltage));
    return test::RecordText(parts);
}

// Records of the published curves: A alone, B alone, and both.
void PutPublished(const test::TemporaryFolder& folder) {
    PutRecord(folder, u"A.txt"_s, test::HeaderText() + TestText(1, Published("A")));
    PutRecord(folder, u"B.txt"_s, test::HeaderText() + TestText(1, Published("B")));
    PutRecord(folder, u"BA.txt"_s,
              test::HeaderText() + TestText(1, Published("B")) + TestText(2, Published("A")));
}

// The fields of a row by the names of the columns.
std::map<std::string, std::string> FieldsOf(const std::string& heading, const std::string& row) {
    const QRegularExpression field(u"\"([^\"]*)\"(?:,|$)|([^,]*)(?:,|$)"_s);
    QRegularExpressionMatchIterator texts = field.globalMatch(QString::fromStdString(row));
    std::map<std::string, std::string> fields;
    for (const QString& name : QString::fromStdString(heading).split(u',')) {
        const QRegularExpressionMatch match = texts.next();
        fields[name.toStdString()] = (match.captured(1) + match.captured(2)).toStdString();
    }
    return fields;
}

TEST(Compare, HasThePublishedDeviationsInColumns) {
    const test::TemporaryFolder folder;
    PutPublished(folder);
    const Ended run =
        Report({u"--csv"_s, u"-"_s, u"--compare"_s, u"A.txt"_s, u"--limit"_s, u"5"_s, u"B.txt"_s},
               folder.Path());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const std::vector<std::string> lines = SplitLines(run.out);
    ASSERT_EQ(lines.size(), 2U);
    auto fields = FieldsOf(lines[0], lines[1]);
    const auto number = [&](const char* column) { return NumericValue(fields[column]); };
    // 340 V where the reference has 440 V.
    EXPECT_NEAR(number("voltage_worst_percent"), 100 * (340.0 / 440 - 1), 1e-9);
    const CurveComparison expected =
        CompareCurves(CurveToCompare(KneeRule::Asa1050, Published("B")),
                      CurveToCompare(KneeRule::Asa1050, Published("A")));
    ASSERT_TRUE(expected.current.all);
    ASSERT_TRUE(expected.voltage.above && expected.knee);
    EXPECT_EQ(fields["reference"], "A");
    EXPECT_EQ(fields["reference_test"], "1");
    EXPECT_NEAR(number("voltage_below_knee_percent"), 100 * (340.0 / 440 - 1), 1e-9);
    EXPECT_NEAR(number("voltage_above_knee_percent"), expected.voltage.above->Percent(), 1e-9);
    EXPECT_NEAR(number("current_worst_percent"), expected.current.all->Percent(), 1e-9);
    EXPECT_NEAR(number("knee_percent"), expected.knee->percent, 1e-9);
    EXPECT_NEAR(number("knee_pm_percent"), expected.knee->uncertainPercent, 1e-9);
    EXPECT_EQ(fields["within_limit"], "no");
    EXPECT_THAT(lines[0], EndsWith(",within_limit,comparison"));
    EXPECT_THAT(lines[1], HasSubstr(",no,\"At 0.020 A the voltage is 22.7 % below the reference, "
                                    "beyond the limit of 5 %. The kneepoint is "));
}

TEST(Compare, SaysASentenceForEachTest) {
    const test::TemporaryFolder folder;
    PutPublished(folder);
    const Ended run = Report({u"--compare=A.txt"_s, u"BA.txt"_s}, folder.Path());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const std::vector<std::string> lines = SplitLines(run.out);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[0], StartsWith("BA.txt Test 1: At 0.020 A the voltage is 22.7 % below the "
                                     "reference. The kneepoint is "));
    EXPECT_THAT(lines[1], StartsWith("BA.txt Test 2: At all common currents the voltage is "
                                     "within 0.1 % of the reference. The kneepoint is within 0.1 % "
                                     "of the reference's, give or take "));
    for (const std::string& line : lines)
        EXPECT_THAT(line, HasSubstr(" % above the nameplate's. The polarity is in phase (+)."));
}

TEST(Compare, PutsTheSentencesIntoTheCertificate) {
    const test::TemporaryFolder folder;
    PutPublished(folder);
    const Ended run = Report({u"--compare=A.txt"_s, u"--limit=5"_s, u"--html"_s, u"--pdf"_s,
                              u"--csv"_s, u"-"_s, u"BA.txt"_s},
                             folder.Path());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const std::string page = ReadWholeFile(folder.Path("BA.html"));
    EXPECT_THAT(page, HasSubstr(">Comparison</th></tr>\n<tr><td>Reference: A</td></tr>\n"
                                "<tr><td>Test 1: At 0.020 A the voltage is 22.7 % below the "
                                "reference, beyond the limit of 5 %. The kneepoint is "));
    EXPECT_THAT(page, HasSubstr("<tr><td>Test 2: At all common currents the voltage is within "));
    const std::string text =
        test::RunProgram(u"pdftotext"_s, {u"-layout"_s, u"BA.pdf"_s, u"-"_s}, folder.Path()).out;
    EXPECT_THAT(text, HasSubstr("Reference: A\n"));
    EXPECT_THAT(page, HasSubstr(" The turns ratio is "));
    EXPECT_THAT(page, HasSubstr(" The polarity is "));
    EXPECT_THAT(text, HasSubstr("Test 1: At 0.020 A the voltage is 22.7 % below the reference, "
                                "beyond the limit of 5 %. The kneepoint is "));
    Report({u"--html"_s, u"--force"_s, u"BA.txt"_s}, folder.Path());
    EXPECT_THAT(ReadWholeFile(folder.Path("BA.html")), Not(HasSubstr("Comparison")));
}

TEST(Compare, TakesTheTestOfTheSameNumberOrTheOnlyOne) {
    const test::TemporaryFolder folder;
    PutPublished(folder);
    test::RecordParts ratio;
    ratio.number = " 3";
    ratio.points.clear();
    PutRecord(folder, u"three.txt"_s,
              test::HeaderText() + TestText(2, Published("A")) + test::RecordText(ratio) +
                  TestText(4, Published("B")));
    const Ended run = Report({u"--compare=BA.txt"_s, u"three.txt"_s, u"--limit=25"_s, u"--csv"_s,
                              u"-"_s, u"--no-heading"_s},
                             folder.Path());
    const std::vector<std::string> lines = SplitLines(run.out);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[0], HasSubstr(",BA,2,0,"));
    EXPECT_THAT(lines[0], HasSubstr(",yes,"));
    EXPECT_THAT(lines[1], EndsWith(",BA,,,,,,,,,The test has no curve."));
    EXPECT_THAT(lines[2], EndsWith(",BA,,,,,,,,,The reference has no curve for this test."));
    EXPECT_THAT(Report({u"--compare=A.txt"_s, u"three.txt"_s}, folder.Path()).out,
                HasSubstr("three.txt Test 4: At 0.020 A the voltage is 22.7 % below"));
}

TEST(Compare, TakesAMakersCurveForAReference) {
    const test::TemporaryFolder folder;
    PutPublished(folder);
    std::string table = "Current in mA;Voltage in V\r\n";
    for (const CurvePoint& point : Published("A"))
        table += GeneralNumber(1000 * point.current) + ";" + GeneralNumber(point.voltage) + "\r\n";
    PutRecord(folder, u"maker.CSV"_s, table);
    const auto compared = [&](const QString& reference) {
        return Report({u"--compare"_s, reference, u"BA.txt"_s}, folder.Path());
    };
    EXPECT_EQ(compared(u"maker.CSV"_s).err, "");
    EXPECT_EQ(compared(u"maker.CSV"_s).out, compared(u"A.txt"_s).out);
    const Ended rows =
        Report({u"--compare=maker.CSV"_s, u"--csv"_s, u"-"_s, u"--no-heading"_s, u"B.txt"_s},
               folder.Path());
    EXPECT_THAT(rows.out, HasSubstr(",1.5,maker.CSV,,-22.727"));
    PutRecord(folder, u"maker.CSV"_s, "1;2\n3\n");
    EXPECT_EQ(compared(u"maker.CSV"_s).status, 1);
    EXPECT_EQ(compared(u"maker.CSV"_s).err,
              Said("maker.CSV cannot be shown: the file is damaged. Run-time error '13': Type "
                   "mismatch: line 2"));
}

TEST(Compare, IsNotWithoutAReference) {
    const test::TemporaryFolder folder;
    PutPublished(folder);
    PutRecord(folder, u"damaged.txt"_s, "no record\r\n");
    const Ended gone = Report({u"--compare=C.txt"_s, u"A.txt"_s, u"--csv"_s}, folder.Path());
    EXPECT_EQ(gone.status, 1);
    EXPECT_EQ(gone.out, "");
    EXPECT_EQ(gone.err, Said("C.txt cannot be shown: Run-time error '53': File not found: C.txt"));
    EXPECT_FALSE(FileExists(folder.Path("A.csv")));
    EXPECT_EQ(Report({u"--compare=damaged.txt"_s, u"A.txt"_s}, folder.Path()).status, 1);
    EXPECT_EQ(Report({u"--compare=."_s, u"A.txt"_s}, folder.Path()).err,
              Said(". cannot be shown: it is not a file."));
    ASSERT_TRUE(QFile::resize(folder.Path("B.txt"), 1 << 30));
    EXPECT_EQ(Report({u"--compare=B.txt"_s, u"A.txt"_s}, folder.Path()).err,
              Said("B.txt cannot be shown: it has more than 16 MB, and no record has."));
}

// A sentence is for three common points at least; why there is none is said instead.
TEST(Compare, SaysWhyCurvesAreNotCompared) {
    const test::TemporaryFolder folder;
    PutPublished(folder);
    PutRecord(folder, u"two.txt"_s, test::HeaderText() + TestText(1, {{0.01, 150}, {0.02, 340}}));
    EXPECT_THAT(Report({u"--compare=A.txt"_s, u"two.txt"_s}, folder.Path()).out,
                StartsWith("two.txt Test 1: The curves are not compared: one has fewer than"));
    const Ended rows = Report(
        {u"--compare=A.txt"_s, u"two.txt"_s, u"--csv"_s, u"-"_s, u"--no-heading"_s, u"--limit=5"_s},
        folder.Path());
    EXPECT_THAT(rows.out, HasSubstr(",A,1,,,,,,,,The curves are not compared: "));
    EXPECT_THAT(rows.out, Not(HasSubstr("The kneepoint"))) << "nor are these";
}

}  // namespace
}  // namespace davo
