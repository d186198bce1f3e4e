#include "records/directory_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <csignal>

#include "common/run_time_error.h"

namespace davo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string RecordText(const std::string& date, const std::string& comments = "",
                       const std::string& lineEnd = "\r\n") {
    std::string text;
    for (const std::string& line :
         {std::string("TEST NUMBER: T"), "DATE: " + date, std::string("TIME: 14:05"),
          std::string("# OF SHOTS: 03"), std::string("COMPANY: ACME"),
          std::string("STATION: NORTH  "), std::string("CIRCUIT: C12"), std::string("MFR: ABB"),
          std::string("MODEL: M-1"), std::string("SN: 12345"), "COMMENTS: " + comments,
          std::string("OPERATOR: DOE"), std::string("REC NUMBER: 1")}) {
        text += line + lineEnd;
    }
    return text;
}

std::string EntryText(const std::string& name, const std::string& date,
                      const std::string& comments = "") {
    return name + "!" + date + " 14:05TESTS=03COMPANY=ACMESTATION=NORTH  CIRCUIT=C12MFR=ABB" +
           "MODEL=M-1SN=12345OPERATOR= DOECOMMENTS= " + comments;
}

ErrorNumber NumberThrownBy(const std::function<void()>& action) {
    try {
        action();
    } catch (const RunTimeError& error) {
        return error.Number();
    }
    ADD_FAILURE() << "nothing thrown";
    return ErrorNumber::Automation;
}

class DirectoryFile : public testing::Test {
  protected:
    DirectoryFile() : dataPath(folder_.path() + QLatin1String("/Shots_Data/")) {
        QDir().mkpath(dataPath);
    }

    void Write(const QString& name, const std::string& bytes) const {
        QFile file(dataPath + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes.data(), static_cast<qint64>(bytes.size())),
                  static_cast<qint64>(bytes.size()));
    }
    void Write(const char* name, const std::string& bytes) const {
        Write(QString::fromUtf8(name), bytes);
    }
    std::string Listing() const {
        QFile file(dataPath + QLatin1String("DIRDNLD.DNL"));
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "missing";
    }
    QStringList Names() const {
        return QDir(dataPath).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    RebuildResult Rebuild() { return RebuildDirectory(dataPath, tables); }

    QTemporaryDir folder_;
    QString dataPath;
    DirectoryTables tables;
};

TEST_F(DirectoryFile, AnEmptyFolderHasNoRecordsAndNoDirectoryFile) {
    Write("DIRDNLD.DNL", "REC==001\r\nOLD!\r\n");
    tables.dirBaseNames = {"OLD"};
    tables.dirEntries = {"OLD!"};
    tables.recordCount = 1;
    const RebuildResult result = Rebuild();
    EXPECT_EQ(result.count, 0);
    EXPECT_THAT(result.skipped, IsEmpty());
    EXPECT_EQ(result.notListed, 0);
    EXPECT_TRUE(Names().isEmpty());
    EXPECT_THAT(tables.dirBaseNames, IsEmpty());
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 0);
    EXPECT_THAT(RowsForList(tables, tables.recordCount), IsEmpty());
}

TEST_F(DirectoryFile, AMissingFolderIsAnEmptyOne) {
    EXPECT_EQ(RebuildDirectory(dataPath + QLatin1String("none/"), tables).count, 0);
    EXPECT_FALSE(QDir(dataPath + QLatin1String("none")).exists());
}

TEST_F(DirectoryFile, ListsTheNewestFirst) {
    Write("A.txt", RecordText("03/09/21"));
    Write("B.txt", RecordText("12/31/99"));
    Write("C.txt", RecordText("11/21/26"));
    const RebuildResult result = Rebuild();
    EXPECT_EQ(result.count, 3);
    const std::string a = EntryText("A", "03/09/21");
    const std::string b = EntryText("B", "12/31/99");
    const std::string c = EntryText("C", "11/21/26");
    EXPECT_EQ(Listing(), "REC==003\r\n" + c + "\r\n" + a + "\r\n" + b + "\r\n");
    EXPECT_THAT(tables.dirEntries, ElementsAre(c, a, b));
    EXPECT_THAT(tables.dirEntriesNew, ElementsAre(c, a, b));
    EXPECT_THAT(tables.dirFileNames, ElementsAre(QStringLiteral("C.txt"), QStringLiteral("A.txt"),
                                                 QStringLiteral("B.txt")));
    EXPECT_THAT(tables.dirDates,
                ElementsAre(QDate(2026, 11, 21), QDate(2021, 3, 9), QDate(1999, 12, 31)));
    EXPECT_THAT(tables.dirBaseNames, ElementsAre("A", "B", "C"));
    EXPECT_THAT(tables.dirStations, ElementsAre("NORTH", "NORTH", "NORTH"));
    EXPECT_EQ(tables.recordCount, 0);
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 3);
    EXPECT_THAT(tables.dirEntries, ElementsAre(c, a, b));
}

TEST_F(DirectoryFile, ASingleRecordIsListedWhateverItsDate) {
    for (const char* date : {"03/09/21", "99/99/99", ""}) {
        Write("A.txt", RecordText(date));
        const RebuildResult result = Rebuild();
        EXPECT_EQ(result.count, 1) << date;
        EXPECT_THAT(result.skipped, IsEmpty()) << date;
        const std::string shown = *date == '\0' ? "DATE: " : date;
        EXPECT_EQ(Listing(), "REC==001\r\n" + EntryText("A", shown) + "\r\n");
    }
    EXPECT_THAT(tables.dirDates, ElementsAre(kNoRecordDate));
}

TEST_F(DirectoryFile, RecordsOfOneDayStandTogetherInTheOrderOfTheirNames) {
    Write("b.txt", RecordText("03/09/21"));
    Write("C.txt", RecordText("12/31/99"));
    Write("a.txt", RecordText("03/09/21"));
    Write("B.txt", RecordText("03/09/21"));
    Rebuild();
    EXPECT_THAT(tables.dirFileNames, ElementsAre(QStringLiteral("B.txt"), QStringLiteral("a.txt"),
                                                 QStringLiteral("b.txt"), QStringLiteral("C.txt")));
}

TEST_F(DirectoryFile, EveryNameThatHoldsTheExtensionAnywhereIsARecord) {
    Write("NOTES.TXT.BAK", RecordText("03/09/21"));
    Write("x.Txt", RecordText("03/09/21"));
    Write("notes.text", RecordText("03/09/21"));
    Write("txt", RecordText("03/09/21"));
    EXPECT_EQ(Rebuild().count, 2);
    EXPECT_EQ(Listing(), "REC==002\r\n" + EntryText("NOTES", "03/09/21") + "\r\n" +
                             EntryText("x", "03/09/21") + "\r\n");
    EXPECT_THAT(tables.dirFileNames,
                ElementsAre(QStringLiteral("NOTES.txt"), QStringLiteral("x.txt")));
}

TEST_F(DirectoryFile, WhatCannotBeSummedUpIsSkippedWithItsReason) {
    Write("a.txt", RecordText("03/09/21"));
    Write("b.txt", "");
    Write("c.txt", "1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n8\r\n9\r\n10\r\n11\r\n");
    Write("d.txt", RecordText("02/30/21"));
    QDir().mkpath(dataPath + QLatin1String("e.txt"));
    ASSERT_TRUE(QFile::link(dataPath + QLatin1String("gone"), dataPath + QLatin1String("f.txt")));
    ASSERT_EQ(mkfifo(QFile::encodeName(dataPath + QLatin1String("g.txt")).constData(), 0600), 0);
    const QString greek = QStringLiteral("\u03A9.txt");
    Write(greek, RecordText("03/09/21"));
    Write("h.txt", std::string(1000000, 'x'));
    const RebuildResult result = Rebuild();
    EXPECT_EQ(result.count, 1);
    EXPECT_THAT(result.skipped,
                ElementsAre(SkippedFile{QStringLiteral("b.txt"), SkipReason::TooFewLines},
                            SkippedFile{QStringLiteral("c.txt"), SkipReason::TooFewLines},
                            SkippedFile{QStringLiteral("d.txt"), SkipReason::NoDate},
                            SkippedFile{QStringLiteral("e.txt"), SkipReason::Unreadable},
                            SkippedFile{QStringLiteral("f.txt"), SkipReason::Unreadable},
                            SkippedFile{QStringLiteral("g.txt"), SkipReason::Unreadable},
                            SkippedFile{QStringLiteral("h.txt"), SkipReason::TooFewLines},
                            SkippedFile{greek, SkipReason::NameOutsidePage}));
    EXPECT_EQ(Listing(), "REC==001\r\n" + EntryText("a", "03/09/21") + "\r\n");
}

TEST_F(DirectoryFile, OnlyDamagedRecordsLeaveNoDirectoryFile) {
    Write("DIRDNLD.DNL", "REC==001\r\nOLD!\r\n");
    Write("a.txt", RecordText("no date"));
    Write("b.txt", RecordText("no date"));
    const RebuildResult result = Rebuild();
    EXPECT_EQ(result.count, 0);
    EXPECT_EQ(result.skipped.size(), 2U);
    EXPECT_EQ(Listing(), "missing");
}

TEST(SkipReasonText, SaysEachReason) {
    EXPECT_EQ(SkipReasonText(SkipReason::Unreadable), QStringLiteral("cannot be read"));
    EXPECT_EQ(SkipReasonText(SkipReason::TooFewLines),
              QStringLiteral("has fewer than twelve lines"));
    EXPECT_EQ(SkipReasonText(SkipReason::NoDate),
              QStringLiteral("has no date of the form MM/DD/YY"));
    EXPECT_EQ(SkipReasonText(SkipReason::NameOutsidePage),
              QStringLiteral("has a name with characters that a record list cannot hold"));
}

TEST_F(DirectoryFile, LineEndsMayBeBareAndTheTwelfthMayBeMissing) {
    Write("a.txt", RecordText("03/09/21", "short", "\n"));
    std::string text = RecordText("03/09/21", "", "\n");
    text.resize(text.find("\nREC NUMBER"));
    Write("b.txt", text);
    EXPECT_EQ(Rebuild().count, 2);
    EXPECT_EQ(Listing(), "REC==002\r\n" + EntryText("a", "03/09/21", "short") + "\r\n" +
                             EntryText("b", "03/09/21") + "\r\n");
}

TEST_F(DirectoryFile, LongHeaderLinesAreReadToTheirEnd) {
    std::string text = RecordText("03/09/21");
    text.insert(text.find("\r\nDATE"), std::string(20000, 'x'));
    Write("a.txt", text);
    EXPECT_EQ(Rebuild().count, 1);
    EXPECT_EQ(Listing(), "REC==001\r\n" + EntryText("a", "03/09/21") + "\r\n");
}

TEST_F(DirectoryFile, EightBitNamesAndTextsStayBytes) {
    Write("M\u00FCller \u20AC.txt", RecordText("03/09/21", "\xE9\x80\xFF\x81"));
    Rebuild();
    EXPECT_EQ(Listing(), "REC==001\r\n" +
                             EntryText("M\xFCller \x80", "03/09/21", "\xE9\x80\xFF\x81") + "\r\n");
    EXPECT_THAT(tables.dirFileNames, ElementsAre(QString::fromUtf8("M\u00FCller \u20AC.txt")));
}

TEST_F(DirectoryFile, AMarkInANameEndsItInTheList) {
    Write("A!B.txt", RecordText("03/09/21"));
    Rebuild();
    EXPECT_THAT(tables.dirFileNames, ElementsAre(QStringLiteral("A.txt")));
    EXPECT_EQ(RowsForList(tables, 1).at(0).date, "B!03/09/");
}

TEST_F(DirectoryFile, NoMoreThan250AreListedAndTheRestIsCounted) {
    for (int i = 0; i < 254; ++i) {
        const std::string text = i == 7 ? "damaged" : RecordText("03/09/21");
        Write(QStringLiteral("T%1.txt").arg(i, 3, 10, QLatin1Char('0')), text);
    }
    const RebuildResult result = Rebuild();
    EXPECT_EQ(result.count, 250);
    EXPECT_EQ(result.notListed, 3);
    EXPECT_THAT(result.skipped,
                ElementsAre(SkippedFile{QStringLiteral("T007.txt"), SkipReason::TooFewLines}));
    EXPECT_EQ(Listing().substr(0, 10), "REC==250\r\n");
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 250);
    EXPECT_EQ(tables.dirFileNames.front(), QStringLiteral("T000.txt"));
    EXPECT_EQ(tables.dirFileNames.back(), QStringLiteral("T250.txt"));
    EXPECT_EQ(RowsForList(tables, tables.recordCount).size(), 250U);
}

TEST_F(DirectoryFile, NoFileStaysOpen) {
    Write("a.txt", RecordText("03/09/21"));
    Write("b.txt", "short");
    const auto open = [] { return QDir(QStringLiteral("/proc/self/fd")).entryList().size(); };
    const auto before = open();
    Rebuild();
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(open(), before);
}

TEST_F(DirectoryFile, RowsComeFromTheTableThatIsShown) {
    tables.dirEntries = {"FOLDER!"};
    tables.dirEntriesNew = {"MEMORY!"};
    EXPECT_EQ(RowsForList(tables, 1).at(0).filename, "FOLDER");
    tables.recordsFromInstrument = true;
    EXPECT_EQ(RowsForList(tables, 1).at(0).filename, "MEMORY");
}

TEST_F(DirectoryFile, LoadReadsAsManyLinesAsTheFirstSays) {
    Write("DIRDNLD.DNL", "REC==003\r\nA!\r\nB!\r\nC!\r\nD!\r\n");
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 3);
    EXPECT_THAT(tables.dirEntries, ElementsAre("A!", "B!", "C!"));
}

TEST_F(DirectoryFile, LoadReadsTheFirstLineAsOneField) {
    Write("DIRDNLD.DNL", " \"REC==002\",004\nA!,\"x\"\nB!\n");
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 2);
    EXPECT_THAT(tables.dirEntries, ElementsAre("A!,\"x\"", "B!"));
    Write("DIRDNLD.DNL", "1\nA!\n");
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 1);
    Write("DIRDNLD.DNL", "REC==000\r\n");
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 0);
}

TEST_F(DirectoryFile, LoadWithoutTheFileClearsTheCountOnly) {
    tables.recordCount = 2;
    tables.dirEntries = {"A!", "B!"};
    LoadDirectoryFile(dataPath, tables);
    EXPECT_EQ(tables.recordCount, 0);
    EXPECT_THAT(tables.dirEntries, ElementsAre("A!", "B!"));
}

TEST_F(DirectoryFile, ADamagedFileIsAnErrorAndChangesNothing) {
    struct Damage {
        const char* bytes;
        ErrorNumber number;
    };
    for (const Damage& damage : {Damage{"", ErrorNumber::InputPastEnd},
                                 Damage{"REC==002\r\nA!\r\n", ErrorNumber::InputPastEnd},
                                 Damage{"\r\nA!\r\n", ErrorNumber::TypeMismatch},
                                 Damage{"REC==\r\nA!\r\n", ErrorNumber::TypeMismatch},
                                 Damage{",001\r\nA!\r\n", ErrorNumber::TypeMismatch},
                                 Damage{"REC==251\r\n", ErrorNumber::SubscriptOutOfRange},
                                 Damage{"REC==1E9\r\n", ErrorNumber::SubscriptOutOfRange},
                                 Damage{"REC==-01\r\n", ErrorNumber::SubscriptOutOfRange}}) {
        Write("DIRDNLD.DNL", damage.bytes);
        tables.recordCount = 2;
        tables.dirEntries = {"A!", "B!"};
        EXPECT_EQ(NumberThrownBy([&] { LoadDirectoryFile(dataPath, tables); }), damage.number)
            << damage.bytes;
        EXPECT_EQ(tables.recordCount, 2);
        EXPECT_THAT(tables.dirEntries, ElementsAre("A!", "B!"));
    }
}

// Refuses to let any file of this process grow beyond limit bytes while it lives.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t limit) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &old_);
        const rlimit small = {limit, old_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    rlimit old_ = {};
    void (*handler_)(int);
};

TEST_F(DirectoryFile, AFailedWriteLeavesTheOldFileAndTheTables) {
    Write("a.txt", RecordText("03/09/21"));
    Rebuild();
    const std::string before = Listing();
    for (int i = 0; i < 20; ++i) {
        Write(QStringLiteral("T%1.txt").arg(i), RecordText("03/09/21"));
    }
    const QStringList names = Names();
    {
        const FileSizeLimit limit(1000);
        EXPECT_EQ(NumberThrownBy([&] { Rebuild(); }), ErrorNumber::DiskFull);
    }
    EXPECT_EQ(Listing(), before);
    EXPECT_EQ(Names(), names);
    EXPECT_THAT(tables.dirEntries, ElementsAre(EntryText("a", "03/09/21")));
    EXPECT_THAT(tables.dirBaseNames, ElementsAre("a"));
    EXPECT_EQ(Rebuild().count, 21);
}

TEST_F(DirectoryFile, WhatSaysTheSameIsNotWrittenAgain) {
    Write("a.txt", RecordText("03/09/21"));
    Rebuild();
    {
        const FileSizeLimit nothing(0);
        EXPECT_EQ(Rebuild().count, 1);
        Write("b.txt", "");
        EXPECT_EQ(Rebuild().skipped.size(), 1U);
    }
    Write("DIRDNLD.DNL", Listing() + "x");
    Rebuild();
    EXPECT_EQ(Listing(), "REC==001\r\n" + EntryText("a", "03/09/21") + "\r\n");
}

TEST_F(DirectoryFile, AFolderInThePlaceOfTheFileIsAnError) {
    QDir().mkpath(dataPath + QLatin1String("DIRDNLD.DNL/x"));
    Write("a.txt", RecordText("03/09/21"));
    EXPECT_EQ(NumberThrownBy([&] { Rebuild(); }), ErrorNumber::PermissionDenied);
    EXPECT_THAT(tables.dirEntries, IsEmpty());
}

TEST_F(DirectoryFile, AKillAtAnyInstantLeavesTheOldFileOrTheNew) {
    for (int i = 0; i < 100; ++i) {
        Write(QStringLiteral("T%1.txt").arg(i), RecordText("03/09/21"));
    }
    Write("U.txt", RecordText("03/09/21"));
    Rebuild();
    const std::string with = Listing();
    QFile::remove(dataPath + QLatin1String("U.txt"));
    Rebuild();
    const std::string without = Listing();
    ASSERT_NE(with, without);

    for (int round = 0; round < 30; ++round) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            for (;;) {
                Write("U.txt", RecordText("03/09/21"));
                Rebuild();
                QFile::remove(dataPath + QLatin1String("U.txt"));
                Rebuild();
            }
        }
        usleep(static_cast<useconds_t>(5000 + 1777 * round));
        kill(child, SIGKILL);
        ASSERT_EQ(waitpid(child, nullptr, 0), child);
        const std::string found = Listing();
        EXPECT_TRUE(found == with || found == without) << found.size();
    }
}

}  // namespace
}  // namespace davo
