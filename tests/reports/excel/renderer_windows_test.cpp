// SPDX-License-Identifier: GPL-3.0-or-later
#include <windows.h>
// The system's macro of that name; ours is meant.
#undef ReplaceFile

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThread>
#include <thread>

#include "common/files.h"
#include "reports/choose_renderer.h"
#include "reports/excel/renderer.h"
#include "tests/reports/excel/class_windows.h"
#include "tests/reports/xlsx/report.h"
#include "tests/support/thrown.h"

// The real road to Excel, COM and its processes, with a recorder at its end.
namespace davo::test {
namespace {

using testing::HasSubstr;

// Of the machine: Wine does not look for classes of the user.
const std::wstring kClasses = L"Software\\Classes\\";

void Register(const std::wstring& key, const std::wstring& value) {
    ASSERT_EQ(
        ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, (kClasses + key).c_str(), nullptr, REG_SZ,
                          value.c_str(), static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))),
        ERROR_SUCCESS);
}

void Unregister() {
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, (kClasses + L"Excel.Application").c_str());
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, (kClasses + L"CLSID\\" + kExcelClassText).c_str());
}

class ExcelRendererWindowsTest : public testing::Test {
  protected:
    ExcelRendererWindowsTest() {
        ReplaceFile(template_, "the template");
        ReplaceFile(target_, "the old report");
        Install();
    }
    ~ExcelRendererWindowsTest() override { Unregister(); }

    // An Excel that does what the arguments of excel_recorder_windows.cpp say.
    void Install(const QString& arguments = {}) {
        const QString program =
            QDir::toNativeSeparators(QDir(QCoreApplication::applicationDirPath())
                                         .filePath(QStringLiteral("davo_excel_recorder.exe")));
        const QString command = QStringLiteral("\"%1\" \"log=%2\" %3")
                                    .arg(program, QDir::toNativeSeparators(log_), arguments);
        Register(L"Excel.Application\\CLSID", kExcelClassText);
        Register(std::wstring(L"CLSID\\") + kExcelClassText + L"\\LocalServer32",
                 command.toStdWString());
    }

    bool Render(const Workbook& workbook) {
        const std::unique_ptr<ReportRenderer> renderer = MakeExcelRenderer();
        if (renderer == nullptr) throw std::runtime_error("no Excel");
        return renderer->Render(
            workbook, template_, target_, [this](int n, int m) { progress_.emplace_back(n, m); },
            stop_.get_token());
    }

    // What it throws.
    RunTimeError ErrorOfRender() {
        return Thrown([this] { Render(ReportOf(1)); }).value();
    }

    QStringList Conversation() const {
        return QString::fromUtf8(ReadWholeFile(log_).c_str())
            .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    // The recorder holds its log open as long as it runs.
    bool HasEnded(int milliseconds = 0) const {
        const QDeadlineTimer patience(milliseconds);
        while (QFile::exists(log_) && !QFile::remove(log_)) {
            if (patience.hasExpired()) return false;
            QThread::msleep(20);
        }
        return true;
    }

    const QTemporaryDir folder_;
    const QString template_ = folder_.filePath(QStringLiteral("DAVO_Header.xls"));
    const QString target_ = folder_.filePath(QStringLiteral("T0012.xls"));
    const QTemporaryDir logFolder_;
    const QString log_ = logFolder_.filePath(QStringLiteral("conversation.txt"));
    std::stop_source stop_;
    std::vector<std::pair<int, int>> progress_;
};

TEST_F(ExcelRendererWindowsTest, SpeaksWithExcelAndEndsIt) {
    QElapsedTimer timer;
    timer.start();
    ASSERT_TRUE(Render(ReportOf(3)));
    RecordProperty("milliseconds", static_cast<int>(timer.elapsed()));
    EXPECT_EQ(ReadWholeFile(target_), "a workbook");
    const QStringList lines = Conversation();
    RecordProperty("calls", static_cast<int>(lines.size()));
    ASSERT_GT(lines.size(), 100);
    EXPECT_EQ(lines.at(0), QStringLiteral("Application.Hwnd"));
    EXPECT_EQ(lines.at(1), QStringLiteral("Application.Visible = false"));
    EXPECT_TRUE(lines.contains(QStringLiteral("Book.Sheets.Item(1).Copy(Book.Sheets.Item(1))")));
    EXPECT_TRUE(lines.contains(QStringLiteral("Sheet3.Paste(Sheet3.Range(\"G42\"))")));
    EXPECT_TRUE(lines.contains(
        QStringLiteral("Chart.SetSourceData(Book.Sheets.Item(\"Sheet2\").Range(\"B19:C32\"), 2)")));
    const QStringList points = lines.filter(QStringLiteral("Sheet1.Range(\"A18:D32\").Value2 = "));
    EXPECT_THAT(points.value(0).toStdString(),
                HasSubstr("\"'IMPEDANCE (OHM)\"; 1, 0.05, 10, 200;"));
    // The notes' characters of the page come through.
    EXPECT_TRUE(lines.join(QLatin1Char('\n')).contains(QStringLiteral("=1+1 \u20ac \u00e9")));
    EXPECT_THAT(lines.at(lines.size() - 3).toStdString(), HasSubstr("report.xls\", 56)"));
    EXPECT_EQ(lines.at(lines.size() - 2), QStringLiteral("Book.Close(false)"));
    EXPECT_EQ(lines.last(), QStringLiteral("Application.Quit"));
    EXPECT_EQ(progress_, (std::vector<std::pair<int, int>>{{1, 3}, {2, 3}, {3, 3}}));
    EXPECT_TRUE(HasEnded());
}

TEST_F(ExcelRendererWindowsTest, FailuresBecomeRunTimeErrorsAndExcelEnds) {
    ASSERT_TRUE(Render(ReportOf(1)));
    const int calls = static_cast<int>(Conversation().size());
    // Every one of the first, which make the session; then as many as time allows; and the last.
    std::vector<int> failing = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    for (int n = 10; n < calls - 2; n += 29)
        failing.push_back(n);
    failing.push_back(calls - 2);
    failing.push_back(calls - 1);
    for (const int n : failing) {
        SCOPED_TRACE("call " + std::to_string(n) + " of " + std::to_string(calls));
        ReplaceFile(target_, "the old report");
        Install(QStringLiteral("fail-at=%1").arg(n));
        const RunTimeError error = ErrorOfRender();
        EXPECT_EQ(error.Number(), ErrorNumber::Automation);
        EXPECT_THAT(error.what(), HasSubstr("call " + std::to_string(n) + " fails"));
        ASSERT_EQ(ReadWholeFile(target_), "the old report");
        ASSERT_EQ(QDir(folder_.path()).entryList(QDir::Files).size(), 2);
        // Without its window, call 1, nobody knows its process: it ends by itself.
        ASSERT_TRUE(HasEnded(n == 1 ? 10000 : 0));
    }
}

TEST_F(ExcelRendererWindowsTest, AReportIsWholeThoughQuitFails) {
    ASSERT_TRUE(Render(ReportOf(1)));
    const auto calls = Conversation().size();
    ReplaceFile(target_, "the old report");
    Install(QStringLiteral("stay fail-at=%1").arg(calls));
    EXPECT_TRUE(Render(ReportOf(1)));
    EXPECT_EQ(ReadWholeFile(target_), "a workbook");
    EXPECT_TRUE(HasEnded());
}

TEST_F(ExcelRendererWindowsTest, AnExcelThatStaysIsEndedByItsProcess) {
    Install(QStringLiteral("stay"));
    EXPECT_TRUE(Render(ReportOf(1)));
    EXPECT_TRUE(HasEnded());
}

TEST_F(ExcelRendererWindowsTest, ABusyExcelIsAskedAgain) {
    Install(QStringLiteral("busy-at=40"));
    EXPECT_TRUE(Render(ReportOf(1)));
    EXPECT_EQ(ReadWholeFile(target_), "a workbook");
    EXPECT_TRUE(HasEnded());
}

TEST_F(ExcelRendererWindowsTest, WhoStopsDoesNotWaitForAnExcelThatHangs) {
    Install(QStringLiteral("hang-at=50"));
    const std::jthread stopper([this] {
        QThread::msleep(2000);
        stop_.request_stop();
    });
    EXPECT_FALSE(Render(ReportOf(1)));  // the call that hangs would never return
    EXPECT_EQ(ReadWholeFile(target_), "the old report");
    EXPECT_TRUE(HasEnded());
}

TEST_F(ExcelRendererWindowsTest, AStopInTheMiddleEndsExcel) {
    const std::jthread stopper([this] {
        for (int i = 0; i < 5000 && !QFile::exists(log_); ++i)
            QThread::msleep(1);
        QThread::msleep(20);
        stop_.request_stop();
    });
    EXPECT_FALSE(Render(ReportOf(3)));
    EXPECT_EQ(ReadWholeFile(target_), "the old report");
    EXPECT_EQ(Conversation().last(), QStringLiteral("Application.Quit"));
    EXPECT_TRUE(HasEnded());
}

TEST_F(ExcelRendererWindowsTest, AnExcelThatDoesNotStartIsError429) {
    Register(std::wstring(L"CLSID\\") + kExcelClassText + L"\\LocalServer32",
             L"C:\\nowhere\\excel.exe");
    const RunTimeError error = ErrorOfRender();
    EXPECT_EQ(error.Number(), ErrorNumber::CannotCreateObject);
    EXPECT_THAT(error.what(), HasSubstr("Run-time error '429': ActiveX component can't create "
                                        "object: Microsoft Excel (0x"));
    EXPECT_EQ(ReadWholeFile(target_), "the old report");
}

TEST_F(ExcelRendererWindowsTest, IsChosenWhereItIsInstalled) {
    const ChosenRenderer chosen = ChooseRenderer();
    EXPECT_FALSE(chosen.isBuiltIn);
    EXPECT_EQ(chosen.renderer->Extension(), QStringLiteral(".xls"));
    Unregister();
    EXPECT_EQ(MakeExcelRenderer(), nullptr);
    EXPECT_TRUE(ChooseRenderer().isBuiltIn);
}

}  // namespace
}  // namespace davo::test
