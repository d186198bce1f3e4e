// SPDX-License-Identifier: GPL-3.0-or-later
#include <signal.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <chrono>
#include <thread>

#include "common/files.h"
#include "common/run_time_error.h"
#include "reports/renderer.h"
#include "reports/report_writer.h"
#include "tests/reports/workbook_view.h"
#include "tests/support/program_output.h"
#include "tests/support/random_rounds.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

// What goes wrong around LibreOffice Calc, and that nothing of it is left behind.

namespace davo::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kTemplate = DAVO_TESTS_FOLDER "/../packaging/template/DAVO_Header.xls";
constexpr const char* kSoffice = "/usr/lib/libreoffice/program/soffice.bin";

// The engines whose parent is process parent.
std::vector<pid_t> EnginesOf(qint64 parent) {
    std::vector<pid_t> engines;
    for (const QString& name : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
        QFile file(u"/proc/"_s + name + u"/stat"_s);
        if (name.toInt() == 0 || !file.open(QIODevice::ReadOnly)) continue;
        const QByteArray stat = file.readAll();
        const QList<QByteArray> behind = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        if (stat.contains("(soffice.bin)") && behind.at(1).toLongLong() == parent)
            engines.push_back(name.toInt());
    }
    return engines;
}

bool Becomes(const std::function<bool()>& condition, std::chrono::milliseconds patience = 10s) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

bool IsGone(qint64 pid) {
    return ::kill(static_cast<pid_t>(pid), 0) != 0;
}

QStringList ProfileFolders() {
    const QString cache =
        QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + u"/davo"_s;
    return QDir(cache).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
}

Workbook ReportOf(int tests) {
    return BuildReport(ParseFile(FileText(tests)), {"IEEE 30 Degree Marker", true});
}

// Makes disk a folder with a file system of its own; false where that is not allowed.
bool Mount(const QString& disk, const QStringList& options) {
    if (!QDir().mkpath(disk)) return false;
    QStringList arguments{u"-t"_s, u"tmpfs"_s};
    arguments << options << u"tmpfs"_s << disk;
    return QProcess::execute(u"mount"_s, arguments) == 0;
}

// An engine that is slow because the machine is busy must not count as one that hangs.
constexpr auto kPatience = 10min;

std::unique_ptr<ReportRenderer> RendererOf(std::chrono::milliseconds patience) {
    CalcSettings settings;
    settings.patience = patience;
    return MakeCalcRenderer(settings);
}

class CalcFaultsTest : public testing::Test {
  protected:
    void SetUp() override { MakeRenderer(kPatience); }

    void MakeRenderer(std::chrono::milliseconds patience) {
        renderer_ = RendererOf(patience);
        ASSERT_TRUE(renderer_);
    }

    // The fixture's own renderer, or the one that its cases share.
    virtual ReportRenderer& Renderer() { return *renderer_; }

    bool Render(const RenderProgress& progress = {}, const std::stop_token& stop = {}) {
        return Renderer().Render(ReportOf(4), template_, target_, progress, stop);
    }

    // The error of a report that fails; the earlier workbook must be what it was.
    std::string ErrorOf(ErrorNumber number) {
        const bool hadOne = FileExists(target_);
        const std::string before = hadOne ? ReadWholeFile(target_) : std::string();
        const auto error = Thrown([this] { Render(); });
        EXPECT_EQ(FileExists(target_), hadOne);
        EXPECT_EQ(hadOne ? ReadWholeFile(target_) : std::string(), before);
        EXPECT_EQ(error.value().Number(), number) << error->what();
        return error->what();
    }

    void ExpectWorkbook() { EXPECT_TRUE(ReadWholeFile(target_).starts_with("\xd0\xcf\x11\xe0")); }

    TemporaryFolder folder_;
    QString template_ = QLatin1String(kTemplate);
    QString target_ = folder_.Path("T0012.xls");
    std::unique_ptr<ReportRenderer> renderer_;
};

// What is refused leaves the engine as it was, so that one of them is asked by all these cases.
class CalcRefusesTest : public CalcFaultsTest {
  protected:
    static void SetUpTestSuite() { shared_ = RendererOf(kPatience); }
    static void TearDownTestSuite() { shared_.reset(); }
    void SetUp() override { ASSERT_TRUE(shared_); }

    ReportRenderer& Renderer() override { return *shared_; }

  private:
    static inline std::unique_ptr<ReportRenderer> shared_;
};

TEST_F(CalcFaultsTest, BeginsAgainWhenTheEngineIsKilledAtAnyPoint) {
    ASSERT_TRUE(Render());
    constexpr int kPoints = 10;
    Share share(kPoints);
    for (int point = 0; point < kPoints; ++point) {
        if (!share.Takes()) continue;
        SCOPED_TRACE(point);
        ReplaceFile(target_, "old");
        const auto engines = EnginesOf(::getpid());
        ASSERT_EQ(engines.size(), 1U);
        std::jthread killer([&] {
            std::this_thread::sleep_for(point * 25ms);
            ::kill(engines.front(), SIGKILL);
        });
        EXPECT_TRUE(Render());
        killer.join();
        ExpectWorkbook();
        ASSERT_TRUE(Render());  // by then a new one is there even if the kill came late
    }
}

TEST_F(CalcFaultsTest, BeginsAgainWhenTheEngineIsKilledAtEachSheet) {
    ASSERT_TRUE(Render());
    constexpr int kSheets = 4;
    Share share(kSheets);
    for (int sheet = 1; sheet <= kSheets; ++sheet) {
        if (!share.Takes()) continue;
        bool isKilled = false;
        int begun = 0;
        EXPECT_TRUE(Render([&](int n, int) {
            begun += n == 1 ? 1 : 0;
            if (n != sheet || isKilled) return;
            isKilled = true;
            ::kill(EnginesOf(::getpid()).at(0), SIGKILL);
        }));
        EXPECT_EQ(begun, 2);
        ExpectWorkbook();
    }
}

// What writes the workbook runs in the engine; after an engine that ended, in this program.
TEST_F(CalcFaultsTest, MakesTheSameAfterTheEngineWasKilled) {
    // A file says when it was made.
    const auto readBack = [this] {
        const QString script = QStringLiteral(DAVO_TESTS_FOLDER "/reports/read_back_xls.py");
        return OutputOf(u"/usr/bin/python3"_s, {script, target_});
    };
    ASSERT_TRUE(Render());
    const QByteArray first = readBack();
    bool isKilled = false;
    ASSERT_TRUE(Render([&](int, int) {
        if (!isKilled) ::kill(EnginesOf(::getpid()).at(0), SIGKILL);
        isKilled = true;
    }));
    EXPECT_GT(first.size(), 1000);
    EXPECT_EQ(readBack(), first);
}

TEST_F(CalcFaultsTest, GivesUpWhenTheEngineIsKilledTwice) {
    ReplaceFile(target_, "old");
    EXPECT_EQ(MessageThrownBy([&] {
                  Render([&](int n, int) {
                      if (n == 2) ::kill(EnginesOf(::getpid()).at(0), SIGKILL);
                  });
              }),
              "Run-time error '440': Automation error: LibreOffice Calc ended or hung twice");
    EXPECT_EQ(ReadWholeFile(target_), "old");
    EXPECT_TRUE(Render());
}

TEST_F(CalcFaultsTest, EndsAnEngineThatHangs) {
    constexpr auto kShort = 6s;  // for a busy machine
    MakeRenderer(kShort);
    bool isStopped = false;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(Render([&](int n, int) {
        if (n != 2 || isStopped) return;
        isStopped = true;
        ::kill(EnginesOf(::getpid()).at(0), SIGSTOP);
    }));
    EXPECT_TRUE(isStopped);
    EXPECT_GE(std::chrono::steady_clock::now() - start, kShort);
    ExpectWorkbook();
    EXPECT_EQ(EnginesOf(::getpid()).size(), 1U);
}

// Whoever waited for the patience to end would wait longer than a test may take.
TEST_F(CalcFaultsTest, StopsAtOnceEvenWhenTheEngineHangs) {
    ReplaceFile(target_, "old");
    std::stop_source stop;
    std::jthread stopper;
    EXPECT_FALSE(Render(
        [&](int n, int) {
            if (n != 2) return;
            ::kill(EnginesOf(::getpid()).at(0), SIGSTOP);
            stopper = std::jthread([&] {
                std::this_thread::sleep_for(100ms);
                stop.request_stop();
            });
        },
        stop.get_token()));
    EXPECT_EQ(ReadWholeFile(target_), "old");
    EXPECT_TRUE(Render());
}

TEST_F(CalcRefusesTest, RefusesATemplateThatIsMissing) {
    template_ = folder_.Path("DAVO_Header.xls");
    EXPECT_EQ(ErrorOf(ErrorNumber::FileNotFound),
              "Run-time error '53': File not found: " + template_.toStdString());
}

TEST_F(CalcRefusesTest, RefusesATemplateThatIsNoWorkbookOrHasNoModel) {
    ASSERT_TRUE(Render());
    const std::string withoutModel = ReadWholeFile(target_);  // its sheets have tests' names
    ReplaceFile(target_, "old");
    const std::string whole = ReadWholeFile(QLatin1String(kTemplate));
    template_ = folder_.Path("DAVO_Header.xls");
    for (const std::string& bytes :
         {withoutModel, std::string(), std::string("no workbook"), whole.substr(0, 600),
          std::string("\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1") + std::string(5000, 'x')}) {
        ReplaceFile(template_, bytes);
        const std::string text = ErrorOf(ErrorNumber::Automation);
        EXPECT_NE(text.find("DAVO_Header.xls"), std::string::npos) << text;
    }
    EXPECT_TRUE(Becomes([&] {
        template_ = QLatin1String(kTemplate);
        return Render();
    }));
}

TEST_F(CalcRefusesTest, RefusesAFolderThatIsMissing) {
    target_ = folder_.Path("nowhere/T0012.xls");
    EXPECT_EQ(ErrorOf(ErrorNumber::PathNotFound),
              "Run-time error '76': Path not found: " + folder_.Path("nowhere").toStdString());
    EXPECT_FALSE(FolderExists(folder_.Path("nowhere")));
}

TEST_F(CalcRefusesTest, DoesNotMindALockFileBesideTheTarget) {
    ReplaceFile(folder_.Path(".~lock.T0012.xls#"), ",root,here,21.11.2026 03:00,file:///x;");
    EXPECT_TRUE(Render());
    ExpectWorkbook();
}

TEST_F(CalcRefusesTest, FillsADiskAndLeavesTheOldWorkbook) {
    const QString disk = folder_.Path("disk");
    if (!Mount(disk, {u"-o"_s, u"size=16k"_s}))
        GTEST_SKIP() << "no file system may be mounted here";
    target_ = disk + u"/T0012.xls"_s;
    ReplaceFile(target_, "old");
    ErrorOf(ErrorNumber::DiskFull);
    EXPECT_EQ(QDir(disk).entryList(QDir::Files | QDir::Hidden).size(), 1);
    QProcess::execute(u"umount"_s, {disk});
}

TEST_F(CalcRefusesTest, LeavesTheOldWorkbookInAFolderThatMayNotBeWritten) {
    const QString disk = folder_.Path("disk");
    if (!Mount(disk, {})) GTEST_SKIP() << "no file system may be mounted here";
    target_ = disk + u"/T0012.xls"_s;
    ReplaceFile(target_, "old");
    ASSERT_EQ(QProcess::execute(u"mount"_s, {u"-o"_s, u"remount,ro"_s, disk}), 0);
    EXPECT_EQ(ErrorOf(ErrorNumber::PermissionDenied),
              "Run-time error '70': Permission denied: " + target_.toStdString());
    EXPECT_EQ(QDir(disk).entryList(QDir::Files | QDir::Hidden).size(), 1);
    QProcess::execute(u"umount"_s, {disk});
}

TEST_F(CalcFaultsTest, LeavesTheUsersOwnLibreOfficeAlone) {
    QProcess own;
    own.start(QLatin1String(kSoffice), {u"--headless"_s, u"--norestore"_s,
                                        u"-env:UserInstallation=file://"_s + folder_.Path("own"),
                                        u"--accept=pipe,name=davo-test-own;urp;"_s});
    ASSERT_TRUE(own.waitForStarted());
    if (own.waitForFinished(3000)) {  // a new profile: it asks to be started again
        own.start();
        ASSERT_TRUE(own.waitForStarted());
    }
    EXPECT_TRUE(Render());
    renderer_.reset();
    EXPECT_FALSE(own.waitForFinished(300));
    EXPECT_EQ(own.state(), QProcess::Running);
    own.terminate();
    EXPECT_TRUE(own.waitForFinished());
}

TEST_F(CalcFaultsTest, LeavesNoProcessAndNoFolder) {
    ASSERT_TRUE(Render());
    const auto engines = EnginesOf(::getpid());
    ASSERT_EQ(engines.size(), 1U);
#ifndef DAVO_SANITIZED  // which the engine cannot load
    QFile loaded(u"/proc/%1/maps"_s.arg(engines.front()));
    ASSERT_TRUE(loaded.open(QIODevice::ReadOnly));
    EXPECT_TRUE(loaded.readAll().contains("libdavo_reports_calc.so"))
        << "the engine has not loaded the module";
#endif
    EXPECT_EQ(ProfileFolders().size(), 1);
    renderer_.reset();
    EXPECT_TRUE(EnginesOf(::getpid()).empty());
    EXPECT_TRUE(ProfileFolders().isEmpty());
}

TEST_F(CalcFaultsTest, EndsWithAProgramThatIsKilledAndClearsUpNextTime) {
    QProcess program;
    program.start(QStringLiteral(DAVO_CALC_REPORT), {u"1"_s, template_, target_, u"100000"_s});
    ASSERT_TRUE(program.waitForReadyRead(30'000));
    const auto engines = EnginesOf(program.processId());
    ASSERT_EQ(engines.size(), 1U);
    program.kill();
    program.waitForFinished();
    EXPECT_TRUE(Becomes([&] { return IsGone(engines.front()); }));
    EXPECT_EQ(ProfileFolders().size(), 1);
    ASSERT_TRUE(Render());
    renderer_.reset();
    EXPECT_TRUE(ProfileFolders().isEmpty());
}

TEST_F(CalcFaultsTest, ReplacesTheEngineAfterSomeReports) {
    CalcSettings settings;
    settings.reportsPerEngine = 2;
    renderer_ = MakeCalcRenderer(settings);
    ASSERT_TRUE(Render());
    const auto first = EnginesOf(::getpid());
    ASSERT_TRUE(Render());
    ASSERT_TRUE(Render());
    const auto second = EnginesOf(::getpid());
    ASSERT_EQ(second.size(), 1U);
    EXPECT_NE(first, second);
}

TEST(CalcMissing, GivesNoRenderer) {
    CalcSettings settings;
    settings.programFolder = u"/nowhere"_s;
    EXPECT_FALSE(MakeCalcRenderer(settings));
}

}  // namespace
}  // namespace davo::test
