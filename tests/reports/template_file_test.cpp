// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/template_file.h"

#include <QCoreApplication>
#include <QDir>

#include "common/files.h"
#include "common/run_time_error.h"
#include "tests/reports/xlsx/report.h"
#include "tests/support/program_output.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

const QString kCommitted =
    QStringLiteral(DAVO_TESTS_FOLDER "/../packaging/template/DAVO_Header.xls");

// The run-time error of putting the template.
std::optional<RunTimeError> ErrorOfPut(const QString& excelPath, const QString& installed) {
    return test::Thrown([&] { PutTemplate(excelPath, installed); });
}

TEST(Template, IsTheOneThatReportsName) {
    EXPECT_EQ(test::ReportOf(1).templateFile, kTemplateFileName);
}

TEST(Template, LiesBesideTheProgram) {
    EXPECT_EQ(InstalledTemplate(), QCoreApplication::applicationDirPath() + u"/DAVO_Header.xls"_s);
}

TEST(Template, IsTheSharedOneWhereNoneLiesBesideTheProgram) {
    const test::TemporaryFolder folder;
    const QDir root(folder.Path());
    ASSERT_TRUE(root.mkpath(u"bin"_s) && root.mkpath(u"share/davo"_s));
    const QString program = root.filePath(u"bin"_s);
    const QString beside = root.filePath(u"bin/DAVO_Header.xls"_s);
    const QString shared = root.filePath(u"share/davo/DAVO_Header.xls"_s);
    EXPECT_EQ(InstalledTemplate(program), beside);
    ReplaceFile(shared, "shared");
    EXPECT_EQ(InstalledTemplate(program), shared);
    ReplaceFile(beside, "beside");
    EXPECT_EQ(InstalledTemplate(program), beside);
}

// xlrd, an independent reader, says what a report's sheet is a copy of.
TEST(Template, HasTheSheetThatTestsAreCopiedFrom) {
    const QString script =
        u"import sys, xlrd\n"
        "book = xlrd.open_workbook(sys.argv[1], formatting_info=True)\n"
        "sheet = book.sheet_by_name('HEADER')\n"
        "print(book.sheet_names(), sheet.merged_cells)\n"
        "print([round(sheet.colinfo_map[c].width / 256 - 5 / 7, 1) for c in range(5)])\n"
        "print(sheet.rowinfo_map[0].height / 20, sheet.rowinfo_map[1].height / 20)\n"
        "for row in list(range(0, 1)) + list(range(3, 16)): print(sheet.row_values(row)[::2])\n"
        "font = book.font_list[book.xf_list[sheet.cell_xf_index(3, 0)].font_index]\n"
        "print(font.name, font.height / 20, font.weight)\n"_s;
    std::string expected =
        "['HEADER'] [(0, 1, 0, 4)]\n"
        "[20.0, 20.0, 20.0, 20.0, 8.4]\n"
        "48.0 12.75\n"
        "['TEST REPORT', '']\n";
    // The labels of a report are in it already.
    const Workbook report = test::ReportOf(1);
    const auto label = [&](int row, int column) {
        for (const Cell& cell : report.sheets.front().cells) {
            if (cell.place == CellPlace{row, column}) return std::get<std::string>(cell.value);
        }
        return std::string();
    };
    for (int row = 4; row <= 16; ++row)
        expected += "['" + label(row, 1) + "', '" + label(row, 3) + "']\n";
    expected += "Arial 8.0 700\n";
    EXPECT_EQ(test::OutputOf(u"/usr/bin/python3"_s, {u"-c"_s, script, kCommitted}).toStdString(),
              expected);
}

TEST(PutTemplate, CopiesItIntoTheReportFolder) {
    const test::TemporaryFolder folder;
    for (const QString& excelPath : {folder.Path("a"), folder.Path("b/")}) {
        ASSERT_TRUE(QDir().mkpath(excelPath));
        EXPECT_FALSE(ErrorOfPut(excelPath, kCommitted));
        EXPECT_EQ(ReadWholeFile(QDir(excelPath).filePath(u"DAVO_Header.xls"_s)),
                  ReadWholeFile(kCommitted));
    }
}

TEST(PutTemplate, KeepsTheOwnersTemplate) {
    const test::TemporaryFolder folder;
    ReplaceFile(folder.Path("DAVO_Header.xls"), "my letterhead");
    EXPECT_FALSE(ErrorOfPut(folder.Path(), kCommitted));
    EXPECT_FALSE(ErrorOfPut(folder.Path(), folder.Path("missing.xls")));
    EXPECT_EQ(ReadWholeFile(folder.Path("DAVO_Header.xls")), "my letterhead");
}

TEST(PutTemplate, SaysWhatIsMissing) {
    const test::TemporaryFolder folder;
    const QString missing = folder.Path("missing/DAVO_Header.xls");
    EXPECT_THAT(ErrorOfPut(folder.Path(), missing).value().what(),
                AllOf(HasSubstr("'53'"), HasSubstr(missing.toStdString())));
    EXPECT_THAT(ErrorOfPut(folder.Path("nowhere/"), kCommitted).value().what(),
                AllOf(HasSubstr("'76'"), HasSubstr("nowhere")));
}

TEST(PutTemplate, DoesNotReplaceAFolder) {
    const test::TemporaryFolder folder;
    ASSERT_TRUE(QDir().mkpath(folder.Path("DAVO_Header.xls")));
    EXPECT_EQ(ErrorOfPut(folder.Path(), kCommitted).value().Number(),
              ErrorNumber::PermissionDenied);
}

}  // namespace
}  // namespace davo
