// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/workbook.h"

#include <stdexcept>

#include "tests/support/testing.h"

namespace davo {
namespace {

TEST(CellAddresses, GoBothWays) {
    EXPECT_EQ(PlaceOf("A1"), (CellPlace{1, 1}));
    EXPECT_EQ(PlaceOf("G42"), (CellPlace{42, 7}));
    EXPECT_EQ(PlaceOf("AA100"), (CellPlace{100, 27}));
    for (const char* address : {"A1", "Z9", "AA1", "AZ12", "BA7", "ZZ65536"})
        EXPECT_EQ(AddressOf(PlaceOf(address)), address);
    EXPECT_EQ(RangeOf("A4:D100"), (CellRange{{4, 1}, {100, 4}}));
    EXPECT_EQ(RangeOf("B10"), (CellRange{{10, 2}, {10, 2}}));
    EXPECT_EQ(AddressOf(RangeOf("A4:D100")), "A4:D100");
    EXPECT_EQ(AddressOf(RangeOf("B10:B10")), "B10");
}

TEST(CellAddresses, InRowsAndColumns) {
    EXPECT_EQ(RowColumnAddressOf(RangeOf("B19:B58")), "R19C2:R58C2");
    EXPECT_EQ(RowColumnAddressOf(RangeOf("D10")), "R10C4");
}

TEST(CellAddresses, OthersAreRefused) {
    for (const char* wrong : {"", "A", "1", "a1", "A0", "$A$1", "A1 ", "AAA1", "A123456"})
        EXPECT_THROW(PlaceOf(wrong), std::invalid_argument) << wrong;
    for (const char* wrong : {"A1:", ":A1", "A1:B2:C3"})
        EXPECT_THROW(RangeOf(wrong), std::invalid_argument) << wrong;
}

TEST(Palette, HasTheColoursOfReports) {
    EXPECT_EQ(PaletteColour(2), (Rgb{255, 255, 255}));
    EXPECT_EQ(PaletteColour(3), (Rgb{255, 0, 0}));
    EXPECT_EQ(PaletteColour(4), (Rgb{0, 255, 0}));
    EXPECT_EQ(PaletteColour(5), (Rgb{0, 0, 255}));
    EXPECT_EQ(PaletteColour(8), (Rgb{0, 255, 255}));
    EXPECT_EQ(PaletteColour(26), (Rgb{255, 0, 255}));
    EXPECT_EQ(PaletteColour(29), (Rgb{128, 0, 128}));
    EXPECT_EQ(PaletteColour(46), (Rgb{255, 102, 0}));
    EXPECT_EQ(PaletteColour(50), (Rgb{51, 153, 102}));
    EXPECT_EQ(PaletteColour(53), (Rgb{153, 51, 0}));
    EXPECT_EQ(PaletteColour(56), (Rgb{51, 51, 51}));
    EXPECT_THROW(PaletteColour(0), std::invalid_argument);
    EXPECT_THROW(PaletteColour(57), std::invalid_argument);
}

TEST(Footer, HasItsFontItsSizeAndDoubledAmpersands) {
    EXPECT_EQ(FooterCode({"Maker & Co", "Arial", 8, true, true}),
              "&\"Arial,Bold Italic\"&8Maker && Co");
    EXPECT_EQ(FooterCode({"12 Street", "Arial", 8, true, false}), "&\"Arial,Bold\"&8 12 Street");
    EXPECT_EQ(FooterCode({"x", "Arial", 10, false, true}), "&\"Arial,Italic\"&10x");
    EXPECT_EQ(FooterCode({"", "Arial", 10, false, false}), "&\"Arial,Regular\"&10");
}

}  // namespace
}  // namespace davo
