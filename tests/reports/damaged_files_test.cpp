// SPDX-License-Identifier: GPL-3.0-or-later
// Random damage to record files: read, or refused with an error of ours, never a crash.

#include <map>
#include <random>

#include "common/files.h"
#include "common/run_time_error.h"
#include "reports/record_csv.h"
#include "reports/record_facts.h"
#include "tests/reports/random_record.h"
#include "tests/support/random_seed.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

class Damage {
  public:
    explicit Damage(test::RecordSource& random) : random_(random) {}

    std::string To(std::string bytes) {
        for (int changes = 1 + random_.Below(4); changes > 0; --changes)
            Change(bytes);
        return bytes;
    }

  private:
    std::size_t Below(std::size_t bound) {
        return bound == 0 ? 0 : static_cast<std::size_t>(random_.Below(static_cast<int>(bound)));
    }

    void Change(std::string& bytes) {
        static const std::vector<std::string> kPieces = {"\r\n",
                                                         "\n",
                                                         "\r",
                                                         "VOLTAGE:",
                                                         "NOTES:",
                                                         "-",
                                                         "0.0",
                                                         "1E308",
                                                         "-1E308",
                                                         "1E-320",
                                                         "E999",
                                                         "nan",
                                                         "inf",
                                                         "REC NUMBER:",
                                                         "TEST NUMBER: ",
                                                         " ",
                                                         "N/A",
                                                         "\xFF",
                                                         "99",
                                                         "NUMBER OF DATA POINTS: 99",
                                                         std::string(2, '\0')};
        const std::size_t at = Below(bytes.size());
        const std::size_t length = std::min(Below(60), bytes.size() - at);
        switch (Below(7)) {
            case 0:
                if (!bytes.empty()) bytes[at] = static_cast<char>(Below(256));
                break;
            case 1:
                bytes.erase(at, length);
                break;
            case 2:
                bytes.insert(at, kPieces[Below(kPieces.size())]);
                break;
            case 3:
                bytes.replace(at, length, kPieces[Below(kPieces.size())]);
                break;
            case 4:
                ChangeNumber(bytes, at);
                break;
            case 5:
                CopyLine(bytes, at);
                break;
            default:
                if (Below(8) == 0) bytes.resize(at);
        }
    }

    // Another number in the place of the next point's current or voltage.
    void ChangeNumber(std::string& bytes, std::size_t at) {
        static const std::vector<std::string> kNumbers = {
            "0", "-5", "1E308", "-1E308", "1E-300", "0.00004", "9999999", "0.00005"};
        const std::string key = Below(2) == 0 ? "CURRENT: " : "VOLTAGE: ";
        const std::size_t found = bytes.find(key, at);
        if (found == std::string::npos) return;
        const std::size_t from = found + key.size();
        const std::size_t end = bytes.find_first_not_of("0123456789.", from);
        bytes.replace(from, std::min(end, bytes.size()) - from, kNumbers[Below(kNumbers.size())]);
    }

    // The line at a place again in front of another.
    void CopyLine(std::string& bytes, std::size_t at) {
        const std::size_t from = bytes.rfind('\n', at) + 1;
        const std::size_t end = std::min(bytes.find('\n', at), bytes.size() - 1);
        if (end < from) return;
        const std::string line = bytes.substr(from, end + 1 - from);
        bytes.insert(bytes.rfind('\n', Below(bytes.size())) + 1, line);
    }

    test::RecordSource& random_;
};

TEST(DamagedRecords, AreReadOrRefused) {
    constexpr int kRounds = 4000;
    test::RecordSource random(test::RandomSeed(20261123));
    Damage damage(random);
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
