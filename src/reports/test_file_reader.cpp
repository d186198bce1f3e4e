// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/test_file_reader.h"

#include <QFileInfo>
#include <optional>

#include "common/field_reader.h"
#include "common/files.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/line_cursor.h"
#include "records/record_image.h"

namespace davo {

namespace {

constexpr std::string_view kTestNumberKey = "TEST NUMBER:";
constexpr std::string_view kRecordKey = "REC NUMBER:";
constexpr std::string_view kNotesKey = "NOTES:";
constexpr std::string_view kDescriptionKey = "TEST DESCRIPTION:";
constexpr std::string_view kTestNotesKey = "TEST NOTES:";
constexpr std::string_view kCurrentKey = "CURRENT:";
constexpr std::string_view kCountKey = "NUMBER OF DATA POINTS";
constexpr std::string_view kKneeTypeKey = "KNEE POINT TYPE";

// Reads from the first line to the last; line_ is the line in hand.
class TestFileReader {
  public:
    TestFileReader(std::string_view bytes, ReportSource source)
        : bytes_(bytes), isGroup_(source == ReportSource::GroupFile), lines_(bytes) {
        Advance();
    }

    ReportTables Read();

  private:
    void Advance();
    bool StartsWith(std::string_view key) const { return !atEnd_ && line_.starts_with(key); }
    bool AtBlockStart() const;
    bool AtHeader();
    [[noreturn]] void Fail(ErrorNumber number) const;
    double NumberFrom(std::string_view text) const;
    std::string Take(std::string_view key);

    void ReadHeader();
    void TakeHeaderText(std::string_view key, std::string& text);
    void TakePieces(std::string& text);
    void CloseHeader();
    int OpenTest(bool hasRecord);
    void ReadRecord();
    void TakeOptional(std::string_view key, std::string& text);
    void ReadPoints(int slot);
    void Compute(int slot);
    void ReadResults(int slot);
    void ReadNotes();

    std::string_view bytes_;
    bool isGroup_;
    LineCursor lines_;
    std::string_view line_;
    std::size_t lineStart_ = 0;
    int lineNumber_ = 0;
    bool atEnd_ = false;

    std::optional<ReportHeader> header_;
    bool headerServed_ = true;  // a record of the present header has been read
    ReportTables report_;
};

void TestFileReader::Advance() {
    lineStart_ = lines_.Offset();
    atEnd_ = !lines_.Next(line_);
    ++lineNumber_;
}

// A header, a record or the notes begin here, or the file ends.
bool TestFileReader::AtBlockStart() const {
    return atEnd_ || StartsWith(kTestNumberKey) || StartsWith(kRecordKey) || line_ == kNotesKey;
}

// A line of the notes may look like the first of a header; the two first together do not occur.
bool TestFileReader::AtHeader() {
    if (!StartsWith(kTestNumberKey)) return false;
    LineCursor ahead = lines_;
    std::string_view next;
    return ahead.Next(next) && next.starts_with("DATE:");
}

void TestFileReader::Fail(ErrorNumber number) const {
    throw RunTimeError(number, "line " + std::to_string(lineNumber_));
}

double TestFileReader::NumberFrom(std::string_view text) const {
    const std::optional<double> number = WholeNumericValue(text);
    if (!number) Fail(ErrorNumber::TypeMismatch);
    return *number;
}

// The text behind key, which ends with its colon. Goes to the next line.
std::string TestFileReader::Take(std::string_view key) {
    if (atEnd_) Fail(ErrorNumber::InputPastEnd);
    if (!StartsWith(key)) Fail(ErrorNumber::TypeMismatch);
    std::string value = TrimBlanks(Middle(line_, key.size()));
    Advance();
    return value;
}

void TestFileReader::TakeHeaderText(std::string_view key, std::string& text) {
    // Pieces behind a comma take the place of a group file's last header lines.
    if (isGroup_ && AtBlockStart()) return;
    text = Take(key);
}

// What a comma cut off the text before: the lines up to the next that begins with a known key.
void TestFileReader::TakePieces(std::string& text) {
    static constexpr std::array<std::string_view, 5> kKeys = {
        "DATE:", "TIME:", "# OF SHOTS:", kCurrentKey, kCountKey};
    const auto isKnown = [&] {
        if (AtBlockStart() || StartsWith(kDescriptionKey) || StartsWith(kTestNotesKey)) return true;
        for (const std::string_view key : kKeys) {
            if (StartsWith(key)) return true;
        }
        for (const char* key : kHeaderKeys) {
            if (StartsWith(std::string(key) + ":")) return true;
        }
        return false;
    };
    while (isGroup_ && !isKnown()) {
        text += ", ";
        text += line_;
        Advance();
    }
}

void TestFileReader::ReadHeader() {
    CloseHeader();
    ReportHeader header;
    header.testNumber = Take(kTestNumberKey);
    TakePieces(header.testNumber);
    TakeHeaderText("DATE:", header.date);
    TakeHeaderText("TIME:", header.time);
    std::string shots;
    TakeHeaderText("# OF SHOTS:", shots);
    for (std::size_t i = 0; i < header.fields.size(); ++i) {
        TakeHeaderText(std::string(kHeaderKeys.at(i)) + ":", header.fields.at(i));
        TakePieces(header.fields.at(i));
    }
    header_ = header;
    headerServed_ = false;
}

// A header that no record has followed is a test without data.
void TestFileReader::CloseHeader() {
    if (headerServed_) return;
    SetKneepointsNotAvailable(report_.tables, OpenTest(false));
}

// The slot of a new test.
int TestFileReader::OpenTest(bool hasRecord) {
    const int slot = report_.TestCount();
    report_.tables.Result(slot, ResultColumn::TestNumber) = "N/A";
    report_.tests.push_back({*header_, {}, {}, hasRecord});
    headerServed_ = true;
    return slot;
}

void TestFileReader::TakeOptional(std::string_view key, std::string& text) {
    if (!StartsWith(key)) return;
    text = Take(key);
    TakePieces(text);
}

void TestFileReader::ReadRecord() {
    if (!header_) Fail(ErrorNumber::TypeMismatch);
    const int slot = OpenTest(true);
    const std::string number = Take(kRecordKey);
    if (!WholeNumericValue(number)) Fail(ErrorNumber::TypeMismatch);
    report_.tables.Result(slot, ResultColumn::TestNumber) = number;
    ReportTest& test = report_.tests.back();
    TakeOptional(kDescriptionKey, test.description);
    TakeOptional(kTestNotesKey, test.notes);
    ReadPoints(slot);
    Compute(slot);
    ReadResults(slot);
}

void TestFileReader::ReadPoints(int slot) {
    constexpr std::string_view kColon = ": ";
    constexpr std::string_view kVoltage = "VOLTAGE:";
    constexpr std::size_t kCountWidth = 2;
    for (int point = 0; !Contains(line_, kCountKey); ++point) {
        if (atEnd_) Fail(ErrorNumber::InputPastEnd);
        const std::size_t colon = line_.find(kColon);
        if (colon == std::string_view::npos) Fail(ErrorNumber::TypeMismatch);
        const std::size_t current = colon + kColon.size();
        const std::size_t voltage = line_.find(kVoltage, current);
        if (voltage == std::string_view::npos) Fail(ErrorNumber::TypeMismatch);
        report_.tables.Current(slot, point) =
            RoundByPicture(NumberFrom(line_.substr(current, voltage - current)), kPointPicture);
        report_.tables.Voltage(slot, point) =
            RoundByPicture(NumberFrom(line_.substr(voltage + kVoltage.size())), kPointPicture);
        Advance();
    }
    const double count = NumericValue(line_.substr(line_.size() - kCountWidth));
    report_.tables.PointCount(slot) = ToInteger16(count);
    Advance();
}

void TestFileReader::Compute(int slot) {
    std::int16_t& count = report_.tables.PointCount(slot);
    if (count >= kPointsForKnee) {
        for (const KneeRule rule : kKneeRules)
            ComputeKneepoint(report_.tables, rule, slot, count);
    } else {
        SetKneepointsNotAvailable(report_.tables, slot);
    }
    if (count > 1) count = InsertGridPoints(report_.tables, slot, count);
}

void TestFileReader::ReadResults(int slot) {
    const auto take = [&](std::string_view key, ResultColumn column) {
        report_.tables.Result(slot, column) = Take(key);
    };
    Take("KNEE VOLTAGE:");
    Take("KNEE CURRENT:");
    take("EXCITATION CUR:", ResultColumn::ExcitationCurrent);
    std::string& current = report_.tables.Result(slot, ResultColumn::ExcitationCurrent);
    current.erase(std::min(current.find(" AMP"), current.size()));
    take("EXCITATION VTG:", ResultColumn::ExcitationVoltage);
    take("MEASURED RATIO:", ResultColumn::MeasuredRatio);
    take("POLARITY:", ResultColumn::Polarity);
    report_.tables.Result(slot, ResultColumn::Phase) = PhaseText(Take("PHASE ANGLE:"));
    take("NAMEPLATE RATIO:", ResultColumn::NameplateRatio);
    take("PERCENT ERROR:", ResultColumn::PercentError);
    while (!StartsWith(kKneeTypeKey)) {
        if (atEnd_) Fail(ErrorNumber::InputPastEnd);
        if (AtBlockStart()) Fail(ErrorNumber::TypeMismatch);
        Advance();
    }
    Advance();
}

// The notes run to the end of a record file; in a group file the next graph's header ends them.
void TestFileReader::ReadNotes() {
    Advance();
    const std::size_t begin = lineStart_;
    while (!atEnd_ && !(isGroup_ && AtHeader()))
        Advance();
    FieldReader fields(bytes_.substr(begin, lineStart_ - begin));
    while (!fields.AtEnd()) {
        report_.notes += kNotesSeparator;
        report_.notes += fields.Next();
    }
}

ReportTables TestFileReader::Read() {
    while (!atEnd_) {
        if (StartsWith(kTestNumberKey)) {
            ReadHeader();
        } else if (StartsWith(kRecordKey)) {
            ReadRecord();
        } else if (line_ == kNotesKey) {
            ReadNotes();
        } else if (TrimBlanks(line_).empty()) {
            Advance();
        } else {
            Fail(ErrorNumber::TypeMismatch);
        }
    }
    CloseHeader();
    if (report_.tests.empty()) throw RunTimeError(ErrorNumber::InputPastEnd, "no test in the file");
    report_.isOverlay = isGroup_;
    return std::move(report_);
}

}  // namespace

QString ReportNameOf(const QString& recordFile) {
    const QString name = QFileInfo(recordFile).fileName();
    const auto end = name.lastIndexOf(QLatin1String(".txt"), -1, Qt::CaseInsensitive);
    return end < 0 ? name : name.left(end);
}

QString WorkbookFileName(const QString& reportName) {
    return reportName + QStringLiteral(".xls");
}

ReportTables ParseReportTables(std::string_view bytes, std::string_view reportName,
                               ReportSource source) {
    ReportTables report = TestFileReader(bytes, source).Read();
    report.reportName = reportName;
    return report;
}

ReportTables ReadReportTables(const QString& path, ReportSource source) {
    const std::string bytes = ReadWholeFile(path);
    if (source == ReportSource::GroupFile) return ParseReportTables(bytes, kOverlayName, source);
    const QString name = ReportNameOf(path);
    // A name typed in this program fits the page; one given outside it may not.
    return ParseReportTables(bytes, ToPage(name).value_or(name.toLatin1().toStdString()), source);
}

std::string PhaseText(std::string_view value) {
    const std::size_t unit = value.find("DEG");
    if (unit == std::string_view::npos) return "N/A";
    const std::optional<double> degrees = WholeNumericValue(value.substr(0, unit));
    return degrees ? PolarityOfPhase(*degrees) : "N/A";
}

}  // namespace davo
