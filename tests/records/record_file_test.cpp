// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_file.h"

#include <gtest/gtest.h>

#include "common/files.h"
#include "common/run_time_error.h"
#include "records/record_file_writer.h"
#include "tests/records/captures.h"
#include "tests/support/temporary_folder.h"

namespace davo {
namespace {

const std::string kHeader =
    "TEST NUMBER: T15\r\nDATE: 11/21/26\r\nTIME: 09:32\r\n# OF SHOTS: 02\r\nCOMPANY: ACME: Ltd\r\n"
    "STATION: Nord                \r\nCIRCUIT: \r\nMFR: ABB\r\nMODEL: M\r\nSN: 12\r\n"
    "COMMENTS:  two blanks\r\nOPERATOR: op\r\n";

const std::string kResults =
    "KNEE VOLTAGE: 152.3 VOLTS\r\nKNEE CURRENT: 0.0124 AMPS\r\nEXCITATION CUR: 0.124 AMPS\r\n"
    "EXCITATION VTG: 200 VOLTS\r\nMEASURED RATIO: 241.2\r\nPOLARITY: IN PHASE\r\n"
    "PHASE ANGLE: 1.5 DEG\r\nNAMEPLATE RATIO: 240 (1200:5)\r\nPERCENT ERROR: 0.50%\r\n"
    "KNEE POINT TYPE: ASA 10%VTG -> 50%CUR\r\n";

const std::string kRecord =
    "REC NUMBER: 1\r\nCURRENT: 0.0124VOLTAGE: 152.3\r\nCURRENT: 0.0100VOLTAGE: 100.0\r\n"
    "NUMBER OF DATA POINTS: 2\r\n" +
    kResults;

ErrorNumber NumberFor(const std::string& bytes) {
    try {
        ParseTestRecordFile(bytes);
    } catch (const RunTimeError& error) {
        return error.Number();
    }
    ADD_FAILURE() << "nothing thrown for " << bytes;
    return {};
}

TEST(ParseTestRecordFile, EveryFieldOfATestWindowFile) {
    const TestRecordFile file = ParseTestRecordFile(kHeader + kRecord);
    EXPECT_EQ(file.testNumber, "T15");
    EXPECT_EQ(file.date, "11/21/26");
    EXPECT_EQ(file.time, "09:32");
    EXPECT_EQ(file.shots, "02");
    EXPECT_EQ(file.header, (std::array<std::string, 8>{"ACME: Ltd", "Nord                ", "",
                                                       "ABB", "M", "12", " two blanks", "op"}));
    EXPECT_FALSE(file.notes.has_value());
    ASSERT_EQ(file.records.size(), 1U);
    const TestRecord& record = file.records[0];
    EXPECT_EQ(record.recordNumber, 1);
    EXPECT_EQ(record.testDescription, "");
    EXPECT_EQ(record.testNotes, "");
    ASSERT_EQ(record.points.size(), 2U);
    EXPECT_EQ(record.points[0].current, 0.0124);
    EXPECT_EQ(record.points[0].voltage, 152.3);
    EXPECT_EQ(record.points[1].current, 0.01);
    EXPECT_EQ(record.points[1].voltage, 100);
    EXPECT_EQ(record.dataPointCount, 2);
    EXPECT_EQ(record.kneeVoltage, "152.3 VOLTS");
    EXPECT_EQ(record.kneeCurrent, "0.0124 AMPS");
    EXPECT_EQ(record.excitationCurrent, "0.124 AMPS");
    EXPECT_EQ(record.excitationVoltage, "200 VOLTS");
    EXPECT_EQ(record.measuredRatio, "241.2");
    EXPECT_EQ(record.polarity, "IN PHASE");
    EXPECT_EQ(record.phaseAngle, "1.5 DEG");
    EXPECT_EQ(record.nameplateRatio, "240 (1200:5)");
    EXPECT_EQ(record.percentError, "0.50%");
    EXPECT_EQ(record.kneePointType, "ASA 10%VTG -> 50%CUR");
}

TEST(ParseTestRecordFile, DownloadedFile) {
    const TestRecordFile file =
        ParseTestRecordFile(kHeader + "REC NUMBER:  1\r\nNUMBER OF DATA POINTS: 0\r\n" + kResults +
                            "REC NUMBER:  2\r\n" + "NUMBER OF DATA POINTS:  0\r\n" + kResults);
    ASSERT_EQ(file.records.size(), 2U);
    EXPECT_EQ(file.records[0].recordNumber, 1);
    EXPECT_EQ(file.records[1].recordNumber, 2);
    EXPECT_TRUE(ParseTestRecordFile(kHeader).records.empty());
}

TEST(ParseTestRecordFile, LinesOfTheHeaderEditor) {
    const std::string shot = kRecord.substr(kRecord.find("CURRENT"));
    const TestRecordFile file = ParseTestRecordFile(
        kHeader + "REC NUMBER: 1\r\nTEST DESCRIPTION: before            \r\nTEST NOTES: dry\r\n" +
        shot + "REC NUMBER: 2\r\nTEST NOTES: wet                 \r\n" + shot +
        "REC NUMBER: 3\r\nTEST DESCRIPTION: third\r\n" + shot);
    ASSERT_EQ(file.records.size(), 3U);
    EXPECT_EQ(file.records[0].testDescription, "before            ");
    EXPECT_EQ(file.records[0].testNotes, "dry");
    EXPECT_EQ(file.records[1].testDescription, "");
    EXPECT_EQ(file.records[1].testNotes, "wet                 ");
    EXPECT_EQ(file.records[2].testDescription, "third");
    EXPECT_EQ(file.records[2].testNotes, "");
    EXPECT_EQ(file.records[2].points.size(), 2U);
}

TEST(ParseTestRecordFile, Notes) {
    const std::string file = kHeader + kRecord + "NOTES:\r\n";
    EXPECT_EQ(ParseTestRecordFile(file).notes, "");
    EXPECT_EQ(ParseTestRecordFile(file + "one").notes, "one");
    EXPECT_EQ(ParseTestRecordFile(file + "one\r\n\r\nREC NUMBER: 2\r\nNOTES:\r\n").notes,
              "one\r\n\r\nREC NUMBER: 2\r\nNOTES:");
    EXPECT_EQ(ParseTestRecordFile("NOTES:\r\nalone\r\n").notes, "alone");
}

TEST(ParseTestRecordFile, EmptyFileIsASessionWithoutAShot) {
    const TestRecordFile file = ParseTestRecordFile("");
    EXPECT_EQ(file.testNumber, "");
    EXPECT_TRUE(file.records.empty());
    EXPECT_FALSE(file.notes.has_value());
}

TEST(ParseTestRecordFile, BareLineFeeds) {
    std::string bytes;
    for (const char c : kHeader + kRecord) {
        if (c != '\r') bytes += c;
    }
    EXPECT_EQ(ParseTestRecordFile(bytes).records.at(0).kneePointType, "ASA 10%VTG -> 50%CUR");
}

TEST(ParseTestRecordFile, FileThatEndsTooSoonIsError62) {
    const std::string whole = kHeader + kRecord;
    const std::vector<std::string> lines = SplitLines(whole);
    for (std::size_t count = 1; count < lines.size(); ++count) {
        const std::vector<std::string> kept(lines.begin(), lines.begin() + static_cast<int>(count));
        if (count == 12) continue;  // the header alone is a file
        EXPECT_EQ(NumberFor(JoinLines(kept)), ErrorNumber::InputPastEnd) << count;
    }
}

TEST(ParseTestRecordFile, LineOutOfPlaceIsError13) {
    const std::vector<std::string> lines = SplitLines(kHeader + kRecord);
    for (std::size_t skipped = 0; skipped + 1 < lines.size(); ++skipped) {
        if (lines[skipped].starts_with("CURRENT")) continue;  // a point less is a file
        std::vector<std::string> kept = lines;
        kept.erase(kept.begin() + static_cast<int>(skipped));
        EXPECT_EQ(NumberFor(JoinLines(kept)), ErrorNumber::TypeMismatch) << lines[skipped];
    }
}

TEST(ParseTestRecordFile, NumberThatIsNoneIsError13) {
    const auto with = [](const std::string& point) {
        return kHeader + "REC NUMBER: 1\r\n" + point + "\r\nNUMBER OF DATA POINTS: 1\r\n" +
               kResults;
    };
    EXPECT_EQ(ParseTestRecordFile(with("CURRENT: 1VOLTAGE:2")).records.at(0).points.at(0).voltage,
              2);
    for (const char* point :
         {"CURRENT: VOLTAGE: 1.0", "CURRENT: xVOLTAGE: 1.0",
          "CURRENT: 1.0VOLTAGE: ", "CURRENT: 1.0VOLTAGE: N/A", "CURRENT: 1.0",
          "CURRENT:1.0VOLTAGE:1.0", "VOLTAGE: 1.0", "", "VOLTAGE:1CURRENT: 2"}) {
        EXPECT_EQ(NumberFor(with(point)), ErrorNumber::TypeMismatch) << point;
    }
    for (const char* number : {"", "x", "1.5", "-1", "99999999999999999999", "32768", "1 2x"}) {
        EXPECT_EQ(NumberFor(kHeader + "REC NUMBER: " + number + "\r\n" +
                            kRecord.substr(kRecord.find("CURRENT"))),
                  ErrorNumber::TypeMismatch)
            << number;
        std::string file = kHeader + "REC NUMBER: 1\r\nNUMBER OF DATA POINTS: ";
        file.append(number).append("\r\n").append(kResults);
        EXPECT_EQ(NumberFor(file), ErrorNumber::TypeMismatch) << number;
    }
}

TEST(ParseTestRecordFile, ErrorNamesTheLine) {
    try {
        ParseTestRecordFile(kHeader + "REC NUMBER: 1\r\nrubbish\r\n");
        FAIL();
    } catch (const RunTimeError& error) {
        EXPECT_STREQ(error.what(), "Run-time error '13': Type mismatch: line 14");
    }
    try {
        ParseTestRecordFile("TEST NUMBER: 1\r\n");
        FAIL();
    } catch (const RunTimeError& error) {
        EXPECT_STREQ(error.what(), "Run-time error '62': Input past end of file: line 2");
    }
}

TEST(ReadTestRecordFile, ReadsWhatWasWritten) {
    const test::TemporaryFolder folder;
    const QString capture = folder.Path("TESTFILE.txt");
    test::PutFile(capture, test::CaptureBlock(test::ImageWithPoints(4)));
    WriteTestRecordFile(QStringLiteral("T1.txt"), folder.Path(), capture, HeaderTable(), 1, "n");
    const TestRecordFile file = ReadTestRecordFile(folder.Path("T1.txt"));
    EXPECT_EQ(file.testNumber, "T1");
    EXPECT_EQ(file.records.at(0).points.size(), 4U);
    EXPECT_EQ(file.notes, "n");
    try {
        ReadTestRecordFile(folder.Path("T2.txt"));
        FAIL();
    } catch (const RunTimeError& error) {
        EXPECT_EQ(error.Number(), ErrorNumber::FileNotFound);
    }
}

TEST(ResultNumber, UnitsArePassedOver) {
    EXPECT_EQ(ResultNumber("152.3 VOLTS"), 152.3);
    EXPECT_EQ(ResultNumber("0.0124 AMPS"), 0.0124);
    EXPECT_EQ(ResultNumber("90.1 DEG"), 90.1);
    EXPECT_EQ(ResultNumber("0.50%"), 0.5);
    EXPECT_EQ(ResultNumber("0.50 %"), 0.5);
    EXPECT_EQ(ResultNumber("240 (1200:5)"), 240);
    EXPECT_EQ(ResultNumber("241.2"), 241.2);
    EXPECT_EQ(ResultNumber("N/A"), std::nullopt);
    EXPECT_EQ(ResultNumber(""), std::nullopt);
    EXPECT_EQ(ResultNumber("IN PHASE"), std::nullopt);
}

}  // namespace
}  // namespace davo
