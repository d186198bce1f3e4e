// SPDX-License-Identifier: GPL-3.0-or-later
// Shots of the simulated instrument on their whole way into a report.

#include "instrument/transformer.h"
#include "records/record_file_writer.h"
#include "reports/report_writer.h"
#include "tests/reports/workbook_view.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using instrument::MeasureShot;
using instrument::Shot;
using instrument::Transformer;

std::string FileOf(const Shot& shot) {
    const std::string capture = "DATA" + EncodeRecordImage(shot.image) +
                                "\r\nDONE\r\nMEASURED RATIO: " + shot.ratioText +
                                "\r\nNAMEPLATE RATIO: N/A\r\nPERCENT ERROR: N/A\r\n\r\n";
    return ConvertCapture(capture, HeaderTable(), {"T1", 1, ""});
}

TEST(InstrumentReport, EveryTransformersCurveIsReportedLowestPointFirst) {
    constexpr int kShots = 20;
    instrument::Random random(test::RandomSeed(4711));
    for (const Transformer& transformer : instrument::TransformerPresets()) {
        for (int n = 0; n < kShots; ++n) {
            const Shot shot =
                MeasureShot(transformer, false, instrument::Polarity::AsWired, random);
            const ReportTables report = test::ParseFile(FileOf(shot));
            const std::size_t points = shot.image.Points().size();
            const int count = report.tables.pointCount[0];
            ASSERT_GE(count, static_cast<int>(points)) << transformer.name;
            for (std::size_t i = 1; i < static_cast<std::size_t>(count); ++i) {
                ASSERT_LE(report.tables.pointCurrent[0][i - 1], report.tables.pointCurrent[0][i])
                    << transformer.name << " point " << i;
            }
            EXPECT_NEAR(report.tables.pointCurrent[0][0], shot.image.Points().back().current, 1e-9);
            const Workbook book = BuildReport(report, {"ASA 10/50 Marker", true});
            EXPECT_EQ(book.sheets.at(0).charts.size(), 1U);
        }
    }
}

TEST(InstrumentReport, ATransformersKneeLiesWhereItsModelBends) {
    instrument::Random random(test::RandomSeed(4712));
    for (const Transformer& transformer : instrument::TransformerPresets()) {
        if (transformer.points < 16) continue;  // too sparse for the rules
        const Shot shot = MeasureShot(transformer, false, instrument::Polarity::AsWired, random);
        const ReportTables report = test::ParseFile(FileOf(shot));
        const double knee = std::atof(report.tables.kneeAsa[0].voltage.c_str());
        EXPECT_GT(knee, 0.6 * transformer.kneeVoltage) << transformer.name;
        EXPECT_LT(knee, 1.2 * transformer.kneeVoltage) << transformer.name;
    }
}

TEST(InstrumentReport, ARatioOnlyShotSaysThatThereIsNoCurve) {
    instrument::Random random(test::RandomSeed(4713));
    const Shot shot = MeasureShot(instrument::TransformerPresets()[0], true,
                                  instrument::Polarity::OutOfPhase, random);
    const Workbook book = BuildReport(test::ParseFile(FileOf(shot)), {"ASA 10/50 Marker", true});
    EXPECT_EQ(test::CellText(book.sheets.at(0), "A20"), "Graph 1 has no data.");
    EXPECT_EQ(test::CellText(book.sheets.at(0), "B14"), "OUT OF PHASE");
}

}  // namespace
}  // namespace davo
