// SPDX-License-Identifier: GPL-3.0-or-later
// What is in the way of davo-report: it is said, and the rest is made.

#include <fcntl.h>
#include <pty.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <array>
#include <csignal>

#include "common/run_time_error.h"
#include "reports/record_csv.h"
#include "reports/record_texts.h"
#include "tests/batch/report_program.h"
#include "tests/reports/record_damage.h"
#include "tests/support/random_rounds.h"
#include "tests/support/small_disk.h"

namespace davo {
namespace {

using test::Ended;
using test::NamesIn;
using test::PutRecord;
using test::Report;
using test::Said;
using test::Shell;

// The lines of what is said that name a file, each without what is behind the name.
QStringList Named(const Ended& run) {
    QStringList names;
    for (const QString& line : QString::fromStdString(run.err).split(u'\n', Qt::SkipEmptyParts)) {
        EXPECT_TRUE(line.startsWith(u"davo-report: "_s)) << line.toStdString();
        names += line.section(u' ', 1, 1);
    }
    return names;
}

TEST(Trouble, OfARecordIsSaidAndTheOthersAreMade) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"in/1.txt"_s, test::FileText(1));
    PutRecord(folder, u"in/2.txt"_s, "");
    PutRecord(folder, u"in/3.txt"_s, "no record\r\n");
    PutRecord(folder, u"in/4.txt"_s, test::HeaderText() + "REC NUMBER: 1\r\nCURRENT: 0.1");
    PutRecord(folder, u"in/5\x1b[2J.txt"_s, "");
    PutRecord(folder, u"in/6.txt"_s, test::FileText(1));
    ASSERT_EQ(::mkfifo(QFile::encodeName(folder.Path("in/7.txt")).constData(), 0666), 0);
    ASSERT_TRUE(QFile::link(folder.Path("gone.txt"), folder.Path("in/8.txt")));
    const Ended run = Report({u"--csv"_s, u"in"_s, u"none.txt"_s}, folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              Said("in/2.txt cannot be shown: the file is damaged. Run-time error '62': Input past "
                   "end of file: no test in the file") +
                  Said("in/3.txt cannot be shown: the file is damaged. Run-time error '13': Type "
                       "mismatch: line 1") +
                  Said("in/4.txt cannot be shown: the file is damaged. Run-time error '13': Type "
                       "mismatch: line 14") +
                  Said("in/5?[2J.txt cannot be shown: the file is damaged. Run-time error '62': "
                       "Input past end of file: no test in the file") +
                  Said("in/7.txt cannot be shown: it is not a file.") +
                  Said("in/8.txt cannot be shown: Run-time error '53': File not found: in/8.txt") +
                  Said("none.txt cannot be shown: Run-time error '53': File not found: none.txt"));
    EXPECT_TRUE(FileExists(folder.Path("in/1.csv")));
    EXPECT_TRUE(FileExists(folder.Path("in/6.csv")));
    EXPECT_FALSE(FileExists(folder.Path("in/2.csv")));
}

TEST(Trouble, OfAFileThatIsTooLargeIsSaidBeforeItIsRead) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"T1.txt"_s, test::FileText(1));
    PutRecord(folder, u"T2.txt"_s, test::FileText(1));
    // Most of it is in no block of the disk.
    ASSERT_TRUE(QFile::resize(folder.Path("T1.txt"), 16 * 1024 * 1024 + 1));
    ASSERT_TRUE(QFile::resize(folder.Path("T2.txt"), 1 << 30));
    const Ended run = Report({u"--csv"_s, u"-"_s, u"--no-heading"_s, u"."_s}, folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    const std::string why = " cannot be shown: it has more than 16 MB, and no record has.";
    EXPECT_EQ(run.err, Said("./T1.txt" + why) + Said("./T2.txt" + why));
}

// Fifteen times the tests that are read, of as many points as there can be.
TEST(Trouble, OfALargeRecordIsNotItsSize) {
    const test::TemporaryFolder folder;
    test::RecordParts parts;
    parts.points.resize(101, {"9.876", "1234.5"});
    std::string text = test::HeaderText();
    for (int i = 0; i < 3000; ++i)
        text += test::RecordText(parts);
    EXPECT_GT(text.size(), 9U * 1024 * 1024);
    PutRecord(folder, u"T1.txt"_s, text);
    const Ended run = Report({u"--csv"_s, u"-"_s, u"--no-heading"_s, u"."_s}, folder.Path());
    EXPECT_EQ(run.err, Said("./T1.txt: T1 has 3000 tests; the first 200 are written."));
    EXPECT_EQ(SplitLines(run.out).size(), 200U);
}

TEST(Trouble, OfMoreTestsThanAreReadIsSaid) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"T%2.txt"_s, test::FileText(201));
    const Ended run = Report({u"--csv"_s, u"-"_s, u"T%2.txt"_s}, folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, Said("T%2.txt: T%2 has 201 tests; the first 200 are written."));
    EXPECT_EQ(SplitLines(run.out).size(), 201U);
}

// count records in folders of 100; of each hundred one is damaged, so that it cannot be read.
QStringList PutDamagedArchive(const test::TemporaryFolder& folder, int count, std::size_t& tests) {
    test::RecordSource random(test::RandomSeed(20261130));
    test::Damage damage(random);
    QStringList damaged;
    for (int i = 0; i < count; ++i) {
        const QString name = u"in/%1/R%2.txt"_s.arg(i / 100, 4, 10, QLatin1Char('0')).arg(i);
        std::string text = test::HeaderText() + test::RecordText(random.Parts(1));
        if (i % 100 == 42) {
            for (bool isRead = true; isRead;) {
                const std::string bytes =
                    i % 200 == 42 ? damage.To(text)
                                  : text.substr(0, static_cast<std::size_t>(random.Below(
                                                       static_cast<int>(text.size()))));
                try {
                    ParseRecordFacts(bytes, "R");
                } catch (const RunTimeError&) {
                    isRead = false;
                    text = bytes;
                }
            }
            damaged += name;
        } else {
            tests += ParseRecordFacts(text, "R", 0).tests.size();
        }
        if (i % 100 == 0) QDir().mkpath(QFileInfo(folder.Path() + name).path());
        QFile file(folder.Path() + name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text.data(), static_cast<qint64>(text.size()));
    }
    return damaged;
}

TEST(Trouble, OfOneRecordInAHundredIsSaid) {
    const test::TemporaryFolder folder;
    const int count = test::TakesLong() ? 100'000 : 2'000;
    std::size_t tests = 0;
    const QStringList damaged = PutDamagedArchive(folder, count, tests);
    const QString measure =
        u"import resource, subprocess, sys\n"
        "ended = subprocess.run(sys.argv[1:]).returncode\n"
        "open('memory', 'w').write(str(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss))\n"
        "sys.exit(ended)"_s;
    const Ended run = test::RunProgram(QStringLiteral(DAVO_PYTHON),
                                       {u"-c"_s, measure, QStringLiteral(DAVO_REPORT), u"--csv"_s,
                                        u"-"_s, u"--no-heading"_s, u"in"_s},
                                       folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(Named(run), damaged);
    EXPECT_EQ(SplitLines(run.out).size(), tests);
    const int kilobytes = std::stoi(ReadWholeFile(folder.Path("memory")));
#ifndef __SANITIZE_ADDRESS__
    EXPECT_LT(kilobytes, 60'000);
#endif
    std::cout << count << " records, " << damaged.size() << " damaged, " << tests << " tests, "
              << kilobytes << " kB\n";
}

TEST(Trouble, OfADamagedRecordIsThatOfTheRecordPanel) {
    test::RecordSource random(test::RandomSeed(20261201));
    test::Damage damage(random);
    const test::TemporaryFolder folder;
    QStringList said;
    for (int i = 0; i < test::RandomRounds(10'000); ++i) {
        const QString name = u"in/R%1.txt"_s.arg(i, 6, 10, QLatin1Char('0'));
        const QString path = folder.Path() + name;
        PutRecord(folder, name, damage.To(test::HeaderText() + test::RecordText(random.Parts(1))));
        try {
            ReadRecordFacts(path);
        } catch (const RunTimeError& error) {
            said += u"davo-report: "_s + TroubleText(name, error);
        }
    }
    const Ended run = Report({u"--csv"_s, u"--out"_s, u"out"_s, u"in"_s}, folder.Path());
    EXPECT_EQ(run.err, said.join(u'\n').toStdString() + "\n");
    EXPECT_EQ(NamesIn(folder, "out").size() + said.size(), NamesIn(folder, "in").size());
    EXPECT_GT(said.size(), 100);
    for (const QString& name : NamesIn(folder, "out")) {
        const QString record = folder.Path("in/") + name.chopped(4) + u".txt"_s;
        ASSERT_EQ(ReadWholeFile(folder.Path("out/") + name),
                  RecordsAsCsv({ReadRecordFacts(record)}));
    }
}

TEST(Trouble, OfAFullDiskIsSaidAndNoHalfFileIsLeft) {
    if (!test::SmallDisk::Can()) GTEST_SKIP() << "only root can have a small disk";
    const test::TemporaryFolder folder;
    PutRecord(folder, u"T1.txt"_s, test::FileText(31));
    ASSERT_TRUE(QDir().mkpath(folder.Path("disk")));
    test::SmallDisk disk(folder.Path("disk"));
    const QStringList arguments = {u"--csv"_s,     u"--xlsx"_s, u"--pdf"_s, u"--html"_s,
                                   u"--summary"_s, u"--out"_s,  u"disk"_s,  u"T1.txt"_s};
    disk.Fill();
    Ended run = Report(arguments, folder.Path());
    EXPECT_EQ(run.status, 1);
    const auto said = [](const std::string& why) {
        std::string text;
        for (const std::string name : {"T1.csv", "T1.xlsx", "T1.pdf", "T1.html", "summary.html"})
            text += Said("disk/" + name + " is not made: " + why + "disk/" + name);
        return text;
    };
    EXPECT_EQ(run.err, said("Run-time error '61': Disk full: "));
    EXPECT_EQ(NamesIn(folder, "disk"), QStringList(u"rest"_s));
    disk.Protect();
    run = Report(arguments, folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, said("Run-time error '70': Permission denied: "));
}

TEST(Trouble, OfADiskThatIsFullInTheMiddleOfAFileIsSaidAndNoHalfFileIsLeft) {
    if (!test::SmallDisk::Can()) GTEST_SKIP() << "only root can have a small disk";
    const test::TemporaryFolder folder;
    PutRecord(folder, u"T1.txt"_s, test::FileText(5));
    ASSERT_TRUE(QDir().mkpath(folder.Path("disk")));
    const test::SmallDisk disk(folder.Path("disk"));
    for (const QString& format : {u"csv"_s, u"html"_s, u"pdf"_s, u"xlsx"_s}) {
        SCOPED_TRACE(format.toStdString());
        const QString name = u"disk/T1."_s + format;
        int refused = 0;
        Ended run;
        for (int room = 0; room < 16 && run.status != 0; ++room, ++refused) {
            QFile rest(folder.Path("disk/rest"));
            ASSERT_TRUE(rest.open(QIODevice::WriteOnly));
            ASSERT_EQ(rest.write(QByteArray((15 - room) * 4096, 'x')), (15 - room) * 4096);
            rest.close();
            run = Report({u"--"_s + format, u"--out"_s, u"disk"_s, u"T1.txt"_s}, folder.Path());
            const bool isMade = run.status == 0;
            EXPECT_EQ(run.err, isMade ? ""
                                      : Said(name.toStdString() +
                                             " is not made: Run-time error '61': Disk full: " +
                                             name.toStdString()));
            QStringList names = {u"rest"_s};
            if (isMade) names.prepend(u"T1."_s + format);
            EXPECT_EQ(NamesIn(folder, "disk"), names);
        }
        EXPECT_EQ(run.status, 0);
        EXPECT_GT(refused, 1);
        EXPECT_EQ(Report({u"--"_s + format, u"T1.txt"_s}, folder.Path()).status, 0);
        // The other two have the time in them.
        if (format == u"csv"_s || format == u"html"_s) {
            EXPECT_EQ(ReadWholeFile(folder.Path() + name),
                      ReadWholeFile(folder.Path("T1.") + format));
        }
        DeleteFile(folder.Path() + name);
    }
}

TEST(Trouble, OfMissingRightsIsSaid) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can be another";
    const test::TemporaryFolder folder;
    PutRecord(folder, u"in/closed/T1.txt"_s, test::FileText(1));
    PutRecord(folder, u"in/T2.txt"_s, test::FileText(1));
    PutRecord(folder, u"in/T3.txt"_s, test::FileText(1));
    PutRecord(folder, u"in/listed/folder/T4.txt"_s, test::FileText(1));
    // Where a build that counts its lines writes them.
    ASSERT_TRUE(QDir().mkpath(folder.Path("counts")));
    for (const auto& [name, mode] : {std::pair{"", 0755},
                                     {"in", 0755},
                                     {"in/closed", 0700},
                                     {"in/listed", 0744},
                                     {"in/T2.txt", 0600},
                                     {"in/T3.txt", 0644},
                                     {"counts", 0777}})
        ::chmod(QFile::encodeName(folder.Path(name)).constData(), static_cast<mode_t>(mode));
    const Ended run = Shell(
        u"GCOV_PREFIX=$PWD/counts exec setpriv --reuid=65534 --clear-groups $DAVO_REPORT "
        "--csv in"_s,
        folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(
        run.err,
        Said("in/T2.txt cannot be shown: Run-time error '70': Permission denied: in/T2.txt") +
            Said("in/T3.csv is not made: Run-time error '70': Permission denied: in/T3.csv") +
            Said("in/closed/ cannot be shown: Run-time error '70': Permission denied: in/closed/") +
            Said("in/listed/ cannot be shown: Run-time error '70': Permission denied: in/listed/"));
    EXPECT_EQ(NamesIn(folder, "in"),
              QStringList({u"T2.txt"_s, u"T3.txt"_s, u"closed"_s, u"listed"_s}));
}

TEST(Trouble, OfANameThatIsNoUtf8IsSaid) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"T1.txt"_s, test::FileText(1));
    // What is so named the folder's end could not remove.
    const Ended run = Shell(
        u"mkdir -p in/S$'\\xFC'd && cp T1.txt in/S$'\\xFC'd && cp T1.txt in/$'\\xFC'.txt && "
        "cp T1.txt in/$'\\xFC' && LC_ALL=C.UTF-8 $DAVO_REPORT --csv - --no-heading in; status=$?; "
        "rm -r in; exit $status"_s,
        folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    const std::string unknown = "\xEF\xBF\xBD";
    const std::string said = " cannot be shown: its name is not in UTF-8.";
    EXPECT_THAT(SplitLines(run.err),
                UnorderedElementsAre("davo-report: in/S" + unknown + "d" + said,
                                     "davo-report: in/" + unknown + ".txt" + said,
                                     "davo-report: in/" + unknown + said));
}

TEST(Trouble, OfARunThatIsEndedLeavesNoHalfFile) {
    const test::TemporaryFolder folder;
    for (int i = 0; i < 500; ++i)
        PutRecord(folder, u"in/%1.txt"_s.arg(i), test::FileText(1));
    for (int round = 0; round < 20; ++round) {
        const int signal = round % 2 == 0 ? SIGINT : SIGTERM;
        const QString out = u"out%1"_s.arg(round);
        QProcess process;
        process.setWorkingDirectory(folder.Path());
        process.start(QStringLiteral(DAVO_REPORT),
                      {u"--csv"_s, u"--summary"_s, u"--out"_s, out, u"in"_s});
        ASSERT_TRUE(process.waitForStarted());
        while (NamesIn(folder, out.toUtf8()).size() < 10 + round)
            ASSERT_FALSE(process.waitForFinished(1))
                << process.readAllStandardError().toStdString();
        ::kill(static_cast<pid_t>(process.processId()), signal);
        ASSERT_TRUE(process.waitForFinished(60'000));
        EXPECT_EQ(process.exitStatus(), QProcess::CrashExit);
        EXPECT_EQ(process.exitCode(), signal);
        EXPECT_EQ(process.readAllStandardError(), "");
        const QStringList made = NamesIn(folder, out.toUtf8());
        EXPECT_LT(made.size(), 500);
        for (const QString& name : made)
            EXPECT_TRUE(name.endsWith(u".csv"_s)) << name.toStdString();
    }
}

TEST(Trouble, OfStandardOutputIsSaidOnce) {
    const test::TemporaryFolder folder;
    for (int i = 0; i < 300; ++i)
        PutRecord(folder, u"in/%1.txt"_s.arg(i), test::FileText(2));
    const Ended run = Shell(u"$DAVO_REPORT --csv - in >/dev/full"_s, folder.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, Said("Run-time error '61': Disk full: standard output"));
}

TEST(Trouble, OfStandardOutputIsThatOfHelpAndVersionToo) {
    for (const QString& option : {u"--help"_s, u"--version"_s}) {
        const Ended full = Shell(u"$DAVO_REPORT %1 >/dev/full"_s.arg(option), QDir::tempPath());
        EXPECT_EQ(full.status, 1);
        EXPECT_EQ(full.err, Said("Run-time error '61': Disk full: standard output"));
        const Ended closed = Shell(u"$DAVO_REPORT %1 >&-"_s.arg(option), QDir::tempPath());
        EXPECT_EQ(closed.status, 1);
        EXPECT_EQ(closed.err, Said("Run-time error '57': Device I/O error: standard output"));
    }
}

TEST(Trouble, OfAReaderThatIsGoneEndsQuietly) {
    const test::TemporaryFolder folder;
    for (int i = 0; i < 2000; ++i)
        PutRecord(folder, u"in/%1.txt"_s.arg(i), test::FileText(1));
    for (const QString& before : {u""_s, u"trap '' PIPE; "_s}) {
        const Ended run = Shell(before + u"$DAVO_REPORT --csv - in | head -n 2"_s, folder.Path());
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(SplitLines(run.out).size(), 2U);
    }
}

TEST(Trouble, OfAnUnusualLocaleIsNotSaid) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"\u00FC.txt"_s, test::FileText(1));
    const Ended run = Shell(u"LC_ALL=C $DAVO_REPORT --csv --summary *.txt"_s, folder.Path());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(NamesIn(folder), QStringList({u"summary.html"_s, u"\u00FC.csv"_s, u"\u00FC.txt"_s}));
}

// What a run with these arguments shows on a terminal that is its standard error.
std::string ShownOnTerminal(const QStringList& arguments, const QString& folder, bool outputToo) {
    int master = -1;
    int terminal = -1;
    EXPECT_EQ(::openpty(&master, &terminal, nullptr, nullptr, nullptr), 0);
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setChildProcessModifier([terminal, outputToo] {
        ::dup2(terminal, STDERR_FILENO);
        if (outputToo) ::dup2(terminal, STDOUT_FILENO);
    });
    process.start(QStringLiteral(DAVO_REPORT), arguments);
    EXPECT_TRUE(process.waitForStarted());
    ::fcntl(master, F_SETFL, O_NONBLOCK);
    std::string shown;
    std::array<char, 4096> bytes{};
    const auto read = [&] {
        for (ssize_t got = 0; (got = ::read(master, bytes.data(), bytes.size())) > 0;)
            shown.append(bytes.data(), static_cast<std::size_t>(got));
    };
    while (!process.waitForFinished(10))
        read();
    read();
    ::close(terminal);
    ::close(master);
    return shown;
}

TEST(Progress, IsShownOnATerminalAndNowhereElse) {
    const test::TemporaryFolder folder;
    PutRecord(folder, u"in/T1.txt"_s, test::FileText(1));
    PutRecord(folder, u"in/T2.txt"_s, "");
    const QStringList arguments = {u"--csv"_s, u"-"_s, u"in"_s};
    const std::string shown = ShownOnTerminal(arguments, folder.Path(), false);
    const std::string first = "Record 1: in/T1.txt";
    const std::string blank(79, ' ');
    EXPECT_THAT(shown, StartsWith("\r" + first + std::string(79 - first.size(), ' ') + "\r" +
                                  blank + "\rdavo-report: in/T2.txt cannot be shown"));
    EXPECT_THAT(shown, EndsWith("\n"));
    EXPECT_THAT(Report(arguments, folder.Path()).err, Not(HasSubstr("\r")));
    EXPECT_THAT(ShownOnTerminal(arguments, folder.Path(), true), Not(HasSubstr("Record 1: ")));
}

TEST(Progress, ShowsTheEndOfALongPath) {
    const test::TemporaryFolder folder;
    const QString name = u"in/"_s + QString(90, u'x') + u"/T1.txt"_s;
    PutRecord(folder, name, test::FileText(1));
    const QString shown = u"Record 1: "_s + name.right(69);
    EXPECT_THAT(ShownOnTerminal({u"--csv"_s, u"-"_s, u"in"_s}, folder.Path(), false),
                StartsWith("\r" + shown.toStdString() + "\r"));
}

}  // namespace
}  // namespace davo
