// SPDX-License-Identifier: GPL-3.0-or-later
// What the main window does for reports: the template is put, the test window may ask for one.

#include <QElapsedTimer>
#include <QStatusBar>
#include <QThread>
#include <QTimer>
#include <atomic>

#include "reports/template_file.h"
#include "tests/app/main_window.h"
#include "tests/support/pause.h"

namespace davo::test {
namespace {

// Makes nothing; takes as long as the test wants it to.
class FakeRenderer : public ReportRenderer {
  public:
    FakeRenderer(std::atomic<bool>& isDone, std::atomic<int>& prepared)
        : isDone_(isDone), prepared_(prepared) {}
    QString Extension() const override { return u".xls"_s; }
    void Prepare() override { ++prepared_; }
    bool Render(const Workbook&, const QString&, const QString&, const RenderProgress& progress,
                const std::stop_token& stop) override {
        progress(1, 1);
        while (!isDone_ && !stop.stop_requested())
            QThread::msleep(1);
        return isDone_;
    }

  private:
    std::atomic<bool>& isDone_;
    std::atomic<int>& prepared_;
};

class MainWindowWithReports : public MainWindow {
  protected:
    void OpenWithReports() {
        port.Always("W", "DAVO-E R3.10\r\n");
        window =
            std::make_unique<frmMain>(state, ProgramServices{store, places, clock, prompts, link,
                                                             devices, shortDate, [] {}, &reports});
        window->Form_Load();
        ASSERT_TRUE(ShowActive(*window));
    }
    // Saves a session of one shot as T1.txt and asks for its report.
    void SaveAndView() {
        CompleteAShot();
        prompts.answers = {Answer::Yes, Answer::Yes};
        prompts.files = {state.settings.dataPath + u"T1.txt"_s};
        Click("cmdExit");
    }
    QString ExcelFolder() const { return ShownPath(places.applicationFolder + u"Shots_Excel/"_s); }
    void PutInstalledTemplate() { ReplaceFile(InstalledTemplate(), "a workbook"); }
    ~MainWindowWithReports() override {
        window.reset();
        QFile::remove(InstalledTemplate());
    }

    std::atomic<bool> isDone = true;
    std::atomic<int> prepared = 0;
    std::vector<QString> opened;
    ReportRunner reports{
        prompts, state.settings,
        [this] {
            return ChosenRenderer{std::make_unique<FakeRenderer>(isDone, prepared), false};
        },
        [this](const QString& path) {
            opened.push_back(path);
            return true;
        }};
};

TEST_F(MainWindowWithReports, AFirstRunPutsTheTemplateInTheExcelFolder) {
    PutInstalledTemplate();
    OpenWithReports();
    EXPECT_EQ(ReadWholeFile(ExcelFolder() + QLatin1String(kTemplateFileName)), "a workbook");
    EXPECT_TRUE(Find<QPushButton>("cmdNotice")->isHidden());
}

TEST_F(MainWindowWithReports, TheOwnersTemplateStays) {
    PutInstalledTemplate();
    ASSERT_TRUE(QDir().mkpath(ExcelFolder()));
    ReplaceFile(ExcelFolder() + QLatin1String(kTemplateFileName), "the owner's");
    OpenWithReports();
    EXPECT_EQ(ReadWholeFile(ExcelFolder() + QLatin1String(kTemplateFileName)), "the owner's");
}

TEST_F(MainWindowWithReports, ATemplateThatCannotBePutIsSaidInTheStatusLine) {
    OpenWithReports();
    auto* notice = Find<QPushButton>("cmdNotice");
    EXPECT_TRUE(notice->isVisible());
    EXPECT_EQ(notice->text(), u"Report template missing"_s);
    notice->click();
    EXPECT_THAT(prompts.shown, ElementsAre(u"Run-time error '53': File not found: "_s +
                                           ShownPath(InstalledTemplate())));
}

TEST_F(MainWindowWithReports, TheTestWindowsReportIsMadeAndOpened) {
    OpenWithReports();
    SaveAndView();
    EXPECT_THAT(opened, ElementsAre(ExcelFolder() + u"T1.xls"_s));
    EXPECT_EQ(prompts.shown.back(), u"Do you want to view test results? "_s);
    EXPECT_TRUE(Until([this] { return TestWindow() == nullptr; }));
    EXPECT_TRUE(window->isVisible());
}

TEST_F(MainWindowWithReports, ClosingTheMainWindowLeavesTheReportAndClosesBoth) {
    OpenWithReports();
    isDone = false;
    QTimer::singleShot(1000, window.get(), [this] { window->close(); });
    SaveAndView();
    EXPECT_TRUE(Until([this] { return !window->isVisible(); }));
    EXPECT_THAT(opened, IsEmpty());
    EXPECT_EQ(prompts.shown.back(), u"Do you want to view test results? "_s);
}

TEST_F(MainWindowWithReports, TheEngineIsStartedOnceTheTestWindowHasStood) {
    OpenWithReports();
    QElapsedTimer timer;
    timer.start();
    Choose("mnuRatio");
    ASSERT_NE(TestWindow(), nullptr);
    QTest::qWait(500);
    EXPECT_EQ(prepared, 0);
    EXPECT_TRUE(QTest::qWaitFor([this] { return prepared == 1; },
                                static_cast<int>(2 * kPrepareDelay.count())));
    EXPECT_GE(timer.elapsed(), kPrepareDelay.count() * 9 / 10);
}

TEST_F(MainWindowWithReports, AWindowThatWasLeftSoonStartsNoEngine) {
    OpenWithReports();
    Choose("mnuRatio");
    ASSERT_NE(TestWindow(), nullptr);
    test::Pause(100);
    Click("cmdExit");
    ASSERT_TRUE(Until([this] { return TestWindow() == nullptr; }));
    test::Pause(static_cast<int>(kPrepareDelay.count()) + 500);
    EXPECT_EQ(prepared, 0);
}

// A record of the start page is viewed as one of the test list is.
class StartPageWithReports : public MainWindowWithReports {
  protected:
    void OpenWithRecords() {
        AddRecord("T1.txt", "11/20/26");
        AddRecord("T2.txt", "11/21/26");
        for (const char* name : {"T1.txt", "T2.txt"})
            ReplaceFile(DataFolder() + QLatin1String(name),
                        ReadWholeFile(DataFolder() + QLatin1String(name)) + RecordText());
        OpenWithReports();
    }
    void PressOnTheList(Qt::Key key) {
        auto* list = Find<QTreeWidget>("lvNewest");
        list->setFocus();
        QTest::keyClick(list, key);
    }
    QString Says() { return window->statusBar()->currentMessage(); }
};

TEST_F(StartPageWithReports, EnterMakesTheReportOfTheSelectedRecord) {
    OpenWithRecords();
    PressOnTheList(Qt::Key_Down);
    PressOnTheList(Qt::Key_Return);
    ASSERT_TRUE(Until([this] { return !opened.empty(); }));
    EXPECT_THAT(opened, ElementsAre(ExcelFolder() + u"T1.xls"_s));
    EXPECT_TRUE(Find<QTreeWidget>("lvNewest")->hasFocus());
    EXPECT_EQ(Says(), QString());
    EXPECT_THAT(prompts.shown, IsEmpty());
}

TEST_F(StartPageWithReports, WhileItIsMadeNothingElseBeginsAndEscLeavesIt) {
    isDone = false;
    OpenWithRecords();
    bool wasEnabled = true;
    QString said;
    QTimer::singleShot(50, window.get(), [&] {
        wasEnabled = Find<QPushButton>("cmdBoth")->isEnabled();
        said = Says();
        PressOnTheList(Qt::Key_Return);
        PressOnTheList(Qt::Key_Escape);
    });
    PressOnTheList(Qt::Key_Return);
    EXPECT_FALSE(wasEnabled);
    EXPECT_THAT(said.toStdString(), AnyOf(StartsWith("Plotting"), HasSubstr("graph")));
    EXPECT_TRUE(Find<QPushButton>("cmdBoth")->isEnabled());
    EXPECT_THAT(opened, IsEmpty());
    EXPECT_THAT(prompts.shown, IsEmpty());
}

TEST_F(StartPageWithReports, ClosingTheWindowLeavesTheReport) {
    isDone = false;
    OpenWithRecords();
    QTimer::singleShot(50, window.get(), [&] { window->close(); });
    PressOnTheList(Qt::Key_Return);
    EXPECT_TRUE(Until([this] { return !window->isVisible(); }));
    EXPECT_THAT(opened, IsEmpty());
}

TEST_F(StartPageWithReports, ARecordThatCannotBeReadIsSaid) {
    OpenWithRecords();
    QFile::remove(DataFolder() + u"T2.txt"_s);
    PressOnTheList(Qt::Key_Return);
    ASSERT_THAT(prompts.shown, SizeIs(1));
    EXPECT_THAT(prompts.shown.front().toStdString(), HasSubstr("File not found"));
    EXPECT_TRUE(Find<QPushButton>("cmdBoth")->isEnabled());
}

}  // namespace
}  // namespace davo::test
