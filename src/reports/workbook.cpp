// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/workbook.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <stdexcept>

namespace davo {

namespace {

constexpr int kLetters = 26;

std::string ColumnLetters(int column) {
    std::string letters;
    for (; column > 0; column = (column - 1) / kLetters) {
        letters.insert(letters.begin(), static_cast<char>('A' + (column - 1) % kLetters));
    }
    return letters;
}

std::string RowColumnOf(CellPlace place) {
    return "R" + std::to_string(place.row) + "C" + std::to_string(place.column);
}

}  // namespace

CellPlace PlaceOf(std::string_view address) {
    constexpr std::size_t kMostLetters = 2;
    constexpr std::size_t kMostDigits = 5;
    CellPlace place{0, 0};
    std::size_t at = 0;
    for (; at < address.size() && address[at] >= 'A' && address[at] <= 'Z'; ++at) {
        place.column = place.column * kLetters + (address[at] - 'A' + 1);
    }
    const std::size_t letters = at;
    for (; at < address.size() && address[at] >= '0' && address[at] <= '9'; ++at) {
        place.row = place.row * 10 + (address[at] - '0');
    }
    const bool isAddress = at == address.size() && letters >= 1 && letters <= kMostLetters &&
                           at - letters <= kMostDigits && place.row > 0;
    if (!isAddress) throw std::invalid_argument("no cell address: " + std::string(address));
    return place;
}

CellRange RangeOf(std::string_view addresses) {
    const std::size_t colon = addresses.find(':');
    const CellPlace first = PlaceOf(addresses.substr(0, colon));
    if (colon == std::string_view::npos) return {first, first};
    return {first, PlaceOf(addresses.substr(colon + 1))};
}

std::string AddressOf(CellPlace place) {
    return ColumnLetters(place.column) + std::to_string(place.row);
}

std::string AddressOf(const CellRange& range) {
    if (range.first == range.last) return AddressOf(range.first);
    return AddressOf(range.first) + ":" + AddressOf(range.last);
}

std::string RowColumnAddressOf(const CellRange& range) {
    if (range.first == range.last) return RowColumnOf(range.first);
    return RowColumnOf(range.first) + ":" + RowColumnOf(range.last);
}

Rgb PaletteColour(int index) {
    static const std::map<int, Rgb> kColours = {
        {2, {0xFF, 0xFF, 0xFF}},  {3, {0xFF, 0x00, 0x00}},  {4, {0x00, 0xFF, 0x00}},
        {5, {0x00, 0x00, 0xFF}},  {8, {0x00, 0xFF, 0xFF}},  {26, {0xFF, 0x00, 0xFF}},
        {29, {0x80, 0x00, 0x80}}, {46, {0xFF, 0x66, 0x00}}, {50, {0x33, 0x99, 0x66}},
        {53, {0x99, 0x33, 0x00}}, {56, {0x33, 0x33, 0x33}},
    };
    const auto known = kColours.find(index);
    if (known != kColours.end()) return known->second;
    throw std::invalid_argument("no colour of a report: " + std::to_string(index));
}

bool IsTestSheet(const Sheet& sheet) {
    return sheet.fromTemplate && !sheet.cleared;
}

int TestSheetsOf(const Workbook& workbook) {
    return static_cast<int>(
        std::count_if(workbook.sheets.begin(), workbook.sheets.end(), IsTestSheet));
}

RunTimeError NoModelSheet(const Workbook& workbook) {
    const std::string what =
        workbook.templateFile + " has no sheet \"" + workbook.templateSheet + "\"";
    return RunTimeError(ErrorNumber::Automation, what);
}

std::string FooterCode(const FooterText& footer) {
    std::string style = footer.bold ? "Bold" : "";
    if (footer.italic) style += style.empty() ? "Italic" : " Italic";
    if (style.empty()) style = "Regular";
    const int size = static_cast<int>(footer.fontSize);
    std::string code = "&\"" + footer.fontName + "," + style + "\"&" + std::to_string(size);
    const bool startsWithDigit =
        !footer.text.empty() && std::isdigit(static_cast<unsigned char>(footer.text.front())) != 0;
    if (startsWithDigit) code += ' ';
    for (const char c : footer.text) {
        code += c;
        if (c == '&') code += c;
    }
    return code;
}

}  // namespace davo
