// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/report_runner.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QThread>
#include <QTimer>
#include <atomic>

#include "common/files.h"
#include "common/open_document.h"
#include "reports/template_file.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo::test {
namespace {

// What a renderer was asked for, and what it does then.
struct Asked {
    std::vector<QString> templates;
    std::vector<QString> targets;
    std::vector<std::size_t> sheets;
    std::atomic<int> prepared = 0;
    std::function<bool(const RenderProgress&, const std::stop_token&)> script;
};

class FakeRenderer : public ReportRenderer {
  public:
    explicit FakeRenderer(Asked& asked) : asked_(asked) {}
    QString Extension() const override { return u".xls"_s; }
    void Prepare() override { ++asked_.prepared; }
    bool Render(const Workbook& workbook, const QString& templatePath, const QString& targetPath,
                const RenderProgress& progress, const std::stop_token& stop) override {
        asked_.templates.push_back(templatePath);
        asked_.targets.push_back(targetPath);
        asked_.sheets.push_back(workbook.sheets.size());
        return asked_.script(progress, stop);
    }

  private:
    Asked& asked_;
};

bool WaitForStop(const RenderProgress&, const std::stop_token& stop) {
    while (!stop.stop_requested())
        QThread::msleep(1);
    return false;
}

class ReportRunnerTest : public testing::Test {
  protected:
    ReportRunnerTest() {
        settings_.excelPath = folder_.Path("Shots_Excel/");
        EXPECT_TRUE(QDir().mkpath(folder_.Path("Shots_Data")));
        ReplaceFile(recordFile_, FileText(2));
        asked_.script = [](const RenderProgress& progress, const std::stop_token&) {
            progress(1, 2);
            progress(2, 2);
            return true;
        };
    }
    bool Run() { return runner_.Run(recordFile_, show_); }

    TemporaryFolder folder_;
    FakePrompts prompts_;
    Settings settings_;
    QString recordFile_ = folder_.Path("Shots_Data/T.0012.txt");
    Asked asked_;
    bool isBuiltIn_ = false;
    int chosen_ = 0;
    bool canOpen_ = true;
    std::vector<QString> opened_;
    std::vector<QString> shown_;
    ReportRunner::Show show_ = [this](const QString& text) { shown_.push_back(text); };
    ReportRunner runner_{
        prompts_, settings_,
        [this] {
            ++chosen_;
            return ChosenRenderer{std::make_unique<FakeRenderer>(asked_), isBuiltIn_};
        },
        [this](const QString& path) {
            opened_.push_back(path);
            return canOpen_;
        }};
};

TEST_F(ReportRunnerTest, TheReportOfARecordFileIsMadeInTheExcelFolderAndOpened) {
    EXPECT_TRUE(Run());
    const QString workbook = settings_.excelPath + u"T.0012.xls"_s;
    EXPECT_THAT(asked_.targets, ElementsAre(workbook));
    EXPECT_THAT(asked_.templates,
                ElementsAre(settings_.excelPath + QLatin1String(kTemplateFileName)));
    EXPECT_THAT(opened_, ElementsAre(workbook));
    EXPECT_THAT(prompts_.shown, IsEmpty());
    EXPECT_THAT(shown_, ElementsAre(u"Plotting graph 1 of 2"_s, u"Plotting graph 2 of 2"_s));
}

// A workbook with one of them is damaged.
TEST_F(ReportRunnerTest, ControlCharactersAreToldAndReplaced) {
    std::string file = FileText(1) + "NOTES:\r\nta\tb\x01\r\n";
    file.replace(file.find("Hilltop"), 7, "Hill\x1ftop");
    const ReportTables tables = ParseReportTables(file, "T", RecordSource::RecordFile);
    EXPECT_EQ(tables.controls, 2U);
    EXPECT_THAT(tables.notes, HasSubstr("ta\tb?"));
    ReplaceFile(recordFile_, file);
    EXPECT_TRUE(Run());
    EXPECT_THAT(prompts_.Texts(),
                ElementsAre("The record has control characters. The report has \"?\" for each."));
}

TEST_F(ReportRunnerTest, TheCaptionOfWhoWaits) {
    EXPECT_STREQ(kPlottingCaption, "Plotting Excel Graphs, Please Wait...");
}

TEST_F(ReportRunnerTest, TheExcelFolderIsThatOfTheMoment) {
    settings_.excelPath = folder_.Path("Elsewhere/");
    EXPECT_TRUE(Run());
    EXPECT_THAT(opened_, ElementsAre(folder_.Path("Elsewhere/T.0012.xls")));
}

TEST_F(ReportRunnerTest, TheOverlayOfAGroupFile) {
    const QString group = folder_.Path("Shots_Data/2Graphs.GRP");
    ReplaceFile(group, FileText(1) + HeaderText("T0013") + RecordText(3));
    EXPECT_TRUE(runner_.RunOverlay(group, show_));
    const QString workbook = settings_.excelPath + u"2Graphs.xls"_s;
    EXPECT_EQ(runner_.OverlayWorkbook(), workbook);
    EXPECT_THAT(asked_.targets, ElementsAre(workbook));
    EXPECT_THAT(asked_.sheets, ElementsAre(3U)) << "two tests and their summary";
    EXPECT_THAT(opened_, ElementsAre(workbook));
}

TEST_F(ReportRunnerTest, OtherEventsRunWhileAReportIsMade) {
    std::atomic<bool> hasRun = false;
    asked_.script = [&](const RenderProgress&, const std::stop_token&) {
        for (int i = 0; i < 5000 && !hasRun; ++i)
            QThread::msleep(1);
        return hasRun.load();
    };
    QTimer::singleShot(0, QCoreApplication::instance(), [&] { hasRun = true; });
    EXPECT_TRUE(Run());
}

TEST_F(ReportRunnerTest, AnErrorOfTheRendererIsThrownAndNothingIsOpened) {
    asked_.script = [](const RenderProgress&, const std::stop_token&) -> bool {
        throw RunTimeError(ErrorNumber::FileNotFound, "DAVO_Header.xls");
    };
    EXPECT_EQ(MessageThrownBy([&] { Run(); }),
              "Run-time error '53': File not found: DAVO_Header.xls");
    EXPECT_THAT(opened_, IsEmpty());
    EXPECT_THAT(prompts_.shown, IsEmpty());
    asked_.script = [](const RenderProgress&, const std::stop_token&) { return true; };
    EXPECT_TRUE(Run()) << "the next one is made";
}

TEST_F(ReportRunnerTest, AFileThatCannotBeReadIsAnErrorAndTheNextOneIsMade) {
    EXPECT_THROW(runner_.Run(folder_.Path("Shots_Data/none.txt"), show_), RunTimeError);
    ReplaceFile(folder_.Path("Shots_Data/damaged.txt"), HeaderText().substr(0, 60));
    EXPECT_THROW(runner_.Run(folder_.Path("Shots_Data/damaged.txt"), show_), RunTimeError);
    EXPECT_THAT(asked_.targets, IsEmpty());
    EXPECT_TRUE(Run());
}

TEST_F(ReportRunnerTest, CancelLeavesTheReportUnderWay) {
    asked_.script = WaitForStop;
    QTimer::singleShot(20, QCoreApplication::instance(), [this] { runner_.Cancel(); });
    EXPECT_FALSE(Run());
    EXPECT_THAT(opened_, IsEmpty());
    EXPECT_THAT(prompts_.shown, IsEmpty());
}

TEST_F(ReportRunnerTest, WhatAReportThatWasLeftFailsOfIsNotSaid) {
    asked_.script = [](const RenderProgress& progress, const std::stop_token& stop) -> bool {
        WaitForStop(progress, stop);
        throw RunTimeError(ErrorNumber::Automation, "ended while it started");
    };
    QTimer::singleShot(20, QCoreApplication::instance(), [this] { runner_.Cancel(); });
    EXPECT_FALSE(Run());
    EXPECT_THAT(prompts_.shown, IsEmpty());
}

TEST_F(ReportRunnerTest, CancelWithoutAReportDoesNothingToTheNextOne) {
    runner_.Cancel();
    EXPECT_TRUE(Run());
    runner_.Cancel();
    EXPECT_TRUE(Run());
}

TEST_F(ReportRunnerTest, ASecondReportIsRefusedWhileOneIsUnderWay) {
    std::atomic<bool> wasAsked = false;
    bool wasMade = true;
    asked_.script = [&](const RenderProgress&, const std::stop_token&) {
        for (int i = 0; i < 5000 && !wasAsked; ++i)
            QThread::msleep(1);
        return true;
    };
    QTimer::singleShot(20, QCoreApplication::instance(), [&] {
        wasMade = Run();
        wasAsked = true;
    });
    EXPECT_TRUE(Run());
    EXPECT_FALSE(wasMade);
    EXPECT_EQ(asked_.targets.size(), 1U);
}

TEST_F(ReportRunnerTest, TheEndOfTheProgramLeavesTheReport) {
    asked_.script = WaitForStop;
    bool wasMade = true;
    QTimer::singleShot(0, QCoreApplication::instance(), [&] { wasMade = Run(); });
    QTimer::singleShot(20, QCoreApplication::instance(), [] { QCoreApplication::quit(); });
    QCoreApplication::exec();
    EXPECT_FALSE(wasMade);
    EXPECT_THAT(opened_, IsEmpty());
}

TEST_F(ReportRunnerTest, WhatWouldMakeXlsIsSaidOnce) {
    isBuiltIn_ = true;
    EXPECT_TRUE(Run());
    EXPECT_THAT(prompts_.shown, ElementsAre(QLatin1String(kBuiltInRendererText)));
    EXPECT_TRUE(Run());
    EXPECT_EQ(prompts_.shown.size(), 1U);
    EXPECT_EQ(opened_.size(), 2U);
}

TEST_F(ReportRunnerTest, WhatWouldMakeXlsIsNotSaidOfAReportThatWasLeft) {
    isBuiltIn_ = true;
    asked_.script = [](const RenderProgress&, const std::stop_token&) { return false; };
    EXPECT_FALSE(Run());
    EXPECT_THAT(prompts_.shown, IsEmpty());
}

TEST_F(ReportRunnerTest, WhereNoProgramShowsItThePathIsSaid) {
    canOpen_ = false;
    EXPECT_TRUE(Run());
    EXPECT_THAT(prompts_.shown,
                ElementsAre(u"The report is finished, but this computer has no program that "
                            "shows it. It is stored as "_s +
                            ShownPath(settings_.excelPath + u"T.0012.xls"_s)));
}

TEST_F(ReportRunnerTest, AWindowThatIsGoneStartsNothing) {
    {
        QObject window;
        runner_.PrepareSoon(window);
    }
    QObject window;
    runner_.PrepareSoon(window);
    QEventLoop loop;
    QTimer::singleShot(kPrepareDelay + std::chrono::milliseconds(500), &loop, &QEventLoop::quit);
    loop.exec();
    EXPECT_EQ(asked_.prepared, 1) << "of the window that is open";
}

TEST_F(ReportRunnerTest, TheRendererIsChosenOnceWhenItIsNeeded) {
    EXPECT_EQ(chosen_, 0);
    runner_.Prepare();
    EXPECT_EQ(asked_.prepared, 1);
    EXPECT_TRUE(Run());
    EXPECT_TRUE(Run());
    EXPECT_EQ(chosen_, 1);
}

}  // namespace
}  // namespace davo::test
