// SPDX-License-Identifier: GPL-3.0-or-later
// Measured curves of real transformers, as published, on their whole way through a report. What
// comes out is written down in docs/kneepoints.md, which this keeps true.

#include "tests/analysis/published_curves.h"
#include "common/files.h"
#include "common/numbers.h"
#include "reports/report_writer.h"
#include "tests/reports/workbook_view.h"
#include "tests/support/record_text.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

std::string Shown(const Sheet& sheet, const std::string& row) {
    const auto shown = [&](const std::string& address) {
        const double number = test::CellNumber(sheet, address);
        const std::string format = test::FormatAt(sheet, address);
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.*f", static_cast<int>(format.size()) - 2,
                      number);
        return std::string(text.data());
    };
    if (test::CellText(sheet, "B" + row) == "N/A") return "N/A";
    if (test::CellNumber(sheet, "B" + row) == 0) return "none";
    return shown("B" + row) + " V, " + shown("D" + row) + " A";
}

TEST(PublishedCurves, HaveTheKneepointsOfTheDocument) {
    const std::string document =
        ReadWholeFile(QString::fromUtf8(DAVO_TESTS_FOLDER) + u"/../docs/kneepoints.md"_s);
    const std::vector<test::PublishedCurve> curves = test::PublishedCurves();
    ASSERT_EQ(curves.size(), 4U);
    std::string file = test::HeaderText();
    for (const test::PublishedCurve& curve : curves) {
        test::RecordParts parts;
        parts.points.clear();
        for (const CurvePoint& point : curve.points)
            parts.points.emplace_back(GeneralNumber(point.current), GeneralNumber(point.voltage));
        file += test::RecordText(parts);
    }
    const Workbook book = BuildReport(test::ParseFile(file), {"ASA 10/50 Marker", false});
    for (std::size_t i = 0; i < curves.size(); ++i) {
        const Sheet& sheet = book.sheets.at(i);
        const std::string row =
            "| " + curves[i].name + " | " + std::to_string(curves[i].points.size()) + " | " +
            GeneralNumber(curves[i].bandLow) + " to " + GeneralNumber(curves[i].bandHigh) + " | " +
            Shown(sheet, "10") + " | " + Shown(sheet, "11") + " | " + Shown(sheet, "12") + " |";
        EXPECT_NE(document.find(row), std::string::npos) << "not in the document: " << row;
        EXPECT_EQ(sheet.charts.size(), 1U);
    }
}

}  // namespace
}  // namespace davo
