// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/calc/packed_workbook.h"

#include <random>
#include <stdexcept>

#include "reports/report_writer.h"
#include "tests/reports/workbook_view.h"
#include "tests/support/random_rounds.h"
#include "tests/support/record_text.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

Workbook ReportWithNotes(int tests) {
    return BuildReport(ParseFile(FileText(tests) + Line("NOTES:") + Line("a note")),
                       {"IEEE 30 Degree Marker", true});
}

TEST(PackedWorkbook, IsTheSameWhenItIsUnpacked) {
    for (const int tests : {1, 3, 31}) {
        const Workbook workbook = ReportWithNotes(tests);
        const std::string bytes = calc::Packed(workbook);
        const Workbook other = calc::Unpacked(bytes);
        EXPECT_EQ(calc::Packed(other), bytes);
        ASSERT_EQ(other.sheets.size(), workbook.sheets.size());
        for (std::size_t i = 0; i < workbook.sheets.size(); ++i) {
            EXPECT_EQ(other.sheets[i].styles, workbook.sheets[i].styles);
            EXPECT_EQ(other.sheets[i].page, workbook.sheets[i].page);
            EXPECT_EQ(CellText(other.sheets[i], "A1"), CellText(workbook.sheets[i], "A1"));
            EXPECT_EQ(CellNumber(other.sheets[i], "B19"), CellNumber(workbook.sheets[i], "B19"));
        }
    }
}

TEST(PackedWorkbook, IsRefusedWhenItIsCutOffOrHasMore) {
    const std::string bytes = calc::Packed(ReportWithNotes(1));
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_THROW(calc::Unpacked(bytes.substr(0, size)), std::invalid_argument) << size;
    EXPECT_THROW(calc::Unpacked(bytes + "x"), std::invalid_argument);
}

TEST(PackedWorkbook, IsRefusedWhenAnotherVersionHasMadeIt) {
    std::string bytes = calc::Packed(ReportWithNotes(1));
    ++bytes.at(sizeof(std::size_t));  // the version's first digit
    EXPECT_THROW(calc::Unpacked(bytes), std::invalid_argument);
}

TEST(PackedWorkbook, ADamagedOneIsRefusedOrRead) {
    const std::string whole = calc::Packed(ReportWithNotes(2));
    std::mt19937_64 random(RandomSeed(std::random_device{}()));
    constexpr int kRounds = 5000;
    for (int round = 0; round < RandomRounds(kRounds); ++round) {
        std::string bytes = whole;
        for (int n = round % 5; n >= 0; --n)
            bytes.at(random() % bytes.size()) = static_cast<char>(random());
        try {
            EXPECT_LE(calc::Unpacked(bytes).sheets.size(), whole.size());
        } catch (const std::invalid_argument&) {
            continue;
        }
    }
}

}  // namespace
}  // namespace davo::test
