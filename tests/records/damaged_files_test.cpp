// SPDX-License-Identifier: GPL-3.0-or-later
// Random damage to record files and capture files: an error of ours at most, never a crash.

#include <random>

#include "common/run_time_error.h"
#include "records/capture_file.h"
#include "records/record_file.h"
#include "records/record_file_writer.h"
#include "tests/records/captures.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

class Damage {
  public:
    Damage() : random_(test::RandomSeed(20261121)) {}

    std::string To(std::string bytes) {
        for (std::size_t changes = 1 + Below(6); changes > 0; --changes)
            Change(bytes);
        return bytes;
    }

  private:
    std::size_t Below(std::size_t bound) { return bound == 0 ? 0 : random_() % bound; }

    void Change(std::string& bytes) {
        static const std::vector<std::string> kPieces = {
            "\r\n",        "\n",     "\r", "DATA",        "DONE",   ": ",
            "VOLTAGE:",    "NOTES:", "-1", "1E999",       "1E-999", std::string(2, '\0'),
            "REC NUMBER:", "ZZZZZZ", "zz", " ",           "N/A",    "\xFF",
            "CURRENT",     "65536",  "+",  "TEST NOTES: "};
        const std::size_t at = Below(bytes.size());
        const std::size_t length = Below(1 + Below(60));
        switch (Below(6)) {
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
                bytes.insert(at, bytes.substr(Below(bytes.size()), length));
                break;
            case 4:
                bytes.replace(at, std::min(length, bytes.size() - at),
                              kPieces[Below(kPieces.size())]);
                break;
            default:
                if (Below(8) == 0) bytes.resize(at);
        }
    }

    std::mt19937_64 random_;
};

std::string Capture() {
    std::string capture;
    for (const int points : {32, 0, 5}) {
        RecordImage image = test::ImageWithPoints(points);
        image.kneeTypeCode = points;
        capture += test::CaptureBlock(image);
    }
    return capture;
}

constexpr int kRounds = 20000;

TEST(DamagedFiles, RecordFileIsReadOrRefused) {
    HeaderTable header;
    header.Field(0) = "ACME";
    const std::string whole = ConvertCapture(Capture(), header, {"T1", 3, "one\r\ntwo"});
    ASSERT_EQ(ParseTestRecordFile(whole).records.size(), 3U);
    Damage damage;
    int refused = 0;
    for (int round = 0; round < kRounds; ++round) {
        const std::string bytes = damage.To(whole);
        try {
            ParseTestRecordFile(bytes);
        } catch (const RunTimeError& error) {
            EXPECT_TRUE(error.Number() == ErrorNumber::TypeMismatch ||
                        error.Number() == ErrorNumber::InputPastEnd)
                << error.what();
            ++refused;
        }
    }
    EXPECT_GT(refused, kRounds / 4);
    EXPECT_LT(refused, kRounds);
}

TEST(DamagedFiles, CaptureFileAlwaysConvertsToARecordFileThatReads) {
    const std::string whole = Capture();
    Damage damage;
    for (int round = 0; round < kRounds / 3 && !testing::Test::HasFailure(); ++round) {
        const std::string bytes = damage.To(whole);
        const std::string file = ConvertCapture(bytes, HeaderTable(), {"T1", 3, ""});
        const std::size_t shots = CapturedShots(bytes).size();
        EXPECT_EQ(ParseTestRecordFile(file).records.size(), std::min<std::size_t>(shots, 3))
            << "round " << round;
    }
}

TEST(DamagedFiles, RecordOfRandomBytesIsDecoded) {
    std::mt19937_64 random(test::RandomSeed(3));
    for (int round = 0; round < kRounds; ++round) {
        std::string text;
        for (auto left = random() % 400; left > 0; --left)
            text += static_cast<char>(random());
        const RecordImage image = DecodeRecordImage(text);
        EXPECT_LE(image.Points().size(), 32U);
        EXPECT_FALSE(DescribeRecordDamage("DATA" + text + "DONE").empty());
    }
}

}  // namespace
}  // namespace davo
