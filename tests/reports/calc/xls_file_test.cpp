// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/calc/xls_file.h"

#include <random>

#include "common/files.h"
#include "tests/support/random_rounds.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

Workbook TwoSheets() {
    Workbook workbook;
    workbook.sheets.resize(2);
    workbook.activeSheet = 1;
    for (Sheet& sheet : workbook.sheets) {
        Chart& chart = sheet.charts.emplace_back();
        chart.legend = true;
        chart.series.resize(2);
        for (ChartSeries& series : chart.series)
            series.inLegend = false;
    }
    return workbook;
}

std::string Template() {
    return ReadWholeFile(
        QStringLiteral(DAVO_TESTS_FOLDER "/../packaging/template/DAVO_Header.xls"));
}

TEST(XlsFile, PutsTheSheetThatIsSeenFirst) {
    std::string bytes = Template();
    const std::string before = bytes;
    calc::FinishXls(bytes, TwoSheets());
    EXPECT_NE(bytes, before);
    EXPECT_EQ(bytes.size(), before.size());
}

TEST(XlsFile, SelectsTheCellOfTheReport) {
    using namespace std::string_literals;
    const std::string record = "\x1D\0\x0F\0\x03"s;
    std::string bytes = Template();
    const std::size_t at = bytes.find(record);
    ASSERT_NE(at, std::string::npos);
    const std::string otherCells = "\x01\0\x07\0\x01\0\x01\0\x01\0\x09\0\x02\x07"s;  // C2:H10
    bytes.replace(at + record.size(), otherCells.size(), otherCells);
    Workbook workbook = TwoSheets();
    workbook.sheets.at(0).selected = PlaceOf("B5");
    calc::FinishXls(bytes, workbook);
    EXPECT_EQ(bytes.substr(at + record.size(), otherCells.size()),
              "\x04\0\x01\0\0\0\x01\0\x04\0\x04\0\x01\x01"s);
}

TEST(XlsFile, LeavesAloneWhatIsNoWorkbook) {
    for (const std::string& is : {std::string(), std::string("no workbook"), std::string(5000, 'x'),
                                  std::string(5000, '\0'), Template().substr(0, 600)}) {
        std::string bytes = is;
        calc::FinishXls(bytes, TwoSheets());
        EXPECT_EQ(bytes, is);
    }
}

TEST(XlsFile, ADamagedFileKeepsItsSize) {
    const std::string whole = Template();
    std::mt19937_64 random(RandomSeed(std::random_device{}()));
    const auto below = [&](std::size_t end) {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
    };
    constexpr int kRounds = 5000;
    for (int round = 0; round < RandomRounds(kRounds); ++round) {
        std::string bytes = whole.substr(0, round % 3 == 0 ? below(whole.size()) : whole.size());
        constexpr std::size_t kHead = 512;
        for (std::size_t n = below(20); n > 0 && !bytes.empty(); --n) {
            const std::size_t end = n % 2 == 0 ? std::min(bytes.size(), kHead) : bytes.size();
            bytes.at(below(end)) = static_cast<char>(below(256));
        }
        const std::size_t size = bytes.size();
        calc::FinishXls(bytes, TwoSheets());
        ASSERT_EQ(bytes.size(), size);
    }
}

}  // namespace
}  // namespace davo::test
