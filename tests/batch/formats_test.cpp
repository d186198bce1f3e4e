// SPDX-License-Identifier: GPL-3.0-or-later
// The files that davo-report makes, and where.

#include <unistd.h>

#include <QFile>

#include "reports/page/html.h"
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
using test::Said;
using test::Shell;

TEST(ReportFiles, AreAllMadeByOneCall) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"T1.txt"_s, test::FileText(2));
    const Ended run = Report({u"--csv"_s, u"--xlsx"_s, u"--summary"_s, u"--pdf"_s, u"--html"_s,
                              u"--rule"_s, u"30"_s, u"T1.txt"_s},
                             folder.Path());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(NamesIn(folder), QStringList({u"T1.csv"_s, u"T1.html"_s, u"T1.pdf"_s, u"T1.txt"_s,
                                            u"T1.xlsx"_s, u"summary.html"_s}));
    const RecordFacts facts = ReadRecordFacts(folder.Path("T1.txt"));
    EXPECT_EQ(ReadWholeFile(folder.Path("T1.html")),
              CertificateAsHtml(CertificateOf(facts, KneeRule::Ieee30), UsualPaper()));
    EXPECT_THAT(ReadWholeFile(folder.Path("T1.pdf")), StartsWith("%PDF"));
    EXPECT_EQ(ReadWholeFile(folder.Path("T1.csv")),
              RecordsAsCsv({ReadRecordFacts(folder.Path("T1.txt"))}));
    EXPECT_THAT(ReadWholeFile(folder.Path("T1.xlsx")), StartsWith("PK"));
    EXPECT_THAT(ReadWholeFile(folder.Path("summary.html")), HasSubstr("href=\"T1.xlsx\""));
}

TEST(ReportFiles, AreThoseOfTheRecordPanel) {
    const test::TemporaryFolder folder;
    test::RecordSource random(test::RandomSeed(20261125));
    for (int i = 0; i < 40; ++i)
        PutRecord(folder, u"in/R%1.txt"_s.arg(i), random.File());
    EXPECT_EQ(Report({u"--csv"_s, u"--out"_s, u"out"_s, u"in"_s}, folder.Path()).err, "");
    for (const QString& name : NamesIn(folder, "in")) {
        const QString made = folder.Path("out/") + name.chopped(4) + u".csv"_s;
        ASSERT_EQ(ReadWholeFile(made), RecordsAsCsv({ReadRecordFacts(folder.Path("in/") + name)}));
    }
}

TEST(ReportFiles, AreOfEachRecordInAFolderAndInFoldersInIt) {
    const test::TemporaryFolder folder;
    for (const QString& name :
         {u"in/b/T1.txt"_s, u"in/a/deep/T1.txt"_s, u"in/T2.TXT"_s, u"in/a.txt/T3.txt"_s,
          u"in/.hidden.txt"_s, u"in/T4.txt.old"_s, u"in/\u00FC \u20AC.txt"_s}) {
        PutRecord(folder, name, test::FileText(1));
    }
    PutRecord(folder, u"in/notes.doc"_s, "no record");
    PutRecord(folder, u"elsewhere/T9.txt"_s, test::FileText(1));
    ASSERT_TRUE(QFile::link(folder.Path("elsewhere"), folder.Path("in/link")));
    ASSERT_TRUE(QFile::link(folder.Path("in"), folder.Path("in/round")));
    const Ended run = Report({u"--csv"_s, u"--out"_s, u"new/out"_s, u"in/"_s}, folder.Path());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(NamesIn(folder, "new/out"),
              QStringList({u".hidden.csv"_s, u"T2.csv"_s, u"T4.csv"_s, u"a"_s, u"a.txt"_s, u"b"_s,
                           u"\u00FC \u20AC.csv"_s}));
    EXPECT_EQ(NamesIn(folder, "new/out/a/deep"), QStringList(u"T1.csv"_s));
    EXPECT_EQ(NamesIn(folder, "new/out/a.txt"), QStringList(u"T3.csv"_s));
    EXPECT_EQ(NamesIn(folder, "new/out/b"), QStringList(u"T1.csv"_s));
    EXPECT_EQ(Report({u"--csv"_s, u"in/link"_s}, folder.Path()).status, 0);
    EXPECT_EQ(NamesIn(folder, "elsewhere"), QStringList({u"T9.csv"_s, u"T9.txt"_s}));
}

TEST(ReportFiles, AreKeptUnlessForced) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"T1.txt"_s, test::FileText(1));
    PutRecord(folder, u"T1.csv"_s, "old");
    PutRecord(folder, u"summary.html"_s, "old");
    const QStringList arguments = {u"--csv"_s, u"--xlsx"_s, u"--summary"_s, u"T1.txt"_s};
    const Ended run = Report(arguments, folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, Said("T1.csv is kept. --force replaces it.") +
                           Said("summary.html is kept. --force replaces it."));
    EXPECT_EQ(ReadWholeFile(folder.Path("T1.csv")), "old");
    EXPECT_EQ(ReadWholeFile(folder.Path("summary.html")), "old");
    EXPECT_TRUE(FileExists(folder.Path("T1.xlsx")));
    const Ended forced = Report(arguments + QStringList(u"--force"_s), folder.Path());
    EXPECT_EQ(forced.status, 0);
    EXPECT_EQ(forced.err, "");
    EXPECT_NE(ReadWholeFile(folder.Path("T1.csv")), "old");
}

TEST(ReportFiles, AreNotMadeTwiceInARun) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"T1.txt"_s, test::FileText(1));
    PutRecord(folder, u"T1.TXT"_s, test::FileText(2));
    const Ended run = Report({u"--csv"_s, u"--force"_s, u"T1.TXT"_s, u"T1.txt"_s}, folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, Said("T1.csv is that of an earlier record of this run."));
    EXPECT_EQ(ReadWholeFile(folder.Path("T1.csv")),
              RecordsAsCsv({ReadRecordFacts(folder.Path("T1.TXT"))}));
}

TEST(ReportFiles, AreTwoWhereNamesDifferInCapitalsOnly) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"in/T1.txt"_s, test::FileText(1));
    PutRecord(folder, u"in/t1.txt"_s, test::FileText(2));
    const QStringList arguments = {u"--csv"_s, u"--force"_s, u"--out"_s, u"out"_s, u"in"_s};
    EXPECT_EQ(Report(arguments, folder.Path()).err, "");
    for (const char* const name : {"T1", "t1"}) {
        EXPECT_EQ(
            ReadWholeFile(folder.Path("out/") + QLatin1String(name) + u".csv"_s),
            RecordsAsCsv({ReadRecordFacts(folder.Path("in/") + QLatin1String(name) + u".txt"_s)}));
    }
    // As on a disk to which both names are one.
    DeleteFile(folder.Path("out/t1.csv"));
    ASSERT_TRUE(QFile::link(u"T1.csv"_s, folder.Path("out/t1.csv")));
    const Ended run = Report(arguments, folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, Said("out/t1.csv is that of an earlier record of this run."));
    EXPECT_EQ(ReadWholeFile(folder.Path("out/T1.csv")),
              RecordsAsCsv({ReadRecordFacts(folder.Path("in/T1.txt"))}));
}

TEST(ReportFiles, AreNoRecordsThemselves) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"a.txt"_s, test::FileText(1));
    PutRecord(folder, u"a.txt.txt"_s, test::FileText(1));
    for (int round = 0; round < 2; ++round) {
        const Ended run =
            Report({u"--csv"_s, u"--html"_s, u"--xlsx"_s, u"--force"_s, u"."_s}, folder.Path());
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(run.status, 0);
    }
    EXPECT_EQ(NamesIn(folder),
              QStringList({u"a.csv"_s, u"a.html"_s, u"a.txt"_s, u"a.txt.csv"_s, u"a.txt.html"_s,
                           u"a.txt.txt"_s, u"a.txt.xlsx"_s, u"a.xlsx"_s}));
    // What is named is read, whatever its name.
    EXPECT_EQ(Report({u"--csv"_s, u"-"_s, u"a.txt.csv"_s}, folder.Path()).status, 1);
}

TEST(ReportFiles, AreLinkedFromTheirOwnRecordOnly) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"a/T1.txt"_s, test::FileText(1));
    PutRecord(folder, u"b/T1.txt"_s, test::FileText(2));
    PutRecord(folder, u"out/T1.csv"_s, "of a/T1.txt");
    const Ended run =
        Report({u"--csv"_s, u"--summary"_s, u"--out"_s, u"out"_s, u"a"_s, u"b"_s}, folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, Said("out/T1.csv is kept. --force replaces it.") +
                           Said("out/T1.csv is that of an earlier record of this run."));
    const QString page = QString::fromStdString(ReadWholeFile(folder.Path("out/summary.html")));
    EXPECT_EQ(page.count(u"href=\"T1.csv\""_s), 1);
}

// What Python prints of a workbook, which is $1.
std::string Printed(const QString& script, const QString& workbook) {
    const Ended run =
        test::RunProgram(QStringLiteral(DAVO_PYTHON), {u"-c"_s, script, workbook}, {});
    EXPECT_EQ(run.status, 0) << run.err;
    return run.out;
}

TEST(ReportFiles, MarkTheKneepointOfTheRule) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"T1.txt"_s, test::FileText(1));
    std::set<std::string> pages;
    std::set<std::string> charts;
    for (const QString& rule : {u"asa"_s, u"45"_s, u"30"_s}) {
        EXPECT_EQ(
            Report({u"--summary"_s, u"--xlsx"_s, u"--rule"_s, rule, u"--out"_s, rule, u"T1.txt"_s},
                   folder.Path())
                .status,
            0);
        pages.insert(ReadWholeFile(folder.Path() + rule + u"/summary.html"_s));
        charts.insert(
            Printed(u"import sys, zipfile\n"
                    "print(zipfile.ZipFile(sys.argv[1]).read('xl/charts/chart1.xml'))"_s,
                    folder.Path() + rule + u"/T1.xlsx"_s));
    }
    EXPECT_EQ(pages.size(), 3U);
    EXPECT_EQ(charts.size(), 3U);
    // Without an option it is ASA 10/50.
    EXPECT_EQ(Report({u"--summary"_s, u"--xlsx"_s, u"T1.txt"_s, u"--out=asa"_s, u"--force"_s},
                     folder.Path())
                  .status,
              0);
    EXPECT_THAT(ReadWholeFile(folder.Path("asa/summary.html")),
                HasSubstr("kneepoints by ASA 10/50."));
}

TEST(ReportFiles, HaveTheImpedanceWhereItIsAskedFor) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"T1.txt"_s, test::FileText(1));
    const auto numbers = [&](const QStringList& options) {
        EXPECT_EQ(
            Report(QStringList({u"--xlsx"_s, u"--force"_s, u"T1.txt"_s}) + options, folder.Path())
                .status,
            0);
        const QString script =
            u"import sys, openpyxl\n"
            "sheet = openpyxl.load_workbook(sys.argv[1]).worksheets[0]\n"
            "print(sum(isinstance(row[3], (int, float)) for row in list(sheet.values)[18:]))"_s;
        return Printed(script, folder.Path("T1.xlsx"));
    };
    EXPECT_EQ(numbers({}), "0\n");
    EXPECT_EQ(numbers({u"--impedance"_s}), std::to_string(test::kKneeCurvePoints) + "\n");
}

TEST(ReportFiles, AreMadeWhereAnotherFormatIsNot) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"T1.txt"_s, test::FileText(32));
    const Ended run = Report({u"--csv"_s, u"--xlsx"_s, u"T1.txt"_s}, folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              Said("T1.xlsx is not made: a workbook has at most 31 tests, and the record has "
                   "32. The other formats have them."));
    EXPECT_EQ(NamesIn(folder), QStringList({u"T1.csv"_s, u"T1.txt"_s}));
}

TEST(ReportFiles, AreXlsWhereThereIsCalc) {
    if (!FolderExists(u"/usr/lib/libreoffice/program"_s)) GTEST_SKIP() << "no LibreOffice Calc";
    const test::TemporaryFolder folder;
    PutRecord(folder, u"T1.txt"_s, test::FileText(1));
    PutRecord(folder, u"T2.txt"_s, test::FileText(2));
    const Ended run = Report({u"--xls"_s, u"."_s}, folder.Path());
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    for (const char* const name : {"T1.xls", "T2.xls"})
        EXPECT_THAT(ReadWholeFile(folder.Path(name)), StartsWith("\xD0\xCF\x11\xE0"));
}

TEST(ReportFiles, AreNotXlsWhereThereIsNoCalc) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can hide LibreOffice Calc";
    const test::TemporaryFolder folder;
    PutRecord(folder, u"T1.txt"_s, test::FileText(1));
    const Ended run = Shell(
        u"exec unshare --mount sh -c '[ ! -d /usr/lib/libreoffice ] || "
        "mount -t tmpfs none /usr/lib/libreoffice; "
        "exec $DAVO_REPORT --xls --csv T1.txt'"_s,
        folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, Said("No .xls is made: that needs LibreOffice Calc or Microsoft Excel."));
    EXPECT_EQ(NamesIn(folder), QStringList({u"T1.csv"_s, u"T1.txt"_s}));
}

}  // namespace
}  // namespace davo
