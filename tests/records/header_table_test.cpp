// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/header_table.h"

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

const std::string kBlanks(20, ' ');

HeaderTable Loaded(const TemporaryFolder& folder, const std::string& bytes) {
    PutFile(folder.Path("Davo.ini"), bytes);
    HeaderTable table;
    LoadHeaderFile(table, folder.Path());
    return table;
}

TEST(LoadHeaderFile, MissingFileGivesBlankFields) {
    const TemporaryFolder folder;
    HeaderTable table;
    table.Field(2) = "left over";
    LoadHeaderFile(table, folder.Path());
    for (int i = 0; i < kHeaderFieldCount; ++i)
        EXPECT_EQ(table.Field(i), kBlanks);
}

TEST(LoadHeaderFile, OnlyTheManufacturer) {
    const TemporaryFolder folder;
    const HeaderTable table = Loaded(folder, "MFR:ABB\r\n");
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        EXPECT_EQ(table.Field(i), i == 3 ? "ABB" + std::string(17, ' ') : kBlanks) << i;
    }
}

TEST(LoadHeaderFile, SlotsAreFourToEleven) {
    const TemporaryFolder folder;
    const HeaderTable table = Loaded(folder,
                                     "COMPANY:c\r\nSTATION:s\r\nCIRCUIT:i\r\nMFR:m\r\nMODEL:o\r\n"
                                     "SN:n\r\nCOMMENTS:t\r\nOPERATOR:p");
    const std::string fields = "csimontp";
    for (std::size_t i = 0; i < fields.size(); ++i) {
        EXPECT_EQ(table.headerFields.at(4 + i), fields[i] + std::string(19, ' '));
    }
    EXPECT_EQ(table.headerFields.at(3), "");
    EXPECT_EQ(table.headerFields.at(12), "");
}

TEST(LoadHeaderFile, CommentThatHoldsTheSerialNumberKeyIsTheSerialNumber) {
    const TemporaryFolder folder;
    const HeaderTable table = Loaded(folder, "COMMENTS:SN: 1234\r\n");
    EXPECT_EQ(table.Field(5), " 1234" + std::string(15, ' '));
    EXPECT_EQ(table.Field(6), kBlanks);
}

TEST(LoadHeaderFile, LaterLineWinsUnknownLineIsPassedOverLongValueIsKept) {
    const TemporaryFolder folder;
    const HeaderTable table = Loaded(
        folder, "STATION:first\r\nsn:no key\r\n\r\nSTATION:123456789012345678901234567890\r\n");
    EXPECT_EQ(table.Field(1), "123456789012345678901234567890");
    EXPECT_EQ(table.Field(5), kBlanks);
}

TEST(SaveHeaderFile, EightLinesInOrderWithoutABlankAfterTheColon) {
    const TemporaryFolder folder;
    HeaderTable table;
    table.Field(0) = "ACME                ";
    table.Field(1) = "";
    table.Field(7) = "J. M\xFCller           ";
    SaveHeaderFile(table, folder.Path());
    EXPECT_EQ(FileBytes(folder.Path("Davo.ini")),
              "COMPANY:ACME                \r\nSTATION:\r\nCIRCUIT:\r\nMFR:\r\nMODEL:\r\nSN:\r\n"
              "COMMENTS:\r\nOPERATOR:J. M\xFCller           \r\n");
}

TEST(SaveHeaderFile, MissingFolderIsAnError) {
    const TemporaryFolder folder;
    EXPECT_EQ(test::NumberThrownBy([&] { SaveHeaderFile(HeaderTable(), folder.Path("none/")); }),
              ErrorNumber::PathNotFound);
}

TEST(TakeHeaderField, TrimsAndFills) {
    std::string box = "  ABB ";
    EXPECT_EQ(TakeHeaderField(box), "ABB" + std::string(17, ' '));
    EXPECT_EQ(box, "  ABB ");
}

TEST(TakeHeaderField, EmptyStaysEmpty) {
    std::string box = "   ";
    EXPECT_EQ(TakeHeaderField(box), "");
    EXPECT_EQ(box, "   ");
}

TEST(TakeHeaderField, LongTextIsCutInTheBox) {
    std::string box = "1234567890123456789012345";
    EXPECT_EQ(TakeHeaderField(box), "12345678901234567890");
    EXPECT_EQ(box, "12345678901234567890");
}

TEST(TakeHeaderField, CutCountsTheBoxesOwnBlanks) {
    std::string box = "  1234567890123456789012345";
    EXPECT_EQ(TakeHeaderField(box), "123456789012345678");
    EXPECT_EQ(box, "  123456789012345678");
}

TEST(TakeHeaderField, TwentyCharactersBetweenBlanksStay) {
    std::string box = " 12345678901234567890 ";
    EXPECT_EQ(TakeHeaderField(box), "12345678901234567890");
    EXPECT_EQ(box, " 12345678901234567890 ");
}

TEST(FieldBetweenKeys, FillsButNeverCuts) {
    const std::string line = "STATION=Nord CIRCUIT=a circuit with a long name MFR=";
    EXPECT_EQ(FieldBetweenKeys(line, "STATION=", "CIRCUIT="), "Nord" + std::string(16, ' '));
    EXPECT_EQ(FieldBetweenKeys(line, "CIRCUIT=", "MFR="), "a circuit with a long name ");
}

TEST(FieldBetweenKeys, EndKeyIsSearchedBehindTheStartKey) {
    EXPECT_EQ(FieldBetweenKeys("B=1 A=2 B=3", "A=", "B="), "2" + std::string(19, ' '));
}

TEST(FieldBetweenKeys, MissingKeys) {
    EXPECT_EQ(FieldBetweenKeys("A=1", "X=", "Y="), kBlanks);
    EXPECT_EQ(FieldBetweenKeys("A=1", "A=", "Y="), "1" + std::string(19, ' '));
    EXPECT_EQ(FieldBetweenKeys("", "", ""), kBlanks);
}

}  // namespace
}  // namespace davo
