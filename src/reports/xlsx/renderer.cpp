// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/xlsx/renderer.h"

#include <xlsxwriter.h>

#include <QFile>
#include <QTemporaryDir>
#include <cerrno>
#include <memory>
#include <vector>

#include "common/files.h"
#include "reports/xlsx/chart.h"
#include "reports/xlsx/formats.h"
#include "reports/xlsx/letterhead.h"
#include "reports/xlsx/sheet.h"
#include "reports/xlsx/text.h"

namespace davo {

namespace {

struct FreeWorkbook {
    void operator()(lxw_workbook* workbook) const { lxw_workbook_free(workbook); }
};
using OwnedWorkbook = std::unique_ptr<lxw_workbook, FreeWorkbook>;

// Makes the sheets first, because charts refer to them, and fills them then. Returns false when
// stop was requested.
bool Fill(const Workbook& workbook, lxw_workbook* target, const RenderProgress& progress,
          const std::stop_token& stop) {
    std::vector<lxw_worksheet*> sheets;
    for (const Sheet& sheet : workbook.sheets) {
        const std::string name = Utf8(sheet.finalName);
        RequireXlsx(workbook_validate_sheet_name(target, name.c_str()));
        sheets.push_back(workbook_add_worksheet(target, name.c_str()));
    }
    XlsxFormats formats(target);
    const QByteArray picture = LetterheadPicture();
    const int tests = TestSheetsOf(workbook);
    int test = 0;
    for (std::size_t i = 0; i < sheets.size(); ++i) {
        if (stop.stop_requested()) return false;
        const Sheet& sheet = workbook.sheets[i];
        if (IsTestSheet(sheet) && progress) progress(++test, tests);
        WriteXlsxSheet(sheet, picture, formats, sheets[i]);
        for (const Chart& chart : sheet.charts)
            WriteXlsxChart(workbook, chart, target, sheets[i]);
    }
    worksheet_activate(sheets.at(workbook.activeSheet));
    return true;
}

// Ends the file; the workbook is gone then in any case.
void Close(OwnedWorkbook workbook) {
    errno = 0;
    const lxw_error error = workbook_close(workbook.release());
    if (error == LXW_NO_ERROR) return;
    const bool isFull = errno == ENOSPC;
    throw RunTimeError(isFull ? ErrorNumber::DiskFull : ErrorNumber::Automation,
                       lxw_strerror(error));
}

}  // namespace

bool XlsxRenderer::Render(const Workbook& workbook, const QString& /*templatePath*/,
                          const QString& targetPath, const RenderProgress& progress,
                          const std::stop_token& stop) {
    // The C library keeps what is freed up to twice the largest block that was freed; else it gives
    // the memory for each part of the file back, and takes it again.
    constexpr qsizetype kKept = 4 << 20;
    QByteArray().reserve(kKept);
    // The library cannot tell all failures of a file; ReplaceFile can.
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("report.xlsx"));
    QByteArray folderName = QFile::encodeName(folder.path());
    lxw_workbook_options options{};
    options.tmpdir = folderName.data();
    OwnedWorkbook target(workbook_new_opt(QFile::encodeName(path).constData(), &options));
    if (!target) throw RunTimeError(ErrorNumber::Automation, path.toStdString());
    if (!Fill(workbook, target.get(), progress, stop)) return false;
    Close(std::move(target));
    return FinishRendering(targetPath, ReadWholeFile(path), stop);
}

}  // namespace davo
