// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "reports/renderer.h"

namespace davo {

// The renderer that needs no other program: writes .xlsx by libxlsxwriter. The letterhead of its
// sheets is its own (xlsx_letterhead.h) in place of the template, which need not be there.
//
// Render throws what ReplaceFile throws (76, 70, 61, 57); 61 when the disk of the temporary folder
// is full, and 440 for a workbook that Excel could not hold: a text of more than 32767 characters,
// a footer of more than 255, a sheet's name that is not legal.
class XlsxRenderer : public ReportRenderer {
  public:
    QString Extension() const override { return QStringLiteral(".xlsx"); }
    bool Render(const Workbook& workbook, const QString& templatePath, const QString& targetPath,
                const RenderProgress& progress, const std::stop_token& stop) override;
};

}  // namespace davo
