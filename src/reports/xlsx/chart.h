// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xlsxwriter.h>

#include "reports/workbook.h"

namespace davo {

// Makes chart in target and puts it on onto at its anchor. Its series refer to the sheets of
// workbook by their final names. Throws RunTimeError 440 when the library refuses something.
void WriteXlsxChart(const Workbook& workbook, const Chart& chart, lxw_workbook* target,
                    lxw_worksheet* onto);

}  // namespace davo
