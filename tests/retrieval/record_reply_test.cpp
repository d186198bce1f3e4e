// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/record_reply.h"

#include "instrument/memory.h"
#include "records/record_file.h"
#include "tests/support/result_number.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

RecordImage UsualImage() {
    RecordImage image;
    image.slots[0] = {124, 1523};
    image.slots[1] = {0, 1600};
    image.slots[2] = {5000, 1700};
    image.slots[3] = {6000, 0};
    image.kneeVoltage = 1523;
    image.kneeCurrent = 1235;
    image.excitationCurrent = 125;
    image.excitationVoltage = 20000;
    image.measuredRatio = 2412345;
    image.phaseAngle = 15;
    image.nameplateH = 1200;
    image.nameplateX = 50;
    image.kneeTypeCode = 1;
    return image;
}

instrument::MemoryRecord RecordOf(std::vector<RecordImage> tests) {
    instrument::MemoryRecord record;
    record.date = "03/14/24";
    record.time = "09:26";
    record.tests = std::move(tests);
    return record;
}

std::string LinesOf(const RecordImage& image) {
    return ConvertRecordReply(RecordReply(RecordOf({image}))).lines;
}

std::string WithPhase(int phase) {
    RecordImage image;
    image.phaseAngle = phase;
    return LinesOf(image);
}

const char* const kEntry =
    "TST_007!03/14/24 09:26TESTS=03"
    "COMPANY=ACME                STATION=NORTH               "
    "CIRCUIT=LINE 1              MFR=TORUS               MODEL=CT-1                "
    "SN=SN77                OPERATOR=J. DOE              COMMENTS=AFTER REPAIR        ";

TEST(RecordHeaderLines, HasTheTwelveLines) {
    EXPECT_EQ(RecordHeaderLines(kEntry, "CT12"),
              "TEST NUMBER: CT12\r\n"
              "DATE: 03/14/24\r\n"
              "TIME: 09:26\r\n"
              "# OF SHOTS: 03\r\n"
              "COMPANY: ACME                \r\n"
              "STATION: NORTH               \r\n"
              "CIRCUIT: LINE 1              \r\n"
              "MFR: TORUS               \r\n"
              "MODEL: CT-1                \r\n"
              "SN: SN77                \r\n"
              "COMMENTS: AFTER REPAIR        \r\n"
              "OPERATOR: J. DOE              \r\n");
}

TEST(RecordHeaderLines, LeavesOutWhatTheEntryLacks) {
    EXPECT_EQ(RecordHeaderLines("TST_007!03/14", "A"),
              "TEST NUMBER: A\r\nDATE: 03/14\r\nTIME: \r\n# OF SHOTS: \r\nCOMPANY: \r\n"
              "STATION: \r\nCIRCUIT: \r\nMFR: \r\nMODEL: \r\nSN: \r\nCOMMENTS: \r\nOPERATOR: \r\n");
    EXPECT_THAT(RecordHeaderLines("", "A"), StartsWith("TEST NUMBER: A\r\nDATE: \r\n"));
}

TEST(RecordHeaderLines, TakesAKeyInsideAnEarlierValueAsPartOfIt) {
    std::string entry = kEntry;
    entry.replace(entry.find("ACME"), 20, "SN=1 STATION=X SN=2 ");
    entry.replace(entry.find("NORTH"), 20, "A CIRCUIT=B MODEL=C ");
    const std::string lines = RecordHeaderLines(entry, "A");
    for (const char* line :
         {"COMPANY: SN=1 STATION=X SN=2 \r\n", "STATION: A CIRCUIT=B MODEL=C \r\n",
          "CIRCUIT: LINE 1              \r\n", "MODEL: CT-1                \r\n",
          "SN: SN77                \r\n"})
        EXPECT_THAT(lines, HasSubstr(line));
}

TEST(ConvertRecordReply, WritesTheLinesOfATest) {
    const ConvertedRecord record = ConvertRecordReply(RecordReply(RecordOf({UsualImage()})));
    EXPECT_EQ(record.tests, 1);
    EXPECT_EQ(record.converted, 1);
    EXPECT_THAT(record.doubtful, IsEmpty());
    EXPECT_EQ(record.lines,
              "REC NUMBER:  1\r\n"
              "CURRENT: 0.5000VOLTAGE: 170.0\r\n"
              "CURRENT: 0.0124VOLTAGE: 152.3\r\n"
              "NUMBER OF DATA POINTS: 2\r\n"
              "KNEE VOLTAGE: 152.300 VOLTS\r\n"
              "KNEE CURRENT: 0.124 AMPS\r\n"
              "EXCITATION CUR: 0.013 AMPS\r\n"
              "EXCITATION VTG: 2000.000 VOLTS\r\n"
              "MEASURED RATIO: 241.235\r\n"
              "POLARITY: IN PHASE\r\n"
              "PHASE ANGLE: 1.5 DEG\r\n"
              "NAMEPLATE RATIO: 240.000\r\n"
              "PERCENT ERROR: 0.51 %\r\n"
              "KNEE POINT TYPE: IEEE 30 DEGREE TANGENT\r\n");
}

TEST(ConvertRecordReply, ScalesTheCurrentByTheRangeByte) {
    RecordImage image = UsualImage();
    image.currentRangeCode = 10;
    EXPECT_THAT(LinesOf(image), HasSubstr("CURRENT: 1.0000VOLTAGE: 170.0\r\n"));
    EXPECT_THAT(LinesOf(image), HasSubstr("KNEE CURRENT: 0.247 AMPS\r\n"));
    EXPECT_THAT(LinesOf(image), HasSubstr("EXCITATION CUR: 0.025 AMPS\r\n"));
    for (const int other : {0, 1, 9, 11, 16, 255}) {
        image.currentRangeCode = other;
        EXPECT_THAT(LinesOf(image), HasSubstr("CURRENT: 0.5000VOLTAGE: 170.0\r\n")) << other;
    }
}

TEST(ConvertRecordReply, DecidesThePolarityByTheProduct) {
    for (const int in : {0, 1, 900, 2700, 3600})
        EXPECT_THAT(WithPhase(in), HasSubstr("POLARITY: IN PHASE\r\n")) << in;
    for (const int out : {901, 902, 1800, 2698})
        EXPECT_THAT(WithPhase(out), HasSubstr("POLARITY: OUT OF PHASE\r\n")) << out;
    for (const int none : {2699, 3601, 65535})
        EXPECT_THAT(WithPhase(none), HasSubstr("POLARITY: N/A\r\n")) << none;
    EXPECT_THAT(WithPhase(2699), HasSubstr("PHASE ANGLE: 269.9 DEG\r\n"));
    EXPECT_THAT(WithPhase(65535), HasSubstr("PHASE ANGLE: 6553.5 DEG\r\n"));
}

TEST(ConvertRecordReply, HasNoRatioForANameplateThatIsNone) {
    for (const auto& [high, low] :
         {std::pair{0, 50}, {65535, 50}, {1200, 0}, {1200, 65535}, {0, 0}, {65535, 65535}}) {
        RecordImage image = UsualImage();
        image.nameplateH = high;
        image.nameplateX = low;
        EXPECT_THAT(LinesOf(image),
                    HasSubstr("NAMEPLATE RATIO: N/A\r\nPERCENT ERROR: N/A\r\nKNEE POINT TYPE"));
    }
}

TEST(ConvertRecordReply, TakesTheMeasuredRatioFromFourBytes) {
    RecordImage image;
    image.measuredRatio = 0xFFFFFFFF;
    EXPECT_THAT(LinesOf(image), HasSubstr("MEASURED RATIO: 429496.730\r\n"));
    image.measuredRatio = 65536;
    EXPECT_THAT(LinesOf(image), HasSubstr("MEASURED RATIO: 6.554\r\n"));
}

TEST(ConvertRecordReply, NamesTheKneepoint) {
    const auto typed = [](int code) {
        RecordImage image;
        image.kneeTypeCode = code;
        return LinesOf(image);
    };
    EXPECT_THAT(typed(1), HasSubstr("KNEE POINT TYPE: IEEE 30 DEGREE TANGENT\r\n"));
    EXPECT_THAT(typed(2), HasSubstr("KNEE POINT TYPE: IEEE 45 DEGREE TANGENT\r\n"));
    for (const int other : {0, 3, 255})
        EXPECT_THAT(typed(other), HasSubstr("KNEE POINT TYPE: ASA 10%VTG -> 50%CUR\r\n"));
}

TEST(ConvertRecordReply, CarriesHalfAFieldToTheNextTest) {
    std::vector<RecordImage> tests;
    for (int i = 1; i <= 5; ++i) {
        RecordImage image = UsualImage();
        image.slots[0] = {i, 10 * i};
        image.kneeVoltage = 1000 + i;
        image.kneeTypeCode = i % 3;
        tests.push_back(image);
    }
    const ConvertedRecord record = ConvertRecordReply(RecordReply(RecordOf(tests)));
    EXPECT_EQ(record.converted, 5);
    EXPECT_THAT(record.doubtful, IsEmpty());
    const TestRecordFile file = ParseTestRecordFile(RecordHeaderLines(kEntry, "A") + record.lines);
    ASSERT_EQ(file.records.size(), 5U);
    for (int i = 1; i <= 5; ++i) {
        const TestRecord& test = file.records.at(static_cast<std::size_t>(i) - 1);
        EXPECT_EQ(test.recordNumber, std::to_string(i));
        EXPECT_EQ(ResultNumber(test.kneeVoltage), (1000 + i) / 10.0);
        EXPECT_DOUBLE_EQ(test.points.back().current, i / 10000.0);
    }
}

TEST(ConvertRecordReply, TakesFieldsHoweverTheyAreSeparated) {
    const std::string reply = RecordReply(RecordOf({UsualImage(), UsualImage(), UsualImage()}));
    const std::string expected = ConvertRecordReply(reply).lines;
    for (const char* separator : {" ", ",", "\n", "\t", ", ", "  ", ",\r\n"}) {
        std::string other;
        for (const char c : reply) {
            if (c == '\n') continue;
            other += c == '\r' ? std::string(separator) : std::string(1, c);
        }
        EXPECT_EQ(ConvertRecordReply(other).lines, expected) << separator;
    }
}

TEST(ConvertRecordReply, ConvertsAtMostAHundredTests) {
    auto memory = RecordOf(std::vector<RecordImage>(100, UsualImage()));
    EXPECT_EQ(ConvertRecordReply(RecordReply(memory)).converted, 100);
    memory.tests.resize(130, UsualImage());
    const ConvertedRecord record = ConvertRecordReply(RecordReply(memory));
    EXPECT_EQ(record.tests, 100);
    EXPECT_EQ(record.converted, 100);
    EXPECT_THAT(record.lines, HasSubstr("REC NUMBER:  100\r\n"));
    EXPECT_THAT(record.lines, Not(HasSubstr("REC NUMBER:  101\r\n")));
}

TEST(ConvertRecordReply, HasNoLinesForAnEmptyReply) {
    for (const char* reply : {"", "\r\nDONE\r\n", "DONE\r\n", " , \r\n"}) {
        const ConvertedRecord record = ConvertRecordReply(reply);
        EXPECT_EQ(record.tests, 0);
        EXPECT_EQ(record.lines, "");
    }
    // A count that is none.
    EXPECT_EQ(ConvertRecordReply("00 1 2 3 4 5 6 7 8 9 10 11 12 13").tests, 0);
    EXPECT_FALSE(ConvertRecordReply("00 1 2 3 4 5 6 7 8 9 10 11 12 13").fieldsMissing);
    EXPECT_EQ(ConvertRecordReply("zz 1 2 3 4 5 6 7 8 9 10 11 12 13").tests, 0);
}

TEST(ConvertRecordReply, KeepsTheWholeTestsOfAReplyWithTooFewFields) {
    const std::string reply =
        RecordReply(RecordOf({UsualImage(), UsualImage(), UsualImage(), UsualImage()}));
    const std::string whole = ConvertRecordReply(reply).lines;
    constexpr std::size_t kLine = 34;
    for (std::size_t fields = 0; fields * kLine < reply.size(); ++fields) {
        const ConvertedRecord record =
            ConvertRecordReply(reply.substr(0, fields * kLine) + "DONE\r\n");
        EXPECT_EQ(record.tests, fields == 0 ? 0 : 4) << fields;
        const int expected = fields < 22   ? 0
                             : fields < 31 ? 1
                             : fields < 41 ? 2
                             : fields < 50 ? 3
                                           : 4;
        EXPECT_EQ(record.converted, expected) << fields;
        EXPECT_THAT(record.doubtful, IsEmpty());
        EXPECT_EQ(record.fieldsMissing, fields > 0 && expected < 4) << fields;
        EXPECT_EQ(whole.substr(0, record.lines.size()), record.lines);
    }
}

TEST(ConvertRecordReply, TellsWhichTestsHaveDamagedDigits) {
    const std::string good =
        RecordReply(RecordOf({UsualImage(), UsualImage(), UsualImage(), UsualImage()}));
    constexpr std::size_t kLine = 34;
    std::string noisy = good;
    noisy[kLine * 24] = '\x80';  // in the second test
    EXPECT_THAT(ConvertRecordReply(noisy).doubtful, ElementsAre(2));
    EXPECT_EQ(ConvertRecordReply(noisy).converted, 4);
    std::string shorter = good;
    shorter.erase(kLine * 32, 10);  // from a field of the third
    EXPECT_THAT(ConvertRecordReply(shorter).doubtful, ElementsAre(3));
    std::string longer = good;
    longer.insert(kLine * 32, "0");
    EXPECT_THAT(ConvertRecordReply(longer).doubtful, ElementsAre(3));
    std::string shared = good;
    shared.erase(kLine * 21, 1);  // from the field that the first and the second share
    EXPECT_THAT(ConvertRecordReply(shared).doubtful, ElementsAre(1, 2));
}

TEST(ConvertRecordReply, DoubtsWhatStandsBehindAFieldTooManyOrTooFew) {
    const std::string good =
        RecordReply(RecordOf({UsualImage(), UsualImage(), UsualImage(), UsualImage()}));
    constexpr std::size_t kLine = 34;
    std::string more = good;
    more[kLine * 24 + 9] = ' ';  // in the second test
    EXPECT_THAT(ConvertRecordReply(more).doubtful, ElementsAre(1, 2, 3, 4));
    std::string fewer = good;
    fewer.erase(kLine * 25 - 2, 2);
    EXPECT_THAT(ConvertRecordReply(fewer).doubtful, ElementsAre(2, 3));
    EXPECT_EQ(ConvertRecordReply(fewer).converted, 3);
}

// Every field is whole, so nothing shows where the one too many is.
TEST(ConvertRecordReply, DoubtsAllTestsOfAReplyWithAFieldTwice) {
    const std::string good = RecordReply(RecordOf({UsualImage(), UsualImage()}));
    constexpr std::size_t kLine = 34;
    for (std::size_t at = 0; at + kLine < good.size() - 6; ++at) {
        std::string twice = good;
        twice.insert(at, good.substr(at, kLine));
        const ConvertedRecord record = ConvertRecordReply(twice);
        EXPECT_THAT(record.doubtful, ElementsAre(1, 2)) << at;
        EXPECT_FALSE(record.fieldsMissing);
    }
    auto memory = RecordOf(std::vector<RecordImage>(130, UsualImage()));
    EXPECT_THAT(ConvertRecordReply(RecordReply(memory)).doubtful, IsEmpty())
        << "tests beyond those that are converted are none too many";
}

TEST(ConvertRecordReply, DoubtsAllTestsBehindADamagedPreamble) {
    const std::string good = RecordReply(RecordOf({UsualImage(), UsualImage(), UsualImage()}));
    constexpr std::size_t kLine = 34;
    for (const std::size_t field : {0U, 5U, 11U}) {
        std::string damaged = good;
        damaged.erase(kLine * field + 20, 1);
        EXPECT_THAT(ConvertRecordReply(damaged).doubtful, ElementsAre(1, 2, 3)) << field;
        damaged = good;
        damaged[kLine * field + 20] = ' ';
        EXPECT_THAT(ConvertRecordReply(damaged).doubtful, ElementsAre(1, 2, 3)) << field;
    }
}

TEST(UsualReplyBytes, IsTheLengthThatTheInstrumentSends) {
    for (const int tests : {1, 2, 3, 50, 99, 100}) {
        const auto memory =
            RecordOf(std::vector<RecordImage>(static_cast<std::size_t>(tests), UsualImage()));
        EXPECT_EQ(UsualReplyBytes(tests), RecordReply(memory).size()) << tests;
    }
}

}  // namespace
}  // namespace davo::test
