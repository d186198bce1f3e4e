// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include "reports/excel/automation.h"
#include "reports/workbook.h"

namespace davo::excel {

// Makes a chart on a sheet of its own in book, pastes a copy of it into sheet and takes the chart's
// sheet away. All sheets of workbook are in book under their build names, with their numbers.
// beforeStep is called between the steps; what it throws is passed on.
void AddChart(const Object& book, const Object& sheet, const Workbook& workbook, const Chart& chart,
              const std::function<void()>& beforeStep);

}  // namespace davo::excel
