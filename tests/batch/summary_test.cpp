// SPDX-License-Identifier: GPL-3.0-or-later
// The page of all records.

#include "batch/summary_page.h"

#include "records/directory_entry.h"
#include "tests/batch/report_program.h"
#include "tests/reports/random_record.h"
#include "tests/support/random_seed.h"

namespace davo {
namespace {

using test::Ended;
using test::PutRecord;
using test::Report;

// What a reader of HTML and the page's own script make of the page.
Ended ReadPage(const test::TemporaryFolder& folder, const QStringList& arguments) {
    return test::RunProgram(
        QStringLiteral(DAVO_PYTHON),
        QStringList{QStringLiteral(DAVO_TESTS_FOLDER "/batch/read_summary.py")} + arguments,
        folder.Path());
}

TEST(SummaryPage, HasARowForEachTest) {
    const test::TemporaryFolder folder;
    test::RecordSource random(test::RandomSeed(20261202));
    for (int i = 0; i < 30; ++i)
        PutRecord(folder, u"in/%1/R %2.txt"_s.arg(i % 3).arg(i), random.File());
    PutRecord(folder, u"in/<b>&\".txt"_s,
              test::HeaderText("T", "<script>\"&") + test::RecordText());
    EXPECT_EQ(
        Report({u"--summary"_s, u"--csv"_s, u"--out"_s, u"out"_s, u"in"_s}, folder.Path()).err, "");
    test::Shell(u"$DAVO_REPORT --csv - --judge in >rows.csv"_s, folder.Path());
    const Ended held = ReadPage(folder, {u"hold"_s, u"out/summary.html"_s, u"rows.csv"_s});
    EXPECT_EQ(held.status, 0) << held.err;
    std::cout << held.out;
}

TEST(SummaryPage, NamesWhatIsNotInIt) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"T1.txt"_s, test::HeaderText());
    PutRecord(folder, u"T2.txt"_s, "");
    EXPECT_EQ(Report({u"--summary"_s, u"."_s}, folder.Path()).status, 1);
    const std::string page = ReadWholeFile(folder.Path("summary.html"));
    EXPECT_THAT(page, HasSubstr("<p>Records: 1. Tests: 0.</p>"));
    EXPECT_THAT(page, HasSubstr(">T1</td><td colspan=\"18\">There is no test in it.</td></tr>"));
    EXPECT_THAT(page, HasSubstr("<h2>Not in the table</h2>\n<ul>\n<li>./T2.txt cannot be shown: "));
    EXPECT_THAT(page, Not(HasSubstr("<svg")));
    EXPECT_THAT(page, Not(HasSubstr("<!-- % -->")));
}

TEST(SummaryPage, DrawsTheFirstCurvesAndSaysIt) {
    SummaryPage page(KneeRule::Ieee30, {});
    const RecordFacts record = ParseRecordFacts(test::FileText(150), "T1");
    for (int i = 0; i < 2; ++i)
        page.Add(record, {}, {});
    EXPECT_THAT(page.Html(),
                HasSubstr("<p>Records: 2. Tests: 300. The chart has 300 of 300 curves and marks "
                          "the kneepoints by IEEE 30.</p>"));
    page.Add(record, {}, {});
    const std::string html = page.Html();
    EXPECT_THAT(html,
                HasSubstr("<p>Records: 3. Tests: 450. The chart has 400 of 450 curves and marks "
                          "the kneepoints by IEEE 30.</p>"));
    EXPECT_THAT(html, HasSubstr("<a href=\"#t1\"><title>T1 Test 1</title><polyline "));
    EXPECT_THAT(html, HasSubstr("href=\"#t400\""));
    // Each ink of the chart has a colour for a bright screen and one for a dark screen.
    EXPECT_THAT(html, HasSubstr(".i15{--ink:var(--i15)}"));
    EXPECT_EQ(QString::fromStdString(html).count(u"--i15:#"_s), 2);
    // So many are thin.
    EXPECT_THAT(html, Not(HasSubstr("stroke-width=\"0.45\"")));
    EXPECT_THAT(html, Not(HasSubstr("href=\"#t401\"")));
    EXPECT_THAT(html, HasSubstr("<tr id=\"t450\">"));
}

TEST(SummaryPage, SortsByAHeading) {
    const test::TemporaryFolder folder;
    const auto put = [&](const QString& name, const char* date, const char* ratio) {
        test::RecordParts parts;
        parts.measuredRatio = ratio;
        PutRecord(folder, name, test::RecordFileText("T", {date, "S", test::RecordText(parts)}));
    };
    put(u"T1.txt"_s, "03/07/24", "9.50");
    put(u"T2.txt"_s, "01/02/25", "100.25");
    put(u"T10.txt"_s, "12/31/23", "N/A");
    EXPECT_EQ(Report({u"--summary"_s, u"."_s}, folder.Path()).err, "");
    const auto order = [&](const QString& presses) {
        return ReadPage(folder, {u"sort"_s, u"summary.html"_s, presses}).out;
    };
    EXPECT_EQ(order({}), "T1 T10 T2\n");
    EXPECT_EQ(order(u"Record"_s), "T1 T2 T10 ascending\n");
    EXPECT_EQ(order(u"Record,Record"_s), "T10 T2 T1 descending\n");
    EXPECT_EQ(order(u"Date"_s), "T10 T1 T2 ascending\n");
    EXPECT_EQ(order(u"Ratio"_s), "T1 T2 T10 ascending\n");
    EXPECT_EQ(order(u"Ratio,Ratio"_s), "T2 T1 T10 descending\n");
    EXPECT_EQ(order(u"Ratio,Date"_s), "T10 T1 T2 ascending\n");
}

}  // namespace
}  // namespace davo
