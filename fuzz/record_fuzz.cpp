// SPDX-License-Identifier: GPL-3.0-or-later
// Record files: what reads one is refused with an error of ours, or agrees with what else reads it.
#include <limits>

#include "fuzz/fuzzing.h"
#include "records/record_file.h"
#include "reports/record_csv.h"
#include "reports/record_facts.h"
#include "reports/report_tables.h"

namespace {

using namespace davo;
using fuzz::Require;

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();
constexpr std::initializer_list<int> kUnreadable = {6, 13, 62};

// How many rows and fields a text of comma-separated values has; quotes as RFC 4180 has them.
struct CsvSize {
    std::size_t rows = 0;
    std::size_t fields = 0;
};

CsvSize SizeOf(const std::string& csv, const std::string& lineEnd) {
    CsvSize size;
    bool quoted = false;
    for (std::size_t i = 0; i < csv.size(); ++i) {
        if (csv[i] == '"') quoted = !quoted;
        if (quoted) continue;
        if (csv[i] == ',') ++size.fields;
        if (csv.compare(i, lineEnd.size(), lineEnd) != 0) continue;
        ++size.fields;
        ++size.rows;
    }
    Require(!quoted, "a quote is closed");
    Require(csv.ends_with(lineEnd), "the last row has its end");
    return size;
}

void CheckCsv(const RecordFacts& facts) {
    const std::string csv = RecordsAsCsv({facts});
    const CsvSize heading = SizeOf(RecordsAsCsv({}), "\r\n");
    const CsvSize all = SizeOf(csv, "\r\n");
    Require(heading.rows == 1, "one row of names");
    Require(all.fields == all.rows * heading.fields, "every row has every field");
    Require(all.rows > facts.tests.size() || facts.tests.empty(), "every test has a row");

    const CsvSize names = SizeOf(TestRowsHeading(false), "\n");
    const std::string rows = TestRowsOf(facts, QStringLiteral("T1.txt"), false);
    if (facts.tests.empty()) return;
    const CsvSize tests = SizeOf(rows, "\n");
    Require(tests.rows == facts.tests.size(), "a row for every test");
    Require(tests.fields == tests.rows * names.fields, "every row of a test has every field");
}

// What was read, in counts that must agree.
void CheckFile(const TestRecordFile& file) {
    for (const TestRecord& record : file.records)
        Require(record.header < file.headers.size(), "a record has a header");
    Require(file.recordsLeft == 0, "without a limit nothing is left");
}

void CheckRecordFile(const std::string& bytes) {
    TestRecordFile file;
    const bool isRead = fuzz::Runs(kUnreadable, [&] { file = ParseTestRecordFile(bytes); });
    if (!isRead) return;
    CheckFile(file);
    const TestRecordFile first =
        ParseTestRecordFile(bytes, RecordSource::RecordFile, file.records.empty() ? kNoLimit : 1);
    Require(first.records.size() <= 1, "no more than the limit");
    const bool cut = file.records.size() > 1;
    Require(!cut || first.records.size() + first.recordsLeft >= file.records.size(),
            "what is behind the limit is counted");
    RecordFacts facts;
    const bool hasFacts = fuzz::Runs({6, 9, 13, 62}, [&] {
        facts = ParseRecordFacts(bytes, "T1", 0);
        FindPrintedKneepoints(facts);
        // Takes most of the time.
        JudgeTests(facts, 0, 1);
    });
    if (hasFacts) Require(facts.tests.size() + facts.testsLeft == file.records.size(), "all tests");
    if (hasFacts) CheckCsv(facts);
}

void CheckReport(const std::string& bytes, RecordSource source) {
    ReportTables report;
    if (!fuzz::Runs({6, 9, 13, 62}, [&] { report = ParseReportTables(bytes, "T1", source); }))
        return;
    Require(report.TestCount() >= 1 && report.TestCount() <= 31, "1 to 31 tests");
    const TestRecordFile file = ParseTestRecordFile(bytes, source);
    Require(file.records.size() <= report.tests.size(), "every record is in the report");
    Require(report.controls == file.controls, "control characters are counted once");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::string bytes = input.Rest();
    CheckRecordFile(bytes);
    CheckReport(bytes, RecordSource::RecordFile);
    TestRecordFile group;
    if (fuzz::Runs(kUnreadable,
                   [&] { group = ParseTestRecordFile(bytes, RecordSource::GroupFile); })) {
        CheckFile(group);
    }
    CheckReport(bytes, RecordSource::GroupFile);
    return 0;
}
