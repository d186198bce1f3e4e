// SPDX-License-Identifier: GPL-3.0-or-later
// The rows that davo-report writes to standard output.

#include <QStandardPaths>
#include <algorithm>

#include "common/text.h"
#include "reports/record_csv.h"
#include "tests/batch/report_program.h"
#include "tests/reports/random_record.h"
#include "tests/support/random_seed.h"

namespace davo {
namespace {

using test::Ended;
using test::NamesIn;
using test::PutRecord;
using test::Report;
using test::Shell;

// Records of one to 31 tests in three folders.
void PutArchive(const test::TemporaryFolder& folder, int records, std::uint64_t preset) {
    test::RecordSource random(test::RandomSeed(preset));
    for (int i = 0; i < records; ++i) {
        PutRecord(folder, u"in/%1/R%2.txt"_s.arg(i % 3).arg(i), random.File());
    }
}

std::vector<std::string> SortedLines(const std::string& text) {
    std::vector<std::string> lines = SplitLines(text);
    std::sort(lines.begin(), lines.end());
    return lines;
}

TEST(Rows, HaveOneHeadingAndARowForEachTest) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"a/T1.txt"_s, test::FileText(2));
    PutRecord(folder, u"b/T2.txt"_s, test::FileText(1));
    const Ended run = Report({u"--csv"_s, u"-"_s, u"b/T2.txt"_s, u"a"_s}, folder.Path());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const std::string header =
        ",03/07/24,14:05,Power & Light,Hilltop,Feeder 4,Acme,CT-600,00012345,\"a: b, c\",J. Doe,";
    const std::string results =
        ",7,24.1,0.075,26.8,0.082,29.9,0.090,240 (1200:5),241.20,0.50%,IN PHASE,IN PHASE,1.5\n";
    EXPECT_EQ(run.out,
              "file,record,date,time,company,station,circuit,manufacturer,model,serial_number,"
              "comments,operator,test,points,asa_10_50_V,asa_10_50_A,ieee_45_V,ieee_45_A,ieee_30_V,"
              "ieee_30_A,nameplate_ratio,measured_ratio,percent_error,polarity,phase,phase_deg\n"
              "b/T2.txt,T2" +
                  header + "1" + results + "a/T1.txt,T1" + header + "1" + results + "a/T1.txt,T1" +
                  header + "2" + results);
    EXPECT_EQ(NamesIn(folder, "a"), QStringList(u"T1.txt"_s));
}

TEST(Rows, AreOneLineWhateverTheNameOfTheRecord) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"a\nb/T\r\n\x1b.txt"_s, test::FileText(1));
    const Ended run = Report({u"--csv"_s, u"-"_s, u"--no-heading"_s, u"."_s}, folder.Path());
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out, StartsWith("./a?b/T???.txt,T???,03/07/24,"));
    EXPECT_EQ(SplitLines(run.out).size(), 1U);
}

TEST(Rows, HaveWhatTheTableOfTheRecordHas) {
    const test::TemporaryFolder folder;
    PutArchive(folder, 60, 20261126);
    PutRecord(folder, u"in/=1+1, \"\u00FC\".txt"_s,
              test::HeaderText("T", "=\xFC\x80\"x\", y") + test::RecordText());
    // A workbook cannot hold some of the curves.
    for (const std::string& line : SplitLines(
             Report({u"--csv"_s, u"--xlsx"_s, u"--out"_s, u"out"_s, u"in"_s}, folder.Path()).err))
        EXPECT_THAT(line, HasSubstr(".xlsx is not made: Run-time error '9'"));
    for (const QString& judge : {u""_s, u" --judge"_s}) {
        SCOPED_TRACE(judge.toStdString());
        const Ended run = Shell(u"$DAVO_REPORT --csv - in >rows.csv"_s + judge, folder.Path());
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(run.status, 0);
        const Ended held =
            test::RunProgram(QStringLiteral(DAVO_PYTHON),
                             {QStringLiteral(DAVO_TESTS_FOLDER "/batch/hold_rows.py"),
                              u"rows.csv"_s, u"out"_s, QString::number(judge.isEmpty() ? 24 : 36)},
                             folder.Path());
        EXPECT_EQ(held.status, 0) << held.err;
        std::cout << held.out;
    }
}

TEST(Rows, OfSeveralRunsAreThoseOfOne) {
    const test::TemporaryFolder folder;
    PutArchive(folder, 30, 20261127);
    const std::string whole = Report({u"--csv"_s, u"-"_s, u"in"_s}, folder.Path()).out;
    const Ended parts = Shell(
        u"$DAVO_REPORT --csv - in/0 && "
        "for i in 1 2; do $DAVO_REPORT --csv - --no-heading in/$i; done"_s,
        folder.Path());
    EXPECT_EQ(parts.err, "");
    EXPECT_EQ(parts.out, whole);
}

TEST(Rows, OfParallelRunsAreThoseOfOne) {
    if (QStandardPaths::findExecutable(u"parallel"_s).isEmpty()) GTEST_SKIP() << "no parallel";
    const test::TemporaryFolder folder;
    PutArchive(folder, 300, 20261128);
    const std::string whole =
        Report({u"--csv"_s, u"-"_s, u"--no-heading"_s, u"in"_s}, folder.Path()).out;
    ASSERT_GT(SplitLines(whole).size(), 300U);
    // As the guide has it, with as many jobs as there are cores.
    const Ended run = Shell(
        u"find in -iname '*.txt' | "
        "parallel --will-cite -n 20 $DAVO_REPORT --csv - --no-heading"_s,
        folder.Path());
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(SortedLines(run.out), SortedLines(whole));
}

// The machines are shells of this one; what would reach them gets the machine's name and a command.
TEST(Rows, OfRunsOnSeveralMachinesAreThoseOfOne) {
    if (QStandardPaths::findExecutable(u"parallel"_s).isEmpty()) GTEST_SKIP() << "no parallel";
    const test::TemporaryFolder folder;
    PutArchive(folder, 200, 20261203);
    PutRecord(folder, u"shell"_s,
              "#!/bin/bash\necho \"$1\" >>" + folder.Path("machines").toStdString() +
                  "\nwhile [ \"$1\" != -- ]; do shift; done; shift; exec bash -c \"$*\"\n");
    const std::string whole =
        Report({u"--csv"_s, u"-"_s, u"--no-heading"_s, u"in"_s}, folder.Path()).out;
    const Ended run = Shell(
        u"chmod +x shell; "
        "find in -iname '*.txt' -print0 | parallel --will-cite -0 -n 20 "
        "--ssh \"$PWD/shell\" -S 1/north,1/south --workdir . $DAVO_REPORT --csv - --no-heading"_s,
        folder.Path());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(SortedLines(run.out), SortedLines(whole));
    EXPECT_THAT(SortedLines(ReadWholeFile(folder.Path("machines"))),
                IsSupersetOf({"north", "south"}));
}

TEST(Rows, OfRunsThatAppendToOneFileDoNotMix) {
    const test::TemporaryFolder folder;
    PutArchive(folder, 600, 20261129);
    const std::string whole =
        Report({u"--csv"_s, u"-"_s, u"--no-heading"_s, u"in"_s}, folder.Path()).out;
    const Ended run = Shell(
        u"find in -iname '*.txt' -print0 | "
        "xargs -0 -P 4 -n 150 $DAVO_REPORT --csv - --no-heading >>rows.csv"_s,
        folder.Path());
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(SortedLines(ReadWholeFile(folder.Path("rows.csv"))), SortedLines(whole));
}

}  // namespace
}  // namespace davo
