// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/excel/renderer.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "common/files.h"
#include "reports/excel/steps.h"
#include "tests/reports/excel/recording.h"
#include "tests/reports/xlsx/report.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo::test {
namespace {

class RecordedSession : public excel::Session {
  public:
    RecordedSession(ExcelRecording& recording, int& sessions)
        : application_(std::make_shared<RecordedObject>(recording, u"Application"_s)),
          sessions_(sessions) {
        excel::Quieten(application_);
        ++sessions_;
    }
    ~RecordedSession() override { --sessions_; }
    RecordedSession(const RecordedSession&) = delete;
    RecordedSession& operator=(const RecordedSession&) = delete;
    RecordedSession(RecordedSession&&) = delete;
    RecordedSession& operator=(RecordedSession&&) = delete;
    const excel::Object& Application() const override { return application_; }
    void KeepWatch() override {}

  private:
    excel::Object application_;
    int& sessions_;
};

class RecordedLauncher : public excel::Launcher {
  public:
    RecordedLauncher(ExcelRecording& recording, int& sessions)
        : recording_(recording), sessions_(sessions) {}
    std::unique_ptr<excel::Session> Start(const std::stop_token&) override {
        return std::make_unique<RecordedSession>(recording_, sessions_);
    }

  private:
    ExcelRecording& recording_;
    int& sessions_;
};

class ExcelRendererTest : public testing::Test {
  protected:
    ExcelRendererTest() {
        ReplaceFile(template_, "the template");
        ReplaceFile(target_, "the old report");
    }

    bool Render(const Workbook& workbook) {
        ExcelRenderer renderer(std::make_unique<RecordedLauncher>(recording_, sessions_));
        return renderer.Render(
            workbook, template_, target_, [this](int n, int m) { progress_.emplace_back(n, m); },
            stop_.get_token());
    }

    QStringList LinesWith(const QString& part) const { return recording_.lines.filter(part); }
    qsizetype At(const QString& line) const { return recording_.lines.indexOf(line); }
    bool Has(const QString& line) const { return recording_.lines.contains(line); }
    void ExpectLines(const QString& object, std::initializer_list<const char*> lines) const {
        for (const char* line : lines)
            EXPECT_TRUE(Has(object + QLatin1String(line))) << object.toStdString() << line;
    }

    const QTemporaryDir folder_;
    const QString template_ = folder_.filePath(u"DAVO_Header.xls"_s);
    const QString target_ = folder_.filePath(u"T0012.xls"_s);
    ExcelRecording recording_;
    int sessions_ = 0;
    std::stop_source stop_;
    std::vector<std::pair<int, int>> progress_;
};

std::vector<std::string> Plain(const QStringList& lines) {
    std::vector<std::string> plain;
    for (const QString& line : lines)
        plain.push_back(line.toStdString());
    return plain;
}

TEST_F(ExcelRendererTest, WritesTheReportInPlaceOfTheOldOneAndLeavesNothingElse) {
    ASSERT_TRUE(Render(ReportOf(1)));
    EXPECT_EQ(ReadWholeFile(target_), "a workbook");
    EXPECT_EQ(ReadWholeFile(template_), "the template");
    EXPECT_EQ(sessions_, 0);
    EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files).size(), 2);
    EXPECT_EQ(progress_, (std::vector<std::pair<int, int>>{{1, 1}}));
}

TEST_F(ExcelRendererTest, IsSilencedBeforeAnythingIsOpened) {
    Render(ReportOf(1));
    EXPECT_THAT(
        Plain(recording_.lines.mid(0, 7)),
        ElementsAre("Application.Visible = false", "Application.DisplayAlerts = false",
                    "Application.ScreenUpdating = false", "Application.EnableEvents = false",
                    "Application.AutomationSecurity = 3", "Application.Version",
                    "Application.Workbooks"));
    EXPECT_THAT(recording_.lines.at(7).toStdString(), HasSubstr("Application.Workbooks.Open(\""));
    EXPECT_THAT(recording_.lines.at(7).toStdString(), HasSubstr("DAVO_Header.xls\", 0)"));
}

TEST_F(ExcelRendererTest, CopiesTheModelBeforeItselfForEveryTestAndTheSummary) {
    Render(ReportOf(3));
    const QString model = u"Book.Sheets.Item(1)"_s;
    EXPECT_EQ(LinesWith(model + u".Copy("_s + model).size(), 4);
    EXPECT_EQ(LinesWith(u".Clear"_s), QStringList(u"Sheet4.Range(\"A4:D100\").Clear"_s))
        << "the labels of a test";
    // The notes.
    EXPECT_EQ(LinesWith(u"Book.Sheets.Add("_s + model).size(), 1);
    EXPECT_TRUE(Has(u"Sheet5.PageSetup.FitToPagesTall = false"_s));
    EXPECT_EQ(LinesWith(u"PaperSize = "_s), QStringList(u"Sheet5.PageSetup.PaperSize = 9"_s))
        << "that of the template";
    EXPECT_THAT(
        Plain(LinesWith(u".Name = \""_s).filter(QRegularExpression(u"^Sheet[0-9]\\.Name"_s))),
        ElementsAre("Sheet1.Name = \"Sheet1\"", "Sheet2.Name = \"Sheet2\"",
                    "Sheet3.Name = \"Sheet3\"", "Sheet4.Name = \"SummaryGraph\"",
                    "Sheet5.Name = \"NOTES\"", "Sheet1.Name = \"Test 1-Graph\"",
                    "Sheet2.Name = \"Test 2-Graph\"", "Sheet3.Name = \"Test 3-Graph\"",
                    "Sheet4.Name = \"SummaryGraph\"", "Sheet5.Name = \"NOTES\""));
    EXPECT_EQ(progress_, (std::vector<std::pair<int, int>>{{1, 3}, {2, 3}, {3, 3}}));
}

TEST_F(ExcelRendererTest, StylesTheTitleAndTheBody) {
    Render(ReportOf(1));
    const QString title = u"Sheet1.Range(\"A1:D1\")"_s;
    const QString body = u"Sheet1.Range(\"A4:D100\")"_s;
    ExpectLines(title,
                {".Font.Size = 12", ".Font.Bold = true", ".HorizontalAlignment = -4108",
                 ".VerticalAlignment = -4107", ".WrapText = false", ".Orientation = 0", ".Merge"});
    ExpectLines(body, {".ColumnWidth = 20", ".HorizontalAlignment = -4131",
                       ".Font.Name = \"Arial\"", ".Font.Size = 8"});
    EXPECT_TRUE(Has(u"Sheet1.Range(\"B4:D9\").NumberFormat = \"@\""_s));
}

TEST_F(ExcelRendererTest, WritesTablesAtOnceNumbersAsNumbersAndTextsAsTexts) {
    Render(ReportOf(1));
    const QString sheet = u"Sheet1."_s;
    // A4:D9 is formatted as text but for its first column, and needs no quote there.
    const QStringList head = LinesWith(sheet + u"Range(\"A4:D14\").Value2 = "_s);
    ASSERT_EQ(head.size(), 1);
    EXPECT_THAT(head.front().toStdString(),
                HasSubstr("{\"'DATE & TIME: \", \"03/07/24 - 14:05:00\", \"COMPANY: \","));
    EXPECT_THAT(head.front().toStdString(), HasSubstr("\"'NAMEPLATE RATIO: \", \"'240 (1200:5)\""));
    EXPECT_THAT(head.front().toStdString(), HasSubstr("\"'MEASURED RATIO: \", 241.2"));
    const QStringList points = LinesWith(sheet + u"Range(\"A18:D32\").Value2 = "_s);
    ASSERT_EQ(points.size(), 1);
    EXPECT_THAT(points.front().toStdString(),
                HasSubstr("{\"'CT DATA POINTS:\", \"'CUR (A)\", \"'VTG (V)\", "
                          "\"'IMPEDANCE (OHM)\"; 1, 0.05, 10, 200;"));
}

TEST_F(ExcelRendererTest, MakesTheChartOnItsOwnSheetAndPastesItAtG42) {
    Render(ReportOf(1));
    const qsizetype added = At(u"Book.Charts.Add"_s);
    ASSERT_GE(added, 0);
    EXPECT_TRUE(Has(u"Chart.SetSourceData(Book.Sheets.Item(\"Sheet1\").Range(\"B19:C32\"), 2)"_s));
    EXPECT_TRUE(Has(u"Chart.ChartType = 75"_s));
    const QString curve = u"Chart.SeriesCollection.Item(2)"_s;
    EXPECT_TRUE(Has(curve + u".Delete"_s));
    EXPECT_THAT(Plain(LinesWith(u"Values = "_s)),
                ElementsAre(HasSubstr(".XValues = \"=Sheet1!R19C2:R32C2\""),
                            HasSubstr(".Values = \"=Sheet1!R19C3:R32C3\""),
                            HasSubstr(".XValues = \"=Sheet1!R11C4\""),
                            HasSubstr(".Values = \"=Sheet1!R11C2\"")));
    const qsizetype copied = At(u"Chart.ChartArea.Copy"_s);
    const qsizetype pasted = At(u"Sheet1.Paste(Sheet1.Range(\"G42\"))"_s);
    const qsizetype deleted = At(u"Chart.Delete"_s);
    EXPECT_LT(added, copied);
    EXPECT_LT(copied, pasted);
    EXPECT_LT(pasted, deleted);
    EXPECT_TRUE(Has(u"Sheet1.ChartObjects.Item(1).Left = 484.5"_s));
}

TEST_F(ExcelRendererTest, TheMarkerIsARedStarWithoutALine) {
    Render(ReportOf(1));
    const QString marker = u"Chart.SeriesCollection.NewSeries"_s;
    ExpectLines(marker, {".Border.LineStyle = -4142", ".MarkerStyle = 5", ".MarkerSize = 4",
                         ".MarkerForegroundColorIndex = 3", ".MarkerBackgroundColorIndex = 3",
                         ".Shadow = false", ".Smooth = true"});
}

TEST_F(ExcelRendererTest, BothAxesAreAutomaticAndLogarithmicWithBothGrids) {
    Render(ReportOf(1));
    for (const QString& axis : {u"Chart.Axes(1)"_s, u"Chart.Axes(2)"_s}) {
        ExpectLines(
            axis, {".ScaleType = -4133", ".MinimumScaleIsAuto = true", ".MaximumScaleIsAuto = true",
                   ".MajorUnitIsAuto = true", ".MinorUnitIsAuto = true", ".Crosses = -4105",
                   ".ReversePlotOrder = false", ".MajorTickMark = 3", ".MinorTickMark = -4142",
                   ".TickLabelPosition = -4134", ".Border.ColorIndex = 16",
                   ".HasMajorGridlines = true", ".HasMinorGridlines = true"});
    }
    ExpectLines(
        {},
        {"Chart.Axes(1).AxisTitle.Text = \"Amperes\"", "Chart.Axes(1).AxisTitle.Font.Bold = true",
         "Chart.ChartTitle.Font.Bold = true", "Chart.ChartTitle.Font.Size = 12",
         "Chart.Axes(1).TickLabels.NumberFormat = \"General\"",
         "Chart.Axes(1).TickLabels.Font.Name = \"Arial\"", "Chart.Axes(2).TickLabels.Font.Size = 9",
         "Chart.ChartArea.Border.Weight = 2", "Chart.ChartArea.Border.ColorIndex = 15",
         "Chart.Axes(2).AxisTitle.Text = \"Volts\"", "Chart.PlotArea.Border.Weight = 2",
         "Chart.PlotArea.Border.LineStyle = -4105", "Chart.PlotArea.Fill.Visible = true",
         "Chart.PlotArea.Fill.ForeColor.SchemeColor = 2", "Chart.HasLegend = false"});
    EXPECT_THAT(LinesWith(u"Chart.ChartTitle.Text"_s).value(0).toStdString(),
                HasSubstr("\\nKneepoint Type - IEEE 30 Degree Marker\""));
}

TEST_F(ExcelRendererTest, SetsUpThePage) {
    Render(ReportOf(1));
    const QString setup = u"Sheet1.PageSetup"_s;
    EXPECT_THAT(LinesWith(setup + u".CenterFooter"_s).value(0).toStdString(),
                HasSubstr(".CenterFooter = \"&\"Arial,Bold Italic\"&8"));
    ExpectLines(setup, {".PrintTitleRows = \"\"", ".PrintTitleColumns = \"\"", ".Orientation = 2",
                        ".Zoom = false", ".FitToPagesWide = 1", ".FitToPagesTall = 1"});
    EXPECT_EQ(LinesWith(setup + u".PrintArea = \"A1:"_s).size(), 1);
}

TEST_F(ExcelRendererTest, TheSummaryNamesItsCurvesAndLeavesMarkersOutOfTheLegend) {
    Render(ReportOf(3));
    EXPECT_THAT(
        Plain(LinesWith(u".Name = \"Test #"_s)),
        ElementsAre(HasSubstr("\"Test #1\""), HasSubstr("\"Test #2\""), HasSubstr("\"Test #3\"")));
    EXPECT_THAT(
        Plain(LinesWith(u"Chart.Legend.LegendEntries"_s).filter(u".Delete"_s)),
        ElementsAre("Chart.Legend.LegendEntries(6).Delete", "Chart.Legend.LegendEntries(4).Delete",
                    "Chart.Legend.LegendEntries(2).Delete"));
    ExpectLines(u"Chart.Legend"_s,
                {".Font.Name = \"Arial\"", ".Font.Size = 9", ".Border.LineStyle = -4142"});
}

TEST_F(ExcelRendererTest, AnOverlayEndsWithItsSummaryInFront) {
    Workbook overlay = ReportOf(2);
    overlay.activeSheet = 2;
    overlay.sheets[2].firstVisible = PlaceOf("G42");
    Render(overlay);
    const QStringList activated = LinesWith(u".Activate"_s);
    EXPECT_EQ(activated.last(), u"Sheet3.Activate"_s);
    EXPECT_THAT(Plain(LinesWith(u".Scroll"_s)),
                ElementsAre("Book.Windows.Item(1).ScrollRow = 42",
                            "Book.Windows.Item(1).ScrollColumn = 7"));
    recording_ = {};
    Render(ReportOf(2));
    EXPECT_EQ(LinesWith(u".Scroll"_s).size(), 0) << "others begin at A1";
}

TEST_F(ExcelRendererTest, TakesTheModelAwayAndSavesAtTheEnd) {
    Render(ReportOf(1));
    const QStringList end = recording_.lines.mid(recording_.lines.size() - 5);
    EXPECT_THAT(Plain(end),
                ElementsAre("Book.Sheets.Item(1).Delete", "Sheet1.Activate",
                            "Application.CutCopyMode = false",
                            AllOf(HasSubstr("Book.SaveAs(\""), HasSubstr("report.xls\", 56)")),
                            "Book.Close(false)"));
}

TEST_F(ExcelRendererTest, AnOldExcelIsAskedForItsOwnFormat) {
    recording_.version = u"11.0"_s;
    Render(ReportOf(1));
    EXPECT_THAT(LinesWith(u"Book.SaveAs"_s).value(0).toStdString(), HasSubstr(", -4143)"));
}

TEST_F(ExcelRendererTest, SheetsOfTheTemplateMakeRoomForTheReports) {
    recording_.templateSheets = {u"sheet1"_s, u"Mine"_s, u"HEADER"_s};
    ASSERT_TRUE(Render(ReportOf(1)));
    EXPECT_TRUE(Has(u"Book.Sheets.Item(1).Name = \"sheet1 (template)\""_s));
    EXPECT_FALSE(recording_.lines.join(QLatin1Char('\n')).contains(u"Mine (template)"_s));
    EXPECT_TRUE(Has(u"Book.Sheets.Item(3).Copy(Book.Sheets.Item(3))"_s));
}

TEST_F(ExcelRendererTest, ATemplateWithoutItsModelIsTold) {
    recording_.templateSheets = {u"Other"_s};
    EXPECT_EQ(MessageThrownBy([&] { Render(ReportOf(1)); }),
              "Run-time error '440': Automation error: DAVO_Header.xls has no sheet "
              "\"HEADER\"");
    EXPECT_EQ(recording_.lines.last(), u"Book.Close(false)"_s);
}

TEST_F(ExcelRendererTest, AFirstQuoteStaysInAFieldOfText) {
    Workbook workbook;
    workbook.templateFile = "DAVO_Header.xls";
    workbook.templateSheet = "HEADER";
    Sheet sheet;
    sheet.buildName = sheet.finalName = "Sheet1";
    sheet.fromTemplate = true;
    CellStyle text;
    text.numberFormat = "@";
    sheet.styles.push_back({RangeOf("B4:D9"), text});
    sheet.cells.push_back({PlaceOf("B4"), "'70s"});
    workbook.sheets.push_back(sheet);
    ASSERT_TRUE(Render(workbook));
    EXPECT_EQ(LinesWith(u"Value2 = \"''70s\""_s).size(), 0);
    recording_ = {};
    recording_.takesFirstQuotes = true;
    ASSERT_TRUE(Render(workbook));
    EXPECT_EQ(LinesWith(u"Value2 = \"''70s\""_s).size(), 1);
}

TEST_F(ExcelRendererTest, AFailureAtAnyCallIsToldAndLeavesTheOldReport) {
    const Workbook report = ReportOf(2);
    ASSERT_TRUE(Render(report));
    const int calls = recording_.calls;
    // A printer without the paper of the letterhead is no failure.
    const QString asked = LinesWith(u"PaperSize"_s).value(0);
    const qsizetype paper = At(asked);
    ASSERT_GT(paper, 0);
    ReplaceFile(target_, "the old report");
    for (int n = 1; n <= calls; ++n) {
        SCOPED_TRACE("call " + std::to_string(n) + " of " + std::to_string(calls) + ": " +
                     recording_.lines.value(n - 1).toStdString());
        recording_ = {};
        recording_.failAt = n;
        if (n >= paper && n <= paper + 3) {
            EXPECT_TRUE(Render(report));
            ReplaceFile(target_, "the old report");
            continue;
        }
        const auto error = Thrown([&] { Render(report); });
        ASSERT_TRUE(error) << "nothing was thrown";
        EXPECT_EQ(error->Number(), ErrorNumber::Automation);
        EXPECT_THAT(error->what(), HasSubstr("call " + std::to_string(n) + " fails"));
        ASSERT_EQ(ReadWholeFile(target_), "the old report");
        ASSERT_EQ(sessions_, 0);
        ASSERT_EQ(QDir(folder_.path()).entryList(QDir::Files).size(), 2);
        const bool wasOpened = Has(u"Book.Sheets"_s);
        if (wasOpened) {
            ASSERT_THAT(Plain(recording_.lines), Contains("Book.Close(false)"));
        }
    }
}

TEST_F(ExcelRendererTest, AStopAtAnyMomentLeavesTheOldReport) {
    const Workbook report = ReportOf(1);
    ASSERT_TRUE(Render(report));
    const int calls = recording_.calls;
    ReplaceFile(target_, "the old report");
    for (int n = 1; n < calls; ++n) {
        SCOPED_TRACE("call " + std::to_string(n));
        recording_ = {};
        stop_ = {};
        recording_.written = [&](const QString&) {
            if (recording_.calls == n) stop_.request_stop();
        };
        ASSERT_FALSE(Render(report));
        ASSERT_EQ(ReadWholeFile(target_), "the old report");
        ASSERT_EQ(sessions_, 0);
        // No more than what is left of one step.
        ASSERT_LT(recording_.calls, n + 120);
    }
}

TEST_F(ExcelRendererTest, WhoHasStoppedAlreadyStartsNoExcel) {
    stop_.request_stop();
    EXPECT_FALSE(Render(ReportOf(1)));
    EXPECT_EQ(recording_.calls, 0);
}

TEST_F(ExcelRendererTest, AMissingTemplateOrFolderIsToldBeforeExcelStarts) {
    DeleteFile(template_);
    EXPECT_THAT(MessageThrownBy([&] { Render(ReportOf(1)); }),
                AllOf(HasSubstr("'53'"), HasSubstr("DAVO_Header.xls")));
    EXPECT_EQ(recording_.calls, 0);
}

TEST_F(ExcelRendererTest, MakesXls) {
    const ExcelRenderer renderer(std::make_unique<RecordedLauncher>(recording_, sessions_));
    EXPECT_EQ(renderer.Extension(), u".xls"_s);
}

}  // namespace
}  // namespace davo::test
