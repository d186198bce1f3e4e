// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "common/settings.h"
#include "reports/report_tables.h"
#include "reports/report_writer.h"
#include "tests/support/record_text.h"

namespace davo::test {

// The workbook of a file of count tests with notes, marked by the IEEE 30 degree rule.
inline Workbook ReportOf(int count) {
    const std::string text =
        FileText(count) + Line("NOTES:") + Line("First, second") + Line("=1+1 \x80 \xE9 & <tag>");
    return BuildReport(ParseReportTables(text, "T0012", RecordSource::RecordFile),
                       {kKneeIeee30, true});
}

}  // namespace davo::test
