// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_file_writer.h"

#include "common/files.h"
#include "common/run_time_error.h"
#include "tests/records/captures.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

using test::CaptureBlock;
using test::FileBytes;
using test::ImageWithPoints;
using test::PutFile;
using test::TemporaryFolder;

HeaderTable SomeHeader() {
    HeaderTable header;
    header.headerFields[0] = "not written";
    header.headerFields[1] = "11/21/26";
    header.headerFields[2] = "09:32";
    header.headerFields[3] = "not written";
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        header.Field(i) = std::string(1, static_cast<char>('a' + i)) + std::string(19, ' ');
    }
    return header;
}

std::vector<std::string> Converted(const std::string& capture, std::int16_t shotCount = 1,
                                   const std::string& notes = {}) {
    return SplitLines(ConvertCapture(capture, SomeHeader(), {"T15", shotCount, notes}));
}

// The line of a one-shot file that starts with key.
std::string LineOf(const RecordImage& image, const std::string& key) {
    for (const std::string& line : Converted(CaptureBlock(image))) {
        if (line.starts_with(key)) return line;
    }
    return "(no " + key + ")";
}

int CountOf(const std::vector<std::string>& lines, const std::string& start) {
    int count = 0;
    for (const std::string& line : lines)
        count += line.starts_with(start) ? 1 : 0;
    return count;
}

TEST(ConvertCapture, WholeFile) {
    const std::string blanks(19, ' ');
    std::string header;
    const char* const keys[] = {"COMPANY", "STATION", "CIRCUIT",  "MFR",
                                "MODEL",   "SN",      "COMMENTS", "OPERATOR"};
    for (int i = 0; i < 8; ++i) {
        header += std::string(keys[i]) + ": " + static_cast<char>('a' + i) + blanks + "\r\n";
    }
    EXPECT_EQ(ConvertCapture(CaptureBlock(ImageWithPoints(3)), SomeHeader(),
                             {"T15", 1, "first\r\nsecond \x84quoted\x93"}),
              "TEST NUMBER: T15\r\nDATE: 11/21/26\r\nTIME: 09:32\r\n# OF SHOTS: 01\r\n" + header +
                  "REC NUMBER: 1\r\n"
                  "CURRENT: 0.0300VOLTAGE: 300.0\r\n"
                  "CURRENT: 0.0200VOLTAGE: 200.0\r\n"
                  "CURRENT: 0.0100VOLTAGE: 100.0\r\n"
                  "NUMBER OF DATA POINTS: 3\r\n"
                  "KNEE VOLTAGE: 152.3 VOLTS\r\n"
                  "KNEE CURRENT: 0.0124 AMPS\r\n"
                  "EXCITATION CUR: 0.124 AMPS\r\n"
                  "EXCITATION VTG: 200 VOLTS\r\n"
                  "MEASURED RATIO: 241.2\r\n"
                  "POLARITY: IN PHASE\r\n"
                  "PHASE ANGLE: 1.5 DEG\r\n"
                  "NAMEPLATE RATIO: 240 (1200:5)\r\n"
                  "PERCENT ERROR: 0.50%\r\n"
                  "KNEE POINT TYPE: IEEE 30 DEGREE TANGENT\r\n"
                  "NOTES:\r\nfirst\r\nsecond \x84quoted\x93\r\n");
}

TEST(ConvertCapture, ThreeShots) {
    const std::string block = CaptureBlock(ImageWithPoints(1));
    const std::vector<std::string> lines = Converted(block + block + block, 3);
    EXPECT_EQ(lines.at(3), "# OF SHOTS: 03");
    EXPECT_EQ(CountOf(lines, "TEST NUMBER: "), 1);
    EXPECT_EQ(CountOf(lines, "REC NUMBER: "), 3);
    for (const char* record : {"REC NUMBER: 1", "REC NUMBER: 2", "REC NUMBER: 3"}) {
        EXPECT_EQ(CountOf(lines, record), 1);
    }
}

TEST(ConvertCapture, ShotCountHasTwoDigitsAtLeast) {
    const std::string block = CaptureBlock(ImageWithPoints(0));
    EXPECT_EQ(Converted(block, 12).at(3), "# OF SHOTS: 12");
    EXPECT_EQ(Converted(block, 100).at(3), "# OF SHOTS: 100");
    EXPECT_EQ(Converted(block, 0).at(3), "# OF SHOTS: 00");
}

TEST(ConvertCapture, StopsAfterShotCount) {
    const std::string block = CaptureBlock(ImageWithPoints(1));
    EXPECT_EQ(CountOf(Converted(block + block + block, 2), "REC NUMBER: "), 2);
}

TEST(ConvertCapture, FewerShotsThanShotCount) {
    const std::string block = CaptureBlock(ImageWithPoints(1));
    const std::vector<std::string> lines = Converted(block + block + "DATA0102\r\n", 5);
    EXPECT_EQ(lines.at(3), "# OF SHOTS: 05");
    EXPECT_EQ(CountOf(lines, "REC NUMBER: "), 2);
    EXPECT_EQ(lines.back(), "KNEE POINT TYPE: IEEE 30 DEGREE TANGENT");
}

TEST(ConvertCapture, NoCompleteShotGivesNoHeader) {
    EXPECT_EQ(ConvertCapture("", SomeHeader(), {"T15", 1, ""}), "");
    EXPECT_EQ(ConvertCapture("DATA0102\r\n", SomeHeader(), {"T15", 1, ""}), "");
    EXPECT_EQ(ConvertCapture("", SomeHeader(), {"T15", 1, "text"}), "NOTES:\r\ntext\r\n");
}

TEST(ConvertCapture, EmptyNotesWriteNoLine) {
    EXPECT_EQ(CountOf(Converted(CaptureBlock(ImageWithPoints(1))), "NOTES:"), 0);
}

TEST(ConvertCapture, ZeroSlotsAreNeitherWrittenNorCounted) {
    RecordImage image = ImageWithPoints(3);
    image.slots[0].current = 0;
    image.slots[2].voltage = 0;
    const std::vector<std::string> lines = Converted(CaptureBlock(image));
    EXPECT_EQ(CountOf(lines, "CURRENT: "), 1);
    EXPECT_EQ(lines.at(13), "CURRENT: 0.0200VOLTAGE: 200.0");
    EXPECT_EQ(lines.at(14), "NUMBER OF DATA POINTS: 1");
}

TEST(ConvertCapture, CurrentRange) {
    RecordImage image;
    image.slots[0] = {500, 1523};
    image.kneeCurrent = 500;
    image.excitationCurrent = 500;
    image.currentRangeCode = 10;
    EXPECT_EQ(LineOf(image, "CURRENT: "), "CURRENT: 0.1000VOLTAGE: 152.3");
    EXPECT_EQ(LineOf(image, "KNEE CURRENT: "), "KNEE CURRENT: 0.1 AMPS");
    EXPECT_EQ(LineOf(image, "EXCITATION CUR: "), "EXCITATION CUR: 0.100 AMPS");
    image.currentRangeCode = 0;
    EXPECT_EQ(LineOf(image, "CURRENT: "), "CURRENT: 0.0500VOLTAGE: 152.3");
    EXPECT_EQ(LineOf(image, "KNEE CURRENT: "), "KNEE CURRENT: 0.05 AMPS");
    EXPECT_EQ(LineOf(image, "EXCITATION CUR: "), "EXCITATION CUR: 0.050 AMPS");
}

TEST(ConvertCapture, PhaseAndPolarity) {
    struct Case {
        int count;
        const char* polarity;
        const char* angle;
    };
    for (const Case& phase : {Case{0, "POLARITY: IN PHASE", "PHASE ANGLE: 0.0 DEG"},
                              Case{900, "POLARITY: IN PHASE", "PHASE ANGLE: 90.0 DEG"},
                              Case{901, "POLARITY: OUT OF PHASE", "PHASE ANGLE: 90.1 DEG"},
                              Case{1800, "POLARITY: OUT OF PHASE", "PHASE ANGLE: 180.0 DEG"},
                              Case{2698, "POLARITY: OUT OF PHASE", "PHASE ANGLE: 269.8 DEG"},
                              Case{2699, "POLARITY: N/A", "PHASE ANGLE: 269.9 DEG"},
                              Case{2700, "POLARITY: IN PHASE", "PHASE ANGLE: 270.0 DEG"},
                              Case{3600, "POLARITY: IN PHASE", "PHASE ANGLE: 360.0 DEG"},
                              Case{3601, "POLARITY: N/A", "PHASE ANGLE: 360.1 DEG"},
                              Case{65535, "POLARITY: N/A", "PHASE ANGLE: 6553.5 DEG"}}) {
        RecordImage image;
        image.phaseAngle = phase.count;
        EXPECT_EQ(LineOf(image, "POLARITY: "), phase.polarity);
        EXPECT_EQ(LineOf(image, "PHASE ANGLE: "), phase.angle);
    }
}

TEST(ConvertCapture, KneePointTypes) {
    RecordImage image;
    image.kneeTypeCode = 1;
    EXPECT_EQ(LineOf(image, "KNEE POINT"), "KNEE POINT TYPE: IEEE 30 DEGREE TANGENT");
    image.kneeTypeCode = 2;
    EXPECT_EQ(LineOf(image, "KNEE POINT"), "KNEE POINT TYPE: IEEE 45 DEGREE TANGENT");
    image.kneeTypeCode = 7;
    EXPECT_EQ(LineOf(image, "KNEE POINT"), "KNEE POINT TYPE: ASA 10%VTG -> 50%CUR");
}

TEST(ConvertCapture, ShortRecordReadsAsZeros) {
    const std::vector<std::string> lines = Converted(CaptureBlock(""));
    const std::vector<std::string> shot(lines.begin() + 12, lines.end());
    EXPECT_EQ(shot, (std::vector<std::string>{
                        "REC NUMBER: 1", "NUMBER OF DATA POINTS: 0", "KNEE VOLTAGE: 0 VOLTS",
                        "KNEE CURRENT: 0 AMPS", "EXCITATION CUR: 0.000 AMPS",
                        "EXCITATION VTG: 0 VOLTS", "MEASURED RATIO: 241.2", "POLARITY: IN PHASE",
                        "PHASE ANGLE: 0.0 DEG", "NAMEPLATE RATIO: 240 (1200:5)",
                        "PERCENT ERROR: 0.50%", "KNEE POINT TYPE: ASA 10%VTG -> 50%CUR"}));
}

TEST(ConvertCapture, RatioTextsComeFromTheirLines) {
    const std::string hex = EncodeRecordImage(ImageWithPoints(0));
    const std::vector<std::string> lines =
        Converted(CaptureBlock(hex, " 1.50 ", "  N/A ", " N/A  "));
    EXPECT_EQ(lines.at(18), "MEASURED RATIO:  1.50 ");
    EXPECT_EQ(lines.at(21), "NAMEPLATE RATIO: N/A");
    EXPECT_EQ(lines.at(22), "PERCENT ERROR: N/A");
    EXPECT_EQ(Converted(CaptureBlock(hex, "", "N/A", "N/A")).at(18), "MEASURED RATIO: ");
}

class WriteTestRecordFileTest : public testing::Test {
  protected:
    void Write(const char* name, const std::string& notes = {}) {
        PutFile(capture_, CaptureBlock(ImageWithPoints(2)));
        WriteTestRecordFile(QString::fromUtf8(name), folder_.Path(), capture_, SomeHeader(), 1,
                            notes);
    }

    TemporaryFolder folder_;
    QString capture_ = folder_.Path("TESTFILE.txt");
};

TEST_F(WriteTestRecordFileTest, TestNumberIsTheNameWithoutItsLastFour) {
    Write("T15.txt", "note");
    EXPECT_EQ(FileBytes(folder_.Path("T15.txt")),
              ConvertCapture(FileBytes(capture_), SomeHeader(), {"T15", 1, "note"}));
    EXPECT_TRUE(FileBytes(folder_.Path("T15.txt")).starts_with("TEST NUMBER: T15\r\n"));
    Write("abc");
    EXPECT_TRUE(FileBytes(folder_.Path("abc")).starts_with("TEST NUMBER: \r\n"));
    Write("Stra\xC3\x9F\x65.txt");
    EXPECT_TRUE(FileBytes(folder_.Path() + QString::fromUtf8("Stra\xC3\x9F\x65.txt"))
                    .starts_with("TEST NUMBER: Stra\xDF\x65\r\n"));
}

TEST_F(WriteTestRecordFileTest, ReplacesTheOldFile) {
    PutFile(folder_.Path("T15.txt"), std::string(100000, 'x'));
    Write("T15.txt");
    EXPECT_TRUE(FileBytes(folder_.Path("T15.txt")).ends_with("TANGENT\r\n"));
    EXPECT_EQ(QDir(folder_.Path()).entryList(QDir::Files | QDir::Hidden).size(), 2);
}

TEST_F(WriteTestRecordFileTest, MissingCaptureLeavesTheOldFile) {
    PutFile(folder_.Path("T15.txt"), "old");
    EXPECT_EQ(test::NumberThrownBy([&] {
                  WriteTestRecordFile(u"T15.txt"_s, folder_.Path(), capture_, SomeHeader(), 1, "");
              }),
              ErrorNumber::FileNotFound);
    EXPECT_EQ(FileBytes(folder_.Path("T15.txt")), "old");
}

TEST_F(WriteTestRecordFileTest, MissingDataFolderIsAnError) {
    PutFile(capture_, CaptureBlock(ImageWithPoints(2)));
    EXPECT_EQ(test::NumberThrownBy([&] {
                  WriteTestRecordFile(u"T15.txt"_s, folder_.Path("none/"), capture_, SomeHeader(),
                                      1, "");
              }),
              ErrorNumber::PathNotFound);
}

TEST_F(WriteTestRecordFileTest, NameThatNoRecordFileCanHoldIsRefused) {
    PutFile(capture_, CaptureBlock(ImageWithPoints(2)));
    EXPECT_EQ(test::NumberThrownBy([&] { Write("\xE6\xB8\xAC.txt"); }),
              ErrorNumber::BadFileNameOrNumber);
}

}  // namespace
}  // namespace davo
