// SPDX-License-Identifier: GPL-3.0-or-later
// The reply to "R": what is converted of any text is a record file that reads, with as many tests.
#include "fuzz/fuzzing.h"
#include "records/record_file.h"
#include "records/record_image.h"
#include "retrieval/record_reply.h"

namespace {

using namespace davo;
using fuzz::Require;

void CheckLines(const std::string& lines, std::size_t tests) {
    const TestRecordFile file =
        ParseTestRecordFile(RecordHeaderLines("T1!01/01/26 10:00", "T1") + lines);
    Require(file.records.size() == tests, "every test is a record");
    Require(file.controls == 0, "numbers have no control characters");
    for (std::size_t i = 0; i < tests; ++i) {
        const TestRecord& record = file.records[i];
        Require(record.recordNumber == std::to_string(i + 1), "they are numbered from 1");
        Require(record.points.size() <= kPointSlots, "no more points than slots");
        Require(static_cast<int>(record.points.size()) == record.dataPointCount, "counts agree");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kMostTestBytes = 4000;
    fuzz::Input input(data, size);
    const std::string reply = input.Rest();
    const ConvertedRecord record = ConvertRecordReply(reply);
    Require(record.tests >= 0 && record.tests <= kMostRecordTests, "0 to 100 tests");
    Require(record.converted >= 0 && record.converted <= record.tests, "no more than it says");
    Require(record.fieldsMissing || record.converted == record.tests, "all, or fields are missing");
    Require(std::is_sorted(record.doubtful.begin(), record.doubtful.end()), "in their order");
    for (const int test : record.doubtful)
        Require(test >= 1 && test <= record.converted, "a doubtful test is one of them");
    const auto tests = static_cast<std::size_t>(record.converted);
    Require(record.lines.size() <= tests * kMostTestBytes, "no more than its tests");
    CheckLines(record.lines, tests);
    return 0;
}
