// SPDX-License-Identifier: GPL-3.0-or-later
// Group files: the two tests of an overlay, each behind its own header, every line a field that a
// comma has cut.

#include "common/run_time_error.h"
#include "reports/report_tables.h"
#include "tests/analysis/print_kneepoint.h"
#include "tests/support/record_text.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

using test::HeaderText;
using test::Line;
using test::RecordParts;
using test::RecordText;

ReportTables Parse(const std::string& text) {
    return ParseReportTables(text, kOverlayName, RecordSource::GroupFile);
}

// A header as it is in a group file: blanks dropped, the comment cut at its comma.
std::string CutHeader(const std::string& name, const std::string& station) {
    return Line("TEST NUMBER: " + name) + Line("DATE: 03/07/24") + Line("TIME: 14:05") +
           Line("# OF SHOTS: 02") + Line("COMPANY: Power & Light") + Line("STATION: " + station) +
           Line("CIRCUIT:") + Line("MFR: Acme") + Line("MODEL: CT-600") + Line("SN: 00012345") +
           Line("COMMENTS: a") + Line("b") + Line("c") + Line("OPERATOR: J. Doe");
}

TEST(GroupFile, HasTwoTestsWithTheirOwnHeaders) {
    ReportTables report = Parse(CutHeader("T1", "Hilltop") + RecordText(3) +
                                CutHeader("T2", "Valley") + RecordText(3));
    EXPECT_TRUE(report.isOverlay);
    EXPECT_EQ(report.reportName, "2Graphs");
    ASSERT_EQ(report.TestCount(), 2);
    EXPECT_EQ(report.tests[0].header.testNumber, "T1");
    EXPECT_EQ(report.tests[1].header.testNumber, "T2");
    EXPECT_EQ(report.tests[0].header.fields[1], "Hilltop");
    EXPECT_EQ(report.tests[1].header.fields[1], "Valley");
    EXPECT_EQ(report.tests[1].header.fields[2], "");
    EXPECT_EQ(report.tables.Result(1, ResultColumn::TestNumber), "3");
    EXPECT_EQ(report.tables.PointCount(1), test::kKneeCurvePoints);
}

TEST(GroupFile, WhatACommaCutOffBelongsToTheTextBefore) {
    RecordParts parts;
    parts.optionalLines = Line("TEST DESCRIPTION: wet") + Line("cold") + Line("TEST NOTES: x") +
                          Line("y") + Line("z");
    const ReportTables report = Parse(CutHeader("T1", "Hill") + RecordText(parts));
    EXPECT_EQ(report.tests[0].header.fields[6], "a, b, c");
    EXPECT_EQ(report.tests[0].header.fields[7], "J. Doe");
    EXPECT_EQ(report.tests[0].description, "wet, cold");
    EXPECT_EQ(report.tests[0].notes, "x, y, z");
}

TEST(GroupFile, TheLastLinesOfAHeaderMayHaveBeenCutOff) {
    // Twelve fields of a header with two commas end before its model.
    std::string header = Line("TEST NUMBER: T1") + Line("DATE: 03/07/24") + Line("TIME: 14:05") +
                         Line("# OF SHOTS: 02") + Line("COMPANY: A") + Line("B") + Line("C") +
                         Line("STATION: Hill") + Line("CIRCUIT: 4") + Line("MFR: Acme");
    ReportTables report = Parse(header + RecordText(1));
    EXPECT_EQ(report.tests[0].header.fields[0], "A, B, C");
    EXPECT_EQ(report.tests[0].header.fields[3], "Acme");
    EXPECT_EQ(report.tests[0].header.fields[4], "");
    EXPECT_EQ(report.tables.PointCount(0), test::kKneeCurvePoints);
}

TEST(GroupFile, AHeaderWithoutARecordIsAGraphWithoutData) {
    for (const bool first : {true, false}) {
        const std::string full = HeaderText("T1") + RecordText(1);
        const std::string bare = HeaderText("T2");
        ReportTables report = Parse(first ? bare + full : full + bare);
        ASSERT_EQ(report.TestCount(), 2);
        const int without = first ? 0 : 1;
        EXPECT_FALSE(report.tests[static_cast<std::size_t>(without)].hasRecord);
        EXPECT_TRUE(report.tests[static_cast<std::size_t>(1 - without)].hasRecord);
        EXPECT_EQ(report.tables.PointCount(without), 0);
        EXPECT_EQ(report.tables.PointCount(1 - without), test::kKneeCurvePoints);
        EXPECT_EQ(report.tables.Knee(KneeRule::Asa1050, without), (Kneepoint{"N/A", "N/A"}));
    }
    EXPECT_EQ(Parse(HeaderText("T1") + HeaderText("T2")).TestCount(), 2);
}

TEST(GroupFile, NotesOfTheFirstGraphEndAtTheSecondsHeader) {
    const ReportTables report =
        Parse(HeaderText("T1") + RecordText(1) + "NOTES:\r\nTEST NUMBER: none\r\nwet\r\n" +
              HeaderText("T2") + RecordText(2) + "NOTES:\r\ndry\r\n");
    ASSERT_EQ(report.TestCount(), 2);
    EXPECT_EQ(report.notes, ":::TEST NUMBER: none:::wet:::dry");
    EXPECT_EQ(report.tables.Result(1, ResultColumn::TestNumber), "2");
}

TEST(GroupFile, DamageStopsItAsWell) {
    const auto errorOf = [](const std::string& text) {
        return test::ErrorBy([&] { Parse(text); });
    };
    EXPECT_EQ(errorOf(""), 62);
    EXPECT_EQ(errorOf(HeaderText() + "REC NUMBER: 1\r\n"), 62);
    EXPECT_EQ(errorOf(HeaderText() + "REC NUMBER: 1\r\nCURRENT: 1\r\n"), 13);
    const std::string whole = HeaderText("T1") + RecordText(1) + HeaderText("T2") + RecordText(2);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const int error = errorOf(whole.substr(0, size));
        ASSERT_TRUE(error == 0 || error == 62 || error == 13) << size << " " << error;
    }
}

}  // namespace
}  // namespace davo
