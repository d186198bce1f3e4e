// SPDX-License-Identifier: GPL-3.0-or-later
// Measured curves of real transformers, as published, on their whole way through a report. What
// comes out is written down in docs/kneepoints.md, which this keeps true.

#include <sstream>

#include "common/files.h"
#include "reports/report_writer.h"
#include "tests/reports/workbook_view.h"
#include "tests/support/record_text.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

struct PublishedCurve {
    std::string name;
    std::string band;  // "775 to 825"
    test::PointTexts points;
};

std::vector<PublishedCurve> ReadCurves() {
    std::vector<PublishedCurve> curves;
    const QString folder = QString::fromUtf8(DAVO_TESTS_FOLDER);
    for (const std::string& line :
         ReadLines(folder + u"/analysis/data/published_ct_curves.csv"_s)) {
        if (line.starts_with('#')) continue;
        std::istringstream in(line);
        PublishedCurve curve;
        std::string low;
        std::string high;
        std::getline(in, curve.name, ',');
        std::getline(in, low, ',');
        std::getline(in, high, ',');
        curve.band = low + " to " + high;
        for (std::string pair; in >> pair;) {
            const std::size_t colon = pair.find(':');
            curve.points.emplace_back(pair.substr(0, colon), pair.substr(colon + 1));
        }
        curves.push_back(curve);
    }
    return curves;
}

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
    const std::vector<PublishedCurve> curves = ReadCurves();
    ASSERT_EQ(curves.size(), 4U);
    std::string file = test::HeaderText();
    for (const PublishedCurve& curve : curves) {
        test::RecordParts parts;
        parts.points = curve.points;
        file += test::RecordText(parts);
    }
    const Workbook book = BuildReport(test::ParseFile(file), {"ASA 10/50 Marker", false});
    for (std::size_t i = 0; i < curves.size(); ++i) {
        const Sheet& sheet = book.sheets.at(i);
        const std::string row = "| " + curves[i].name + " | " +
                                std::to_string(curves[i].points.size()) + " | " + curves[i].band +
                                " | " + Shown(sheet, "10") + " | " + Shown(sheet, "11") + " | " +
                                Shown(sheet, "12") + " |";
        EXPECT_NE(document.find(row), std::string::npos) << "not in the document: " << row;
        EXPECT_EQ(sheet.charts.size(), 1U);
    }
}

}  // namespace
}  // namespace davo
