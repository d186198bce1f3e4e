// SPDX-License-Identifier: GPL-3.0-or-later
// The tests of a record file as values, beside those of its report.

#include "reports/record_facts.h"

#include <random>

#include "analysis/grid_points.h"
#include "common/files.h"
#include "common/run_time_error.h"
#include "records/record_image.h"
#include "reports/record_csv.h"
#include "reports/record_texts.h"
#include "reports/report_tables.h"
#include "tests/reports/random_record.h"
#include "tests/support/random_seed.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

RecordFacts FactsOf(const std::string& bytes) {
    return ParseRecordFacts(bytes, "T0012");
}

int ErrorOf(const std::string& bytes) {
    return test::ErrorBy([&] { FactsOf(bytes); });
}

TEST(RecordFacts, AFileIsReadWhole) {
    const RecordFacts facts = FactsOf(test::FileText(2));
    EXPECT_EQ(facts.name, "T0012");
    ASSERT_THAT(facts.headers, SizeIs(1));
    EXPECT_THAT(facts.headers[0].fields, ElementsAre("Power & Light", "Hilltop", "Feeder 4", "Acme",
                                                     "CT-600", "00012345", "a: b, c", "J. Doe"));
    EXPECT_EQ(facts.headers[0].date, "03/07/24");
    EXPECT_EQ(facts.headers[0].time, "14:05");
    ASSERT_THAT(facts.tests, SizeIs(2));
    const RecordTest& second = facts.tests[1];
    EXPECT_EQ(second.recordName, "T0012");
    EXPECT_EQ(second.testNumber, "2");
    EXPECT_THAT(second.points,
                ElementsAre(CurvePoint{0.05, 10}, CurvePoint{0.06, 15}, CurvePoint{0.07, 22},
                            CurvePoint{0.09, 30}, CurvePoint{0.15, 37}, CurvePoint{0.6, 42},
                            CurvePoint{3, 44}));
    EXPECT_EQ(second.nameplateRatio, "240 (1200:5)");
    EXPECT_EQ(second.measuredRatio, "241.20");
    EXPECT_EQ(second.percentError, "0.50%");
    EXPECT_EQ(second.polarity, "IN PHASE");
    EXPECT_EQ(second.phase, "IN PHASE");
    EXPECT_EQ(second.phaseAngle, "1.5");
    for (std::size_t i = 0; i < kKneeRules.size(); ++i) {
        EXPECT_EQ(second.knees.at(i).rule, kKneeRules.at(i));
        EXPECT_NE(second.knees.at(i).At(), std::nullopt);
    }
}

// As the word of the report, it is there where a number is before "DEG".
TEST(RecordFacts, ThePhaseHasItsAngleWhereTheRecordHasOne) {
    struct Case {
        const char* line;
        const char* word;
        const char* angle;
    };
    for (const Case& phase : {Case{"0.0 DEG", "IN PHASE", "0.0"},
                              {" 90.1  DEG", "OUT OF PHASE", "90.1"},
                              {"90.05 DEG", "N/A", "90.05"},
                              {"400.0 DEG", "N/A", "400.0"},
                              {"N/A", "N/A", ""},
                              {"12.5", "N/A", ""},
                              {"x DEG", "N/A", ""},
                              {"", "N/A", ""}}) {
        test::RecordParts parts;
        parts.phase = phase.line;
        const RecordFacts facts =
            ParseRecordFacts(test::HeaderText() + test::RecordText(parts), "T");
        EXPECT_EQ(facts.tests.at(0).phase, phase.word) << phase.line;
        EXPECT_EQ(facts.tests.at(0).phaseAngle, phase.angle) << phase.line;
    }
}

TEST(RecordFacts, AKneepointIsNumbersOnlyWhereThereIsOne) {
    KneeFact fact;
    EXPECT_EQ(fact.At(), std::nullopt);
    fact.printed = {"N/A", "N/A"};
    EXPECT_EQ(fact.At(), std::nullopt);
    fact.printed = {"152.3", "0.012"};
    EXPECT_EQ(fact.At(), (CurvePoint{0.012, 152.3}));
}

TEST(KneeWord, NamesTheRule) {
    EXPECT_EQ(KneeWord(KneeRule::Ieee30), u"IEEE 30"_s);
    EXPECT_EQ(KneeWord(KneeRule::Ieee45), u"IEEE 45"_s);
    EXPECT_EQ(KneeWord(KneeRule::Asa1050), u"ASA 10/50"_s);
}

TEST(RecordFacts, AFileIsNamedAfterItself) {
    const test::TemporaryFolder folder;
    ReplaceFile(folder.Path("Feeder 7.TXT"), test::FileText(1));
    const RecordFacts facts = ReadRecordFacts(folder.Path("Feeder 7.TXT"));
    EXPECT_EQ(facts.name, "Feeder 7");
    EXPECT_EQ(facts.tests.at(0).recordName, "Feeder 7");
}

TEST(RecordFacts, AFileThatIsNotThereIsAnError) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(test::NumberThrownBy([&] { ReadRecordFacts(folder.Path("T1.txt")); }),
              ErrorNumber::FileNotFound);
}

TEST(RecordFacts, AHeaderWithoutARecordHasNoTests) {
    const RecordFacts facts = FactsOf(test::HeaderText());
    EXPECT_EQ(facts.headers.at(0).fields[1], "Hilltop");
    EXPECT_THAT(facts.tests, IsEmpty());
}

TEST(RecordFacts, WhatIsNoRecordFileIsAnError) {
    EXPECT_EQ(ErrorOf(""), 62);
    EXPECT_EQ(ErrorOf("\r\n"), 62);
    EXPECT_EQ(ErrorOf("NOTES:\r\nonly notes\r\n"), 62);
    EXPECT_EQ(ErrorOf("TEST NUMBER: T1\r\nDATE: 03/07/24\r\n"), 62);
    EXPECT_EQ(ErrorOf("hello\r\n"), 13);
    EXPECT_EQ(ErrorOf(test::HeaderText() + "hello\r\n"), 13);
}

TEST(RecordFacts, EmptyLinesBetweenTheBlocksArePassedOver) {
    const std::string text = test::HeaderText() + "\r\n" + test::RecordText(1) + "  \r\n\r\n" +
                             test::RecordText(2) + "\r\nNOTES:\r\n\r\nREC NUMBER: 3\r\n\r\n";
    EXPECT_THAT(FactsOf(text).tests, SizeIs(2));
}

TEST(RecordFacts, ATestOfThreePointsHasNoKneepoints) {
    test::RecordParts parts;
    parts.points.resize(3);
    const RecordFacts facts = FactsOf(test::HeaderText() + test::RecordText(parts));
    for (const KneeFact& knee : facts.tests.at(0).knees)
        EXPECT_EQ(knee.printed, (Kneepoint{"N/A", "N/A"}));
}

TEST(RecordFacts, AHundredTestsAreRead) {
    EXPECT_EQ(ErrorOf(test::FileText(100)), 0);
    const RecordFacts facts = FactsOf(test::FileText(100));
    ASSERT_THAT(facts.tests, SizeIs(100));
    EXPECT_EQ(facts.tests.back().testNumber, "100");
    EXPECT_EQ(facts.tests.back().knees[0].printed, facts.tests.front().knees[0].printed);
}

TEST(RecordFacts, MorePointsThanATestHoldsIsAnError) {
    test::RecordParts parts;
    parts.points.assign(101, {"0.1000", "10.0"});
    parts.countText = " 50";
    EXPECT_EQ(ErrorOf(test::HeaderText() + test::RecordText(parts)), 0);
    parts.points.resize(102, {"0.1000", "10.0"});
    EXPECT_EQ(ErrorOf(test::HeaderText() + test::RecordText(parts)), 9);
}

TEST(RecordFacts, AVeryLargeValueIsAnOverflow) {
    test::RecordParts parts;
    parts.points = {{"1", "-1E308"}, {"2", "1E308"}, {"3", "-1E308"}, {"4", "1E308"}};
    EXPECT_EQ(ErrorOf(test::HeaderText() + test::RecordText(parts)), 6);
}

TEST(RecordFacts, AreJudgedWhenTheyAreShown) {
    std::string text = test::HeaderText();
    for (int i = 0; i < 3; ++i)
        text += test::RecordText({});
    const RecordFacts whole = ParseRecordFacts(text, "T1");
    RecordFacts facts = ParseRecordFacts(text, "T1", 0);
    EXPECT_THROW(FactOf(facts.tests.at(1), KneeRule::Ieee45), std::out_of_range);
    JudgeTests(facts, 1, 2);
    EXPECT_EQ(facts.tests.at(1).knees.at(1).printed, whole.tests.at(1).knees.at(1).printed);
    for (const std::size_t other : {0U, 2U})
        EXPECT_THAT(facts.tests.at(other).knees, IsEmpty());
    JudgeTests(facts);
    EXPECT_EQ(RecordsAsCsv({facts}), RecordsAsCsv({whole}));
}

// A current above 10 A before the last pair uses the grid up: a report stops there.
TEST(RecordFacts, ACurveThatTheGridDoesNotFitIsRead) {
    test::RecordParts parts;
    parts.points = {{"9", "100"}, {"11", "200"}, {"12", "300"}, {"13", "310"}, {"14", "311"}};
    const std::string text = test::HeaderText() + test::RecordText(parts);
    EXPECT_THROW(ParseReportTables(text, "T1", RecordSource::RecordFile), RunTimeError);
    EXPECT_THAT(FactsOf(text).tests.at(0).points, SizeIs(5));
}

// Panel and report agree on every test; returns how many kneepoints there are.
int ExpectSameTests(const RecordFacts& facts, const ReportTables& report) {
    EXPECT_EQ(facts.tests.size(), report.tests.size());
    int kneepoints = 0;
    for (int slot = 0; slot < report.TestCount(); ++slot) {
        const RecordTest& test = facts.tests.at(static_cast<std::size_t>(slot));
        const auto result = [&](ResultColumn column) { return report.tables.Result(slot, column); };
        EXPECT_EQ(test.testNumber, result(ResultColumn::TestNumber));
        EXPECT_EQ(test.nameplateRatio, result(ResultColumn::NameplateRatio));
        EXPECT_EQ(test.measuredRatio, result(ResultColumn::MeasuredRatio));
        EXPECT_EQ(test.percentError, result(ResultColumn::PercentError));
        EXPECT_EQ(test.polarity, result(ResultColumn::Polarity));
        EXPECT_EQ(test.phase, result(ResultColumn::Phase));
        const RecordFileHeader& header = facts.headers.at(test.header);
        const ReportTest& reported = report.tests.at(static_cast<std::size_t>(slot));
        EXPECT_EQ(header.testNumber, reported.header.testNumber);
        EXPECT_EQ(header.date, reported.header.date);
        EXPECT_EQ(header.fields, reported.header.fields);
        for (const KneeFact& knee : test.knees) {
            EXPECT_EQ(knee.printed, report.tables.Knee(knee.rule, slot));
            EXPECT_EQ(knee.reason.empty(), knee.At().has_value());
            kneepoints += knee.At() ? 1 : 0;
        }
    }
    return kneepoints;
}

// The points of a report's slot are the panel's with the grid's between them.
void ExpectSamePoints(const RecordFacts& facts, ReportTables& report) {
    for (int slot = 0; slot < report.TestCount(); ++slot) {
        std::vector<double> current;
        std::vector<double> voltage;
        for (const CurvePoint& point : facts.tests.at(static_cast<std::size_t>(slot)).points) {
            current.push_back(point.current);
            voltage.push_back(point.voltage);
        }
        const std::vector<CurvePoint> points = WithGridPoints(current, voltage);
        ASSERT_EQ(report.tables.PointCount(slot), std::ssize(points));
        for (int i = 0; const CurvePoint& point : points) {
            EXPECT_EQ(report.tables.Current(slot, i), point.current);
            EXPECT_EQ(report.tables.Voltage(slot, i), point.voltage);
            ++i;
        }
    }
}

void ExpectAgreement(const std::string& text, std::size_t tests) {
    ReportTables report = ParseReportTables(text, "T0012", RecordSource::RecordFile);
    const RecordFacts facts = FactsOf(text);
    EXPECT_THAT(facts.tests, SizeIs(tests));
    EXPECT_EQ(ExpectSameTests(facts, report), static_cast<int>(3 * tests));
    ExpectSamePoints(facts, report);
}

TEST(PanelAndReport, AgreeOnALineBeforeTheKneePointType) {
    std::string text = test::FileText(2);
    text.insert(text.find("KNEE POINT TYPE"), "SOMETHING NEW: 5\r\n");
    ExpectAgreement(text, 2);
}

TEST(PanelAndReport, AgreeOnANumberThatIsNotWhole) {
    test::RecordParts parts;
    parts.number = " 1.5";
    ExpectAgreement(test::HeaderText() + test::RecordText(parts) + test::RecordText(2), 2);
}

TEST(PanelAndReport, AgreeOnTwoFilesJoinedIntoOne) {
    test::RecordParts parts;
    parts.measuredRatio = "99.5";
    const std::string text =
        test::FileText(2) + test::HeaderText("T0013", "Valley") + test::RecordText(parts);
    ExpectAgreement(text, 3);
    const RecordFacts facts = FactsOf(text);
    EXPECT_EQ(facts.headers.at(facts.tests.at(0).header).fields[1], "Hilltop");
    EXPECT_EQ(facts.headers.at(facts.tests.at(2).header).fields[1], "Valley");
}

TEST(RecordFacts, RandomRecordsHaveTheTextsOfTheirReport) {
    constexpr int kFiles = 400;
    test::RecordSource source(test::RandomSeed(20261121));
    int compared = 0;
    int kneepoints = 0;
    for (int n = 0; n < kFiles; ++n) {
        const std::string text = source.File();
        ReportTables report;
        try {
            report = ParseReportTables(text, "T0012", RecordSource::RecordFile);
        } catch (const RunTimeError&) {
            continue;  // the grid did not fit
        }
        ++compared;
        const RecordFacts facts = FactsOf(text);
        EXPECT_EQ(facts.headers.at(0).date, report.tests[0].header.date);
        EXPECT_EQ(facts.headers.at(0).time, report.tests[0].header.time);
        EXPECT_EQ(facts.headers.at(0).fields, report.tests[0].header.fields);
        kneepoints += ExpectSameTests(facts, report);
        ASSERT_FALSE(testing::Test::HasFailure()) << text;
    }
    std::cout << compared << " files, " << kneepoints << " kneepoints\n";
    EXPECT_GT(compared, kFiles / 2);
    EXPECT_GT(kneepoints, 500);
}

TEST(RecordFacts, TheShotsOfACaptureAreItsTests) {
    RecordImage image;
    image.kneeTypeCode = 1;
    image.phaseAngle = 1800;
    const test::PointTexts points = test::KneeCurve();
    for (std::size_t i = 0; i < points.size(); ++i) {
        // The highest point comes first.
        const auto& [current, voltage] = points[points.size() - 1 - i];
        image.slots[i] = {static_cast<int>(std::lround(std::stod(current) * 1e4)),
                          static_cast<int>(std::lround(std::stod(voltage) * 10))};
    }
    const std::string shot = "DATA" + EncodeRecordImage(image) +
                             "\r\nDONE\r\nMEASURED RATIO: 241.20\r\n"
                             "NAMEPLATE RATIO: 240 (1200:5)\r\nPERCENT ERROR: 0.50%\r\n\r\n";
    const std::vector<RecordTest> tests = TestsOfCapture(shot + shot + "DATA00");
    ASSERT_THAT(tests, SizeIs(2));
    const RecordTest inFile = FactsOf(test::FileText(1)).tests.at(0);
    EXPECT_EQ(tests[1].recordName, "");
    EXPECT_EQ(tests[1].testNumber, "2");
    EXPECT_EQ(tests[1].points, inFile.points);
    EXPECT_EQ(tests[1].phase, "OUT OF PHASE");
    EXPECT_EQ(tests[1].phaseAngle, "180.0");
    EXPECT_EQ(tests[1].nameplateRatio, "240 (1200:5)");
    for (std::size_t i = 0; i < kKneeRules.size(); ++i)
        EXPECT_EQ(tests[1].knees.at(i).printed, inFile.knees.at(i).printed);
    EXPECT_THAT(TestsOfCapture(""), IsEmpty());
    EXPECT_THAT(TestsOfCapture("DATA00"), IsEmpty());
}

TEST(RecordFacts, ASmoothKneepointIsANumberARangeOrNone) {
    KneeFact fact;
    EXPECT_EQ(SmoothText(fact), u"none"_s);
    fact.range = {26.1, 34.5};
    EXPECT_EQ(SmoothText(fact), u"26.1 to 34.5 V"_s);
    fact.range.reset();
    fact.smooth = {{0.1, 32.1}, 0.4};
    EXPECT_EQ(SmoothText(fact), u"32.1 \u00b1 0.4 V"_s);
}

}  // namespace
}  // namespace davo
