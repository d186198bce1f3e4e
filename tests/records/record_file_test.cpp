// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_file.h"

#include "common/files.h"
#include "common/run_time_error.h"
#include "records/record_file_writer.h"
#include "records/record_name.h"
#include "tests/records/captures.h"
#include "tests/support/read_record.h"
#include "tests/support/result_number.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

using test::ResultNumber;

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

// A file whose record has this number.
std::string WithNumber(const std::string& number) {
    return kHeader + "REC NUMBER: " + number + "\r\n" + kRecord.substr(kRecord.find("CURRENT"));
}

ErrorNumber NumberFor(const std::string& bytes) {
    return test::NumberThrownBy([&] { ParseTestRecordFile(bytes); });
}

TEST(ParseTestRecordFile, EveryFieldOfATestWindowFile) {
    const TestRecordFile file = ParseTestRecordFile(kHeader + kRecord);
    ASSERT_EQ(file.headers.size(), 1U);
    const RecordFileHeader& header = file.headers[0];
    EXPECT_EQ(header.testNumber, "T15");
    EXPECT_EQ(header.date, "11/21/26");
    EXPECT_EQ(header.time, "09:32");
    EXPECT_EQ(header.shots, "02");
    EXPECT_EQ(header.fields, (std::array<std::string, 8>{"ACME: Ltd", "Nord                ", "",
                                                         "ABB", "M", "12", " two blanks", "op"}));
    EXPECT_EQ(header.Trimmed().fields, (std::array<std::string, 8>{"ACME: Ltd", "Nord", "", "ABB",
                                                                   "M", "12", "two blanks", "op"}));
    EXPECT_THAT(file.notes, IsEmpty());
    ASSERT_EQ(file.records.size(), 1U);
    const TestRecord& record = file.records[0];
    EXPECT_EQ(record.header, 0U);
    EXPECT_EQ(record.recordNumber, "1");
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
    EXPECT_EQ(file.records[0].recordNumber, "1");
    EXPECT_EQ(file.records[1].recordNumber, "2");
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
    EXPECT_THAT(ParseTestRecordFile(file).notes, ElementsAre(""));
    EXPECT_THAT(ParseTestRecordFile(file + "one").notes, ElementsAre("one"));
    EXPECT_THAT(ParseTestRecordFile(file + "one\r\n\r\nREC NUMBER: 2\r\nNOTES:\r\n").notes,
                ElementsAre("one\r\n\r\nREC NUMBER: 2\r\nNOTES:\r\n"));
    EXPECT_THAT(ParseTestRecordFile("NOTES:\r\nalone\r\n").notes, ElementsAre("alone\r\n"));
}

TEST(ParseTestRecordFile, EmptyFileIsASessionWithoutAShot) {
    const TestRecordFile file = ParseTestRecordFile("");
    EXPECT_THAT(file.headers, IsEmpty());
    EXPECT_THAT(file.records, IsEmpty());
    EXPECT_THAT(file.notes, IsEmpty());
    EXPECT_THROW(RequireHeader(file), RunTimeError);
    EXPECT_NO_THROW(RequireHeader(ParseTestRecordFile(kHeader)));
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
    for (const char* number : {"", "x", "1 2x"})
        EXPECT_EQ(NumberFor(WithNumber(number)), ErrorNumber::TypeMismatch) << number;
}

TEST(ParseTestRecordFile, AnyNumberIsARecords) {
    for (const char* number : {"1.5", "-1", "99999999999999999999", "32768", "007"}) {
        EXPECT_EQ(ParseTestRecordFile(WithNumber(number)).records.at(0).recordNumber, number);
    }
}

TEST(ParseTestRecordFile, TheCountIsTheValueOfTheLastTwoCharacters) {
    struct Case {
        const char* text;
        int count;
    };
    for (const Case& count : {Case{" ", 0},
                              {" x", 0},
                              {" 1.5", 0},
                              {" -1", -1},
                              {" 99999999999999999999", 99},
                              {" 32768", 68},
                              {" 601", 1},
                              {" 1 2x", 2}}) {
        const std::string file =
            kHeader + "REC NUMBER: 1\r\nNUMBER OF DATA POINTS:" + count.text + "\r\n" + kResults;
        EXPECT_EQ(ParseTestRecordFile(file).records.at(0).dataPointCount, count.count)
            << count.text;
    }
}

TEST(ParseTestRecordFile, EmptyLinesBetweenTheBlocksArePassedOver) {
    const TestRecordFile file = ParseTestRecordFile("\r\n" + kHeader + "\r\n" + kRecord +
                                                    "  \r\n\r\n" + kRecord + "\r\nNOTES:\r\n");
    EXPECT_EQ(file.records.size(), 2U);
    std::string inside = kHeader + kRecord;
    inside.insert(inside.find("NUMBER OF"), "\r\n");
    EXPECT_EQ(NumberFor(inside), ErrorNumber::TypeMismatch) << "not inside of one";
}

TEST(ParseTestRecordFile, LinesBeforeTheKneePointTypeArePassedOver) {
    std::string text = kHeader + kRecord;
    text.insert(text.find("KNEE POINT TYPE"), "SOMETHING NEW: 5\r\n\r\n");
    EXPECT_EQ(ParseTestRecordFile(text).records.at(0).kneePointType, "ASA 10%VTG -> 50%CUR");
    std::string cut = kHeader + kRecord + kRecord;
    cut.erase(cut.find("KNEE POINT TYPE"), std::string("KNEE POINT TYPE").size());
    EXPECT_EQ(NumberFor(cut), ErrorNumber::TypeMismatch) << "the next record is not passed over";
}

TEST(ParseTestRecordFile, AHeaderServesTheRecordsUpToTheNext) {
    std::string second = kHeader;
    second.replace(second.find("T15"), 3, "T16");
    const TestRecordFile file =
        ParseTestRecordFile(kHeader + kRecord + kRecord + kHeader + second + kRecord);
    ASSERT_EQ(file.headers.size(), 3U);
    EXPECT_EQ(file.headers[2].testNumber, "T16");
    ASSERT_EQ(file.records.size(), 3U);
    EXPECT_EQ(file.records[0].header, 0U);
    EXPECT_EQ(file.records[1].header, 0U);
    EXPECT_EQ(file.records[2].header, 2U);
    EXPECT_EQ(NumberFor(kRecord), ErrorNumber::TypeMismatch) << "a record without a header";
}

TEST(ParseTestRecordFile, AGroupFilesLinesAreFields) {
    std::string file = kHeader;
    file.replace(file.find("ACME: Ltd"), 9, "A\r\nB");
    file += "REC NUMBER: 1\r\nTEST NOTES: x\r\ny\r\n" + kRecord.substr(kRecord.find("CURRENT")) +
            "NOTES:\r\nwet\r\n" + kHeader + kRecord + "NOTES:\r\ndry\r\n";
    const TestRecordFile read = ParseTestRecordFile(file, RecordSource::GroupFile);
    ASSERT_EQ(read.headers.size(), 2U);
    EXPECT_EQ(read.headers[0].fields[0], "A, B");
    EXPECT_EQ(read.headers[0].fields[1], "Nord");
    ASSERT_EQ(read.records.size(), 2U);
    EXPECT_EQ(read.records[0].testNotes, "x, y");
    EXPECT_EQ(read.records[1].header, 1U);
    EXPECT_THAT(read.notes, ElementsAre("wet\r\n", "dry\r\n"));
    EXPECT_EQ(NumberFor(file), ErrorNumber::TypeMismatch) << "no record file";
}

TEST(ParseTestRecordFile, AGroupFileMayEndInsideAHeader) {
    const TestRecordFile file =
        ParseTestRecordFile("TEST NUMBER: A\r\nDATE: 03/09/21\r\n", RecordSource::GroupFile);
    ASSERT_EQ(file.headers.size(), 1U);
    EXPECT_EQ(file.headers[0].date, "03/09/21");
    EXPECT_EQ(file.headers[0].time, "");
}

TEST(ParseTestRecordFile, ALineOfAGroupFilesNotesMayLookLikeAHeaders) {
    const std::string notes = "TEST NUMBER: of the last time\r\nwas 5\r\n";
    const TestRecordFile file =
        ParseTestRecordFile(kHeader + kRecord + "NOTES:\r\n" + notes, RecordSource::GroupFile);
    EXPECT_EQ(file.headers.size(), 1U);
    EXPECT_THAT(file.notes, ElementsAre(notes));
}

TEST(ParseTestRecordFile, TheRecordsThatAreNotWantedAreCounted) {
    const std::string notes = "NOTES:\r\nREC NUMBER: 9\r\n";
    const std::string bytes = kHeader + kRecord + kRecord + kRecord;
    for (const std::string& end : {std::string(), notes}) {
        const TestRecordFile file = ParseTestRecordFile(bytes + end, RecordSource::RecordFile, 1);
        EXPECT_EQ(file.records.size(), 1U);
        EXPECT_EQ(file.recordsLeft, 2U);
        EXPECT_EQ(ParseTestRecordFile(bytes + end, RecordSource::RecordFile, 3).recordsLeft, 0U);
    }
}

TEST(ParseTestRecordFile, ControlCharactersAreCounted) {
    EXPECT_EQ(ParseTestRecordFile(kHeader + kRecord).controls, 0U);
    std::string bytes = kHeader + kRecord;
    bytes.replace(bytes.find("ABB"), 3, "A\1\2");
    const TestRecordFile file = ParseTestRecordFile(bytes);
    EXPECT_EQ(file.controls, 2U);
    EXPECT_EQ(file.headers.at(0).fields.at(3), "A??");
}

TEST(ParseTestRecordFile, TheColonsOfTwoKeysMayBeMissing) {
    for (const std::string key : {"NUMBER OF DATA POINTS", "KNEE POINT TYPE"}) {
        std::string bytes = kHeader + kRecord;
        bytes.erase(bytes.find(key) + key.size(), 1);
        EXPECT_EQ(ParseTestRecordFile(bytes).records.at(0).dataPointCount, 2) << key;
        bytes.erase(bytes.find(key) + key.size() - 1, 1);
        EXPECT_THROW(ParseTestRecordFile(bytes), RunTimeError) << key;
    }
}

TEST(ParseTestRecordFile, ErrorNamesTheLine) {
    EXPECT_EQ(test::MessageThrownBy(
                  [&] { ParseTestRecordFile(kHeader + "REC NUMBER: 1\r\nrubbish\r\n"); }),
              "Run-time error '13': Type mismatch: line 14");
    EXPECT_EQ(test::MessageThrownBy([&] { ParseTestRecordFile("TEST NUMBER: 1\r\n"); }),
              "Run-time error '62': Input past end of file: line 2");
}

TEST(ReadTestRecordFile, ReadsWhatWasWritten) {
    const test::TemporaryFolder folder;
    const QString capture = folder.Path("TESTFILE.txt");
    test::PutFile(capture, test::CaptureBlock(test::ImageWithPoints(4)));
    WriteTestRecordFile(u"T1.txt"_s, folder.Path(), capture, HeaderTable(), 1, "n");
    const TestRecordFile file = test::ReadTestRecordFile(folder.Path("T1.txt"));
    EXPECT_EQ(file.headers.at(0).testNumber, "T1");
    EXPECT_EQ(file.records.at(0).points.size(), 4U);
    EXPECT_THAT(file.notes, ElementsAre("n\r\n"));
    EXPECT_EQ(test::NumberThrownBy([&] { test::ReadTestRecordFile(folder.Path("T2.txt")); }),
              ErrorNumber::FileNotFound);
}

TEST(PhaseText, APhaseIsWordsOfItsAngle) {
    EXPECT_EQ(PhaseText("0.0 DEG"), "IN PHASE");
    EXPECT_EQ(PhaseText("90.0 DEG"), "IN PHASE");
    EXPECT_EQ(PhaseText("90.1 DEG"), "OUT OF PHASE");
    EXPECT_EQ(PhaseText("180.0 DEG"), "OUT OF PHASE");
    EXPECT_EQ(PhaseText("269.95 DEG"), "N/A");
    EXPECT_EQ(PhaseText("270 DEG"), "IN PHASE");
    EXPECT_EQ(PhaseText("360.1 DEG"), "N/A");
    EXPECT_EQ(PhaseText("N/A"), "N/A");
    EXPECT_EQ(PhaseText("12.5"), "N/A");
    EXPECT_EQ(PhaseText(" DEG"), "N/A");
    EXPECT_EQ(PhaseText(""), "N/A");
}

TEST(RecordName, IsTheFilesWithoutFolderAndEnding) {
    EXPECT_EQ(RecordNameOf(u"T0012.txt"_s), u"T0012"_s);
    EXPECT_EQ(RecordNameOf(u"/a.txt/b/T0012.TXT"_s), u"T0012"_s);
    EXPECT_EQ(RecordNameOf(u"noending"_s), u"noending"_s);
    EXPECT_EQ(RecordNameOf(u"/a/.txt"_s), QString());
    EXPECT_EQ(PageRecordNameOf(u"/a/M\u00FChle.txt"_s), "M\xFChle");
    EXPECT_EQ(PageRecordNameOf(u"\u4e2d.txt"_s), "?");
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
