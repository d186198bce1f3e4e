// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QString>

namespace davo {

// The workbook whose sheet every test's sheet is a copy of. It is in the folder of the reports,
// where its owner may put a letterhead of his own in it.
inline constexpr const char* kTemplateFileName = "DAVO_Header.xls";

// The one that came with the program: in the program's folder, or, when there is none, in
// ../share/davo, where a package puts it. The former's path when there is neither.
QString InstalledTemplate(const QString& programFolder = QCoreApplication::applicationDirPath());

// Puts a copy of installed into excelPath (with or without a separator at its end), unless a
// template is there; to be called whenever that folder has been made, and after the settings are
// read. Throws RunTimeError 53 when installed is missing, 76 when excelPath is, and what
// ReplaceFile throws.
void PutTemplate(const QString& excelPath, const QString& installed = InstalledTemplate());

}  // namespace davo
