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
    std::vector<Workbook> workbooks = {ReportWithNotes(1), ReportWithNotes(3), ReportWithNotes(31)};
    workbooks.push_back(
        BuildReport(ParseGroup(HeaderText("T1") + RecordText(3) + HeaderText("T2") + RecordText(4)),
                    {"ASA 10/50 Marker", false}));
    for (const Workbook& workbook : workbooks)
        EXPECT_TRUE(calc::Unpacked(calc::Packed(workbook)) == workbook);
}

TEST(PackedWorkbook, IsRefusedWhenItIsCutOffOrHasMore) {
    const std::string bytes = calc::Packed(ReportWithNotes(1));
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_THROW(calc::Unpacked(bytes.substr(0, size)), std::invalid_argument) << size;
    EXPECT_THROW(calc::Unpacked(bytes + "x"), std::invalid_argument);
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
            // As large as before, since nothing may be left over.
            EXPECT_EQ(calc::Packed(calc::Unpacked(bytes)).size(), bytes.size());
        } catch (const std::invalid_argument&) {
            continue;
        }
    }
}

}  // namespace
}  // namespace davo::test
