// SPDX-License-Identifier: GPL-3.0-or-later
// The report of any record file as .xlsx: its cells are read back from the packed file.
#include <QFile>
#include <QXmlStreamReader>
#include <cmath>
#include <map>

#include "common/files.h"
#include "common/text.h"
#include "fuzz/fuzzing.h"
#include "fuzz/unpack.h"
#include "reports/report_tables.h"
#include "reports/report_writer.h"
#include "reports/xlsx/renderer.h"

namespace {

using namespace davo;
using fuzz::Require;

std::vector<QString> SharedTexts(const QByteArray& part) {
    std::vector<QString> texts;
    QXmlStreamReader xml(part);
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement()) continue;
        if (xml.name() == QLatin1String("si")) texts.emplace_back();
        if (xml.name() == QLatin1String("t")) texts.back() += xml.readElementText();
    }
    Require(!xml.hasError(), "the texts are well-formed");
    return texts;
}

struct ReadCell {
    bool isText = false;
    QString value;
};

std::map<std::string, ReadCell> CellsOf(const QByteArray& part) {
    std::map<std::string, ReadCell> cells;
    QXmlStreamReader xml(part);
    std::string place;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement()) continue;
        if (xml.name() == QLatin1String("c")) {
            place = xml.attributes().value(QLatin1String("r")).toString().toStdString();
            cells[place].isText = xml.attributes().value(QLatin1String("t")) == QLatin1String("s");
        }
        if (xml.name() == QLatin1String("v")) cells[place].value = xml.readElementText();
    }
    Require(!xml.hasError(), "a sheet is well-formed");
    return cells;
}

// Without a line's return, which a part of XML has as its number.
QString Plain(QString text) {
    return text.remove(QLatin1String("_x000D_")).remove(QLatin1Char('\r'));
}

void CheckCell(const Cell& cell, const ReadCell& read, const std::vector<QString>& texts) {
    if (const auto* text = std::get_if<std::string>(&cell.value)) {
        const QString wanted = Plain(FromPage(*text));
        if (wanted.isEmpty()) return;
        Require(read.isText, "a text is a text");
        Require(Plain(texts.at(read.value.toULongLong())) == wanted, "a text is read back");
        return;
    }
    const double number = std::get<double>(cell.value);
    Require(!read.isText, "a number is a number");
    Require(std::abs(read.value.toDouble() - number) <= std::abs(number) * 1e-14,
            "a number is read back");
}

void CheckWorkbook(const Workbook& workbook) {
    const fuzz::Folder folder;
    const QString path = folder.Path("report.xlsx");
    XlsxRenderer renderer;
    Require(renderer.Render(workbook, {}, path, {}, {}), "it is written");
    const fuzz::Parts parts = fuzz::Unpacked(ReadWholeFile(path));
    const auto shared = parts.find("xl/sharedStrings.xml");
    const std::vector<QString> texts =
        shared == parts.end() ? std::vector<QString>() : SharedTexts(shared->second);
    for (std::size_t i = 0; i < workbook.sheets.size(); ++i) {
        const auto part = parts.find("xl/worksheets/sheet" + std::to_string(i + 1) + ".xml");
        Require(part != parts.end(), "every sheet is in the file");
        const auto cells = CellsOf(part->second);
        for (const Cell& cell : workbook.sheets[i].cells) {
            const auto found = cells.find(AddressOf(cell.place));
            const auto* text = std::get_if<std::string>(&cell.value);
            if (found == cells.end()) {
                Require(text != nullptr && text->empty(), "every cell is in the file");
            } else {
                CheckCell(cell, found->second, texts);
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static constexpr const char* kRules[] = {"ASA 10/50 Marker", "IEEE 30 Degree Marker",
                                             "IEEE 45 Degree Marker", "another"};
    fuzz::Input input(data, size);
    const ReportOptions options{kRules[input.Below(4)], input.Flag()};
    const RecordSource source = input.Flag() ? RecordSource::GroupFile : RecordSource::RecordFile;
    ReportTables tables;
    const std::string bytes = input.Rest();
    if (!fuzz::Runs({6, 9, 13, 62}, [&] { tables = ParseReportTables(bytes, "T1", source); }))
        return 0;
    CheckWorkbook(BuildReport(tables, options));
    return 0;
}
