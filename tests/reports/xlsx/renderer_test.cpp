// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/xlsx/renderer.h"

#include <QDir>
#include <QFileInfo>

#include "common/files.h"
#include "tests/reports/xlsx/expected.h"
#include "tests/reports/xlsx/report.h"
#include "tests/support/program_output.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

std::vector<std::string> Output(const QString& program, const QStringList& arguments) {
    return SplitLines(test::OutputOf(program, arguments).toStdString());
}

// Debian's own Python, where the package python3-openpyxl is.
std::vector<std::string> ReadBack(const QString& workbook) {
    return Output(u"/usr/bin/python3"_s,
                  {QStringLiteral(DAVO_TESTS_FOLDER "/reports/read_back_xlsx.py"), workbook});
}

void ExpectSameLines(const std::vector<std::string>& read,
                     const std::vector<std::string>& expected) {
    for (std::size_t i = 0; i < std::min(read.size(), expected.size()); ++i)
        ASSERT_EQ(read[i], expected[i]) << "line " << i;
    EXPECT_EQ(read.size(), expected.size());
}

class RenderedReport : public testing::TestWithParam<int> {
  protected:
    test::TemporaryFolder folder_;
    QString path_ = folder_.Path("T0012.xlsx");
    XlsxRenderer renderer_;
};

TEST_P(RenderedReport, HoldsAllThatTheWorkbookSays) {
    const Workbook workbook = test::ReportOf(GetParam());
    ASSERT_TRUE(renderer_.Render(workbook, {}, path_, {}, {}));
    ExpectSameLines(ReadBack(path_), test::ExpectedLines(workbook));
}

TEST_P(RenderedReport, OpensInAnotherSpreadsheet) {
    ASSERT_TRUE(renderer_.Render(test::ReportOf(GetParam()), {}, path_, {}, {}));
    const QString text = folder_.Path("T0012.txt");
    Output(u"ssconvert"_s, {path_, text});
    const std::string shown = ReadWholeFile(text);
    EXPECT_THAT(shown, HasSubstr("TEST REPORT"));
    EXPECT_THAT(shown, HasSubstr("Power & Light"));
}

TEST_P(RenderedReport, TellsOfEachTestSheet) {
    std::vector<std::string> told;
    const auto progress = [&](int n, int m) { told.push_back(PlottingGraphText(n, m)); };
    ASSERT_TRUE(renderer_.Render(test::ReportOf(GetParam()), {}, path_, progress, {}));
    std::vector<std::string> expected;
    for (int n = 1; n <= GetParam(); ++n)
        expected.push_back("Plotting graph " + std::to_string(n) + " of " +
                           std::to_string(GetParam()));
    EXPECT_EQ(told, expected);
}

INSTANTIATE_TEST_SUITE_P(Tests, RenderedReport, testing::Values(1, 3, 4, 31));

class XlsxRendererTest : public testing::Test {
  protected:
    // The number of the run-time error of rendering a report there; 0 for none.
    int ErrorAt(const QString& path, const Workbook& workbook = test::ReportOf(1)) {
        return test::ErrorBy([&] { renderer_.Render(workbook, {}, path, {}, {}); });
    }

    test::TemporaryFolder folder_;
    QString path_ = folder_.Path("T0012.xlsx");
    XlsxRenderer renderer_;
};

TEST_F(XlsxRendererTest, MakesXlsx) {
    EXPECT_EQ(renderer_.Extension(), u".xlsx"_s);
}

TEST_F(XlsxRendererTest, ATextIsNeverTakenForANumberOrAFormula) {
    Workbook workbook = test::ReportOf(1);
    for (Cell& cell : workbook.sheets.front().cells) {
        if (cell.place == PlaceOf("B9")) cell.value = std::string("=1+1");
        if (cell.place == PlaceOf("B8")) cell.value = std::string("00012345");
        if (cell.place == PlaceOf("B7")) cell.value = std::string("'\x80\x93 <&>");
    }
    ASSERT_TRUE(renderer_.Render(workbook, {}, path_, {}, {}));
    const std::vector<std::string> read = ReadBack(path_);
    for (const char* line :
         {"cell B9 text =1+1 |", "cell B8 text 00012345 |", "cell B7 text '\u20AC\u201C <&> |"})
        EXPECT_THAT(read, Contains(StartsWith(line)));
}

TEST_F(XlsxRendererTest, AnEarlierWorkbookIsReplaced) {
    ReplaceFile(path_, "old");
    ASSERT_TRUE(renderer_.Render(test::ReportOf(1), {}, path_, {}, {}));
    EXPECT_THAT(ReadWholeFile(path_), StartsWith("PK"));
    EXPECT_EQ(folder_.Names(), QStringList(u"T0012.xlsx"_s));
}

TEST_F(XlsxRendererTest, AStopLeavesAnEarlierWorkbook) {
    ReplaceFile(path_, "old");
    // At the first sheet, at the last, and before anything.
    for (const int stopAt : {1, 3, 0}) {
        std::stop_source stop;
        if (stopAt == 0) stop.request_stop();
        const auto progress = [&](int n, int) {
            if (n == stopAt) stop.request_stop();
        };
        EXPECT_FALSE(renderer_.Render(test::ReportOf(3), {}, path_, progress, stop.get_token()));
        EXPECT_EQ(ReadWholeFile(path_), "old");
        EXPECT_EQ(folder_.Names(), QStringList(u"T0012.xlsx"_s));
    }
}

TEST_F(XlsxRendererTest, WhatProgressThrowsIsPassedOn) {
    ReplaceFile(path_, "old");
    const auto progress = [](int, int) { throw std::string("enough"); };
    EXPECT_THROW(renderer_.Render(test::ReportOf(1), {}, path_, progress, {}), std::string);
    EXPECT_EQ(ReadWholeFile(path_), "old");
}

TEST_F(XlsxRendererTest, AMissingFolderIsNamed) {
    EXPECT_EQ(ErrorAt(folder_.Path("nowhere/T0012.xlsx")), 76);
}

TEST_F(XlsxRendererTest, AFolderIsNotReplaced) {
    ASSERT_TRUE(QDir().mkpath(path_));
    EXPECT_EQ(ErrorAt(path_), 70);
    EXPECT_TRUE(FolderExists(path_));
}

TEST_F(XlsxRendererTest, WhatExcelCannotHoldIsRefused) {
    ReplaceFile(path_, "old");
    Workbook longText = test::ReportOf(1);
    longText.sheets.front().cells.back().value = std::string(32768, 'x');
    EXPECT_EQ(ErrorAt(path_, longText), 440);
    Workbook longFooter = test::ReportOf(1);
    longFooter.sheets.front().page.footer->text = std::string(255, 'x');
    EXPECT_EQ(ErrorAt(path_, longFooter), 440);
    Workbook badName = test::ReportOf(1);
    badName.sheets.front().finalName = "a/b";
    EXPECT_EQ(ErrorAt(path_, badName), 440);
    Workbook twice = test::ReportOf(3);
    twice.sheets.at(1).finalName = twice.sheets.at(0).finalName;
    EXPECT_EQ(ErrorAt(path_, twice), 440);
    EXPECT_EQ(ReadWholeFile(path_), "old");
}

}  // namespace
}  // namespace davo
