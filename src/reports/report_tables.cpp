// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/report_tables.h"

#include <algorithm>

#include "common/files.h"
#include "common/text.h"
#include "records/record_name.h"

namespace davo {

namespace {

// The slot of a new test.
int OpenTest(ReportTables& report, const RecordFileHeader& header, bool hasRecord) {
    const int slot = report.TestCount();
    report.tables.Result(slot, ResultColumn::TestNumber) = "N/A";
    report.tests.push_back({header, {}, {}, hasRecord});
    return slot;
}

void PutPoints(ResultTables& tables, int slot, const TestRecord& record) {
    for (int i = 0; const DataPoint& read : record.points) {
        const CurvePoint point = PointByPicture(read.current, read.voltage);
        tables.Current(slot, i) = point.current;
        tables.Voltage(slot, i) = point.voltage;
        ++i;
    }
    tables.PointCount(slot) = record.dataPointCount;
}

void Compute(ResultTables& tables, int slot) {
    std::int16_t& count = tables.PointCount(slot);
    if (count >= kPointsForKnee) {
        for (const KneeRule rule : kKneeRules)
            ComputeKneepoint(tables, rule, slot, count);
    } else {
        SetKneepointsNotAvailable(tables, slot);
    }
    if (count > 1) count = InsertGridPoints(tables, slot, count);
}

void PutResults(ReportTables& report, int slot, const TestRecord& record) {
    // A group file's texts have no blanks around them but those that were quoted.
    const auto shown = [&report](const std::string& text) {
        return report.isOverlay ? text : TrimBlanks(text);
    };
    const auto put = [&](ResultColumn column, const std::string& text) {
        report.tables.Result(slot, column) = text;
    };
    put(ResultColumn::TestNumber, record.recordNumber);
    const std::string current = shown(record.excitationCurrent);
    put(ResultColumn::ExcitationCurrent, current.substr(0, current.find(" AMP")));
    put(ResultColumn::ExcitationVoltage, shown(record.excitationVoltage));
    put(ResultColumn::MeasuredRatio, shown(record.measuredRatio));
    put(ResultColumn::Polarity, shown(record.polarity));
    put(ResultColumn::Phase, PhaseText(record.phaseAngle));
    put(ResultColumn::NameplateRatio, shown(record.nameplateRatio));
    put(ResultColumn::PercentError, shown(record.percentError));
    report.tests.back().description = shown(record.testDescription);
    report.tests.back().notes = shown(record.testNotes);
}

void AddNotes(std::string& notes, std::string_view bytes) {
    FieldReader fields(bytes);
    while (!fields.AtEnd()) {
        notes += kNotesSeparator;
        notes += fields.Next();
    }
}

}  // namespace

ReportTables ParseReportTables(std::string_view bytes, std::string_view reportName,
                               RecordSource source) {
    const TestRecordFile file = ParseTestRecordFile(bytes, source);
    RequireHeader(file);
    ReportTables report;
    report.reportName = reportName;
    report.controls = file.controls;
    report.isOverlay = source == RecordSource::GroupFile;
    auto record = file.records.begin();
    for (std::size_t i = 0; i < file.headers.size(); ++i) {
        const RecordFileHeader header =
            report.isOverlay ? file.headers[i] : file.headers[i].Trimmed();
        const auto isServed = [&] { return record != file.records.end() && record->header == i; };
        if (!isServed()) SetKneepointsNotAvailable(report.tables, OpenTest(report, header, false));
        for (; isServed(); ++record) {
            const int slot = OpenTest(report, header, true);
            PutResults(report, slot, *record);
            PutPoints(report.tables, slot, *record);
            Compute(report.tables, slot);
        }
    }
    for (const std::string& notes : file.notes)
        AddNotes(report.notes, notes);
    return report;
}

ReportTables ReadReportTables(const QString& path, RecordSource source) {
    const std::string name =
        source == RecordSource::GroupFile ? kOverlayName : PageRecordNameOf(path);
    return ParseReportTables(ReadWholeFile(path), name, source);
}

}  // namespace davo
