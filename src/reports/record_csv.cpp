// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/record_csv.h"

#include <string_view>

#include "common/numbers.h"
#include "common/text.h"

namespace davo {

namespace {

constexpr std::string_view kColumns =
    "record,date,time,company,station,circuit,manufacturer,model,serial_number,comments,operator,"
    "test,point,current_A,voltage_V,asa_10_50_V,asa_10_50_A,ieee_45_V,ieee_45_A,ieee_30_V,"
    "ieee_30_A,nameplate_ratio,measured_ratio,percent_error,polarity,phase,phase_deg,"
    "asa_10_50_smooth_V,asa_10_50_smooth_pm_V,ieee_45_smooth_V,ieee_45_smooth_pm_V,"
    "ieee_30_smooth_V,ieee_30_smooth_pm_V,asa_10_50_smooth_low_V,asa_10_50_smooth_high_V,"
    "ieee_45_smooth_low_V,ieee_45_smooth_high_V,ieee_30_smooth_low_V,ieee_30_smooth_high_V";

// A row for each test has the point columns' place for the file, and for the number of points.
constexpr std::string_view kTestColumns =
    "file,record,date,time,company,station,circuit,manufacturer,model,serial_number,comments,"
    "operator,test,points,asa_10_50_V,asa_10_50_A,ieee_45_V,ieee_45_A,ieee_30_V,ieee_30_A,"
    "nameplate_ratio,measured_ratio,percent_error,polarity,phase,phase_deg";
constexpr std::string_view kJudgedColumns =
    ",asa_10_50_smooth_V,asa_10_50_smooth_pm_V,ieee_45_smooth_V,ieee_45_smooth_pm_V,"
    "ieee_30_smooth_V,ieee_30_smooth_pm_V,asa_10_50_smooth_low_V,asa_10_50_smooth_high_V,"
    "ieee_45_smooth_low_V,ieee_45_smooth_high_V,ieee_30_smooth_low_V,ieee_30_smooth_high_V,"
    "asa_10_50_doubt,ieee_45_doubt,ieee_30_doubt";

// What a spreadsheet would compute; a number, also one of percent, it may.
bool IsFormula(std::string_view text) {
    if (text.empty() || !Contains("=+-@", text.substr(0, 1))) return false;
    if (text.ends_with('%')) text.remove_suffix(1);
    return !WholeNumericValue(text);
}

// One row; every field is in the page of the records.
class Row {
  public:
    void Put(std::string_view pageText) {
        if (!first_) text_ += ',';
        first_ = false;
        const char* const mark = IsFormula(pageText) ? "'" : "";
        const bool quoted = pageText.find_first_of(",\"\r\n") != std::string_view::npos;
        if (!quoted) {
            text_ += mark;
            text_ += pageText;
            return;
        }
        text_ += '"';
        text_ += mark;
        for (const char c : pageText) {
            if (c == '"') text_ += '"';
            text_ += c;
        }
        text_ += '"';
    }
    const std::string& Text() const { return text_; }

  private:
    std::string text_;
    bool first_ = true;
};

// A record's texts have no control characters, but a file's name may.
std::string NameText(std::string name) {
    ReplaceControls(name);
    return name;
}

void PutPoint(Row& row, std::size_t number, const CurvePoint& point) {
    row.Put(std::to_string(number));
    row.Put(GeneralNumber(point.current));
    row.Put(GeneralNumber(point.voltage));
}

void PutHeader(Row& row, const RecordFacts& record, const RecordTest& test) {
    row.Put(NameText(record.name));
    const RecordFileHeader& header = record.headers.at(test.header);
    row.Put(header.date);
    row.Put(header.time);
    for (const std::string& field : header.fields)
        row.Put(field);
    row.Put(test.testNumber);
}

void PutResults(Row& row, const RecordTest& test) {
    for (const KneeFact& knee : test.knees) {
        row.Put(knee.printed.voltage);
        row.Put(knee.printed.current);
    }
    for (const std::string* text : {&test.nameplateRatio, &test.measuredRatio, &test.percentError,
                                    &test.polarity, &test.phase, &test.phaseAngle}) {
        row.Put(*text);
    }
}

void PutSmooth(Row& row, const RecordTest& test) {
    for (const KneeFact& knee : test.knees) {
        row.Put(knee.smooth ? GeneralNumber(knee.smooth->at.voltage) : std::string());
        row.Put(knee.smooth ? GeneralNumber(knee.smooth->uncertainty) : std::string());
    }
    for (const KneeFact& knee : test.knees) {
        row.Put(knee.range ? GeneralNumber(knee.range->low) : std::string());
        row.Put(knee.range ? GeneralNumber(knee.range->high) : std::string());
    }
}

std::string RowsOf(const RecordFacts& record, const RecordTest& test) {
    Row before;
    PutHeader(before, record, test);
    Row behind;
    PutResults(behind, test);
    PutSmooth(behind, test);

    std::string rows;
    const auto add = [&](const std::string& point) {
        rows += before.Text() + ',' + point + ',' + behind.Text();
        rows += kLineEnd;
    };
    for (std::size_t i = 0; i < test.points.size(); ++i) {
        Row point;
        PutPoint(point, i + 1, test.points[i]);
        add(point.Text());
    }
    if (test.points.empty()) add(",,");
    return rows;
}

}  // namespace

std::string RecordsAsCsv(const std::vector<RecordFacts>& records) {
    std::string rows;
    for (const RecordFacts& record : records) {
        for (const RecordTest& test : record.tests)
            rows += RowsOf(record, test);
    }
    std::string csv(kUtf8Mark);
    csv += kColumns;
    csv += kLineEnd;
    csv += FromPage(rows).toStdString();
    return csv;
}

std::string TestRowsHeading(bool judged, std::string_view compared) {
    std::string heading(kTestColumns);
    if (judged) heading += kJudgedColumns;
    heading += compared;
    return heading + '\n';
}

std::string TestRowsOf(const RecordFacts& record, const QString& file, bool judged) {
    Row name;
    // What is quoted are signs that the page and UTF-8 have alike.
    name.Put(NameText(file.toStdString()));
    std::string rows;
    for (const RecordTest& test : record.tests) {
        Row row;
        PutHeader(row, record, test);
        row.Put(std::to_string(test.points.size()));
        PutResults(row, test);
        if (judged) {
            PutSmooth(row, test);
            for (const KneeFact& knee : test.knees)
                row.Put(knee.reason.empty() ? knee.doubt : knee.reason);
        }
        for (const std::string& text : test.compared)
            row.Put(text);
        rows += name.Text() + ',' + FromPage(row.Text()).toStdString() + '\n';
    }
    return rows;
}

}  // namespace davo
