// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/capture_file.h"

#include <QFile>

#include "common/run_time_error.h"
#include "tests/records/captures.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

using test::FileBytes;
using test::PutFile;
using test::TemporaryFolder;

TEST(CaptureFile, CreatesEmptyAndAppends) {
    const TemporaryFolder folder;
    const QString path = folder.Path(kCaptureFileName);
    PutFile(path, "of an earlier session");
    CaptureFile capture;
    EXPECT_FALSE(capture.IsOpen());
    capture.Create(path);
    EXPECT_TRUE(capture.IsOpen());
    EXPECT_EQ(capture.Path(), path);
    EXPECT_EQ(FileBytes(path), "");
    capture.Append("first\r\n");
    EXPECT_EQ(FileBytes(path), "first\r\n");
    capture.Append("second\r\n");
    EXPECT_EQ(FileBytes(path), "first\r\nsecond\r\n");
    capture.Create(path);
    EXPECT_EQ(FileBytes(path), "");
    capture.Append("third");
    capture.Close();
    capture.Close();
    EXPECT_FALSE(capture.IsOpen());
    EXPECT_EQ(FileBytes(path), "third");
}

TEST(CaptureFile, NameIsTheSystems) {
    EXPECT_STREQ(kCaptureFileName, "TESTFILE.txt");
}

TEST(CaptureFile, ErrorsOfCreate) {
    const TemporaryFolder folder;
    CaptureFile capture;
    EXPECT_EQ(test::NumberThrownBy([&] { capture.Create(folder.Path("none/TESTFILE.txt")); }),
              ErrorNumber::PathNotFound);
    ASSERT_TRUE(QDir().mkpath(folder.Path("TESTFILE.txt")));
    EXPECT_EQ(test::NumberThrownBy([&] { capture.Create(folder.Path("TESTFILE.txt")); }),
              ErrorNumber::DeviceInputOutput);
    EXPECT_FALSE(capture.IsOpen());
}

TEST(CaptureFile, AFileThatIsBackIsNotEmptied) {
    const TemporaryFolder folder;
    const QString path = folder.Path(kCaptureFileName);
    CaptureFile capture;
    capture.Create(path);
    capture.Append("one\r\n");
    PutFile(path, "what is back");
    EXPECT_EQ(test::NumberThrownBy([&] { capture.MakeAgain(); }), ErrorNumber::PermissionDenied);
    EXPECT_EQ(FileBytes(path), "what is back");
}

TEST(CaptureFile, WhatIsBehindItsLastBlockIsCutOff) {
    const TemporaryFolder folder;
    const QString path = folder.Path(kCaptureFileName);
    CaptureFile capture;
    capture.Create(path);
    capture.Append("A");
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::Append));
        file.write(" part");
    }
    EXPECT_EQ(FileBytes(path), "A part");
    capture.Append("B");
    EXPECT_EQ(FileBytes(path), "AB");
}

TEST(CaptureFile, IsGoneWhereItHasANameAndIsNotThere) {
    const TemporaryFolder folder;
    const QString path = folder.Path(kCaptureFileName);
    CaptureFile capture;
    EXPECT_FALSE(capture.IsGone());
    capture.Create(path);
    EXPECT_FALSE(capture.IsGone());
    capture.Append("A");
    capture.Close();
    ASSERT_TRUE(QFile::remove(path));
    EXPECT_TRUE(capture.IsGone());
    capture.MakeAgain();
    EXPECT_FALSE(capture.IsGone());
    EXPECT_EQ(FileBytes(path), "A");
}

TEST(CaptureFile, AppendNeedsAnOpenFile) {
    CaptureFile capture;
    EXPECT_EQ(test::NumberThrownBy([&] { capture.Append("x"); }), ErrorNumber::BadFileNameOrNumber);
}

TEST(CapturedShots, TextsOfAShot) {
    const std::vector<CapturedShot> shots = CapturedShots(
        "DATA12 34\r\n 5 6\r\n\r\n78\r\nDONE and more\r\nMEASURED RATIO:  241.2 \r\n"
        "NAMEPLATE RATIO:  240 (1200:5) \r\nPERCENT ERROR:  0.50% \r\n\r\n");
    ASSERT_EQ(shots.size(), 1U);
    EXPECT_EQ(shots[0].hexText, "12345678");
    EXPECT_EQ(shots[0].measuredRatio, " 241.2 ");
    EXPECT_EQ(shots[0].nameplateRatio, "240 (1200:5)");
    EXPECT_EQ(shots[0].percentError, "0.50%");
    EXPECT_TRUE(shots[0].trailerWhole);
}

TEST(CapturedShots, LinesAreTakenByPosition) {
    const std::vector<CapturedShot> shots = CapturedShots(
        "junk\nDATAAA\nDONE\n0123456789abcdefR\n0123456789abcdef#N\n0123456789abcde%");
    ASSERT_EQ(shots.size(), 1U);
    EXPECT_EQ(shots[0].measuredRatio, "R");
    EXPECT_EQ(shots[0].nameplateRatio, "N");
    EXPECT_EQ(shots[0].percentError, "%");
    EXPECT_FALSE(shots[0].trailerWhole);
}

TEST(CapturedShots, MarkerLineLosesItsFirstFourCharacters) {
    EXPECT_EQ(CapturedShots("12DATA34\r\nDONE").at(0).hexText, "TA34");
}

TEST(CapturedShots, OneLineRecord) {
    const std::vector<CapturedShot> shots = CapturedShots(
        "DATA0102DONE\r\nMEASURED RATIO: 1\r\nNAMEPLATE RATIO: N/A\r\n"
        "PERCENT ERROR: N/A\r\n\r\nDATA03DONE\r\n");
    ASSERT_EQ(shots.size(), 2U);
    EXPECT_EQ(shots[0].hexText, "0102");
    EXPECT_EQ(shots[0].measuredRatio, "1");
    EXPECT_EQ(shots[1].hexText, "03");
}

TEST(CapturedShots, TextBeforeDoneBelongsToTheRecord) {
    EXPECT_EQ(CapturedShots("DATA01\r\n02DONE03\r\n").at(0).hexText, "0102");
}

TEST(CapturedShots, RecordWithoutDoneIsNoShot) {
    EXPECT_TRUE(CapturedShots("").empty());
    EXPECT_TRUE(CapturedShots("DATA0102\r\n").empty());
    EXPECT_TRUE(CapturedShots("0102\r\nDONE\r\nMEASURED RATIO: 1\r\n").empty());
}

TEST(CapturedShots, MissingLinesAfterDoneGiveNoValue) {
    const CapturedShot shot = CapturedShots("DATA01\r\nDONE").at(0);
    EXPECT_EQ(shot.measuredRatio, "");
    EXPECT_EQ(shot.nameplateRatio, "N/A");
    EXPECT_EQ(shot.percentError, "N/A");
    EXPECT_FALSE(shot.trailerWhole);
}

TEST(CapturedShots, EndLiesBehindTheEmptyLine) {
    const std::string block = test::CaptureBlock("0102");
    const std::vector<CapturedShot> shots = CapturedShots(block + block + "DATA");
    ASSERT_EQ(shots.size(), 2U);
    EXPECT_EQ(shots[0].end, block.size());
    EXPECT_EQ(shots[1].end, 2 * block.size());
}

}  // namespace
}  // namespace davo
