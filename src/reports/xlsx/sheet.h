// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xlsxwriter.h>

#include <QByteArray>

#include "reports/workbook.h"
#include "reports/xlsx/formats.h"

namespace davo {

// Writes all of a sheet but its charts. A sheet from the template gets the letterhead with
// picture. Throws RunTimeError 440 when the library refuses something.
void WriteXlsxSheet(const Sheet& sheet, const QByteArray& picture, XlsxFormats& formats,
                    lxw_worksheet* target);

}  // namespace davo
