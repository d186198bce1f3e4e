// SPDX-License-Identifier: GPL-3.0-or-later
// Random damage to record files: read, or refused with an error of ours, never a crash.

#include <map>
#include <random>

#include "common/files.h"
#include "common/run_time_error.h"
#include "reports/record_csv.h"
#include "reports/record_facts.h"
#include "tests/reports/record_damage.h"
#include "tests/support/random_seed.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

TEST(DamagedRecords, AreReadOrRefused) {
    constexpr int kRounds = 4000;
    test::RecordSource random(test::RandomSeed(20261123));
    test::Damage damage(random);
    std::map<int, int> errors;
    int read = 0;
    int kneepoints = 0;
    for (int round = 0; round < kRounds; ++round) {
        const std::string bytes = damage.To(test::HeaderText() + test::RecordText(random.Parts(1)) +
                                            test::RecordText(random.Parts(2)));
        try {
            const RecordFacts facts = ParseRecordFacts(bytes, "T1");
            ++read;
            for (const RecordTest& test : facts.tests) {
                for (const KneeFact& knee : test.knees) {
                    kneepoints += knee.At() ? 1 : 0;
                    ASSERT_EQ(knee.reason.empty(), knee.At().has_value()) << bytes;
                }
            }
            ASSERT_FALSE(RecordsAsCsv({facts}).empty());
        } catch (const RunTimeError& error) {
            ++errors[static_cast<int>(error.Number())];
        }
    }
    std::cout << read << " read, " << kneepoints << " kneepoints";
    for (const auto& [number, count] : errors)
        std::cout << ", " << count << " times error " << number;
    std::cout << "\n";
    EXPECT_GT(read, kRounds / 10);
    EXPECT_GT(kneepoints, kRounds / 10);
    for (const auto& [number, count] : errors)
        EXPECT_TRUE(number == 62 || number == 13 || number == 9 || number == 6) << number;
    EXPECT_GT(errors[13], kRounds / 10);
    EXPECT_GT(errors[62], 5);
}

TEST(DamagedRecords, RandomBytesAreRefused) {
    const test::TemporaryFolder folder;
    std::mt19937_64 random(test::RandomSeed(20261124));
    for (int round = 0; round < 200; ++round) {
        std::string bytes;
        for (auto left = random() % 3000; left > 0; --left)
            bytes += static_cast<char>(random());
        ReplaceFile(folder.Path("T1.txt"), bytes);
        EXPECT_THROW(ReadRecordFacts(folder.Path("T1.txt")), RunTimeError);
        EXPECT_NO_THROW(TestsOfCapture(bytes));
    }
}

}  // namespace
}  // namespace davo
