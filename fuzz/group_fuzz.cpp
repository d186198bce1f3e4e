// SPDX-License-Identifier: GPL-3.0-or-later
// The group file of two tests of any two record files: it has the tests that were chosen, and is
// never longer than the files.
#include "files/group_file.h"

#include "common/files.h"
#include "common/text.h"
#include "fuzz/fuzzing.h"
#include "records/record_file.h"
#include "reports/report_tables.h"

namespace {

using namespace davo;
using fuzz::Require;

// Each comma becomes a line end, which is one character longer; so does a last line without one.
std::size_t MostBytes(const std::string& file) {
    return 2 * file.size() + kLineEnd.size() * 12;
}

// What is behind the number that a test's entry names.
void CheckEntries(const std::string& file) {
    for (const std::string& entry : TestEntries(file)) {
        const auto test = OverlayTestOf(QStringLiteral("T1.txt"), FromPage(entry));
        Require(test.has_value(), "an entry names a test");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const double first = input.Below(4);
    const double second = input.Below(4);
    const std::string one = input.Text();
    const std::string other = input.Rest();
    std::string group;
    const bool isMade = fuzz::Runs({6, 62}, [&] {
        CheckEntries(one);
        CheckEntries(other);
        group = GroupPart(one, first);
        Require(group.size() <= MostBytes(one), "no longer than its file");
        const std::string part = GroupPart(other, second);
        Require(part.size() <= MostBytes(other), "no longer than its file");
        group += part;
    });
    const fuzz::Folder folder;
    ReplaceFile(folder.Path("one.txt"), one);
    ReplaceFile(folder.Path("other.txt"), other);
    const bool isWritten = fuzz::Runs({6, 62}, [&] {
        WriteGroupFile(folder.Path(), {QStringLiteral("one.txt"), first},
                       {QStringLiteral("other.txt"), second});
    });
    const QString path = folder.Path(kGroupFileName);
    Require(isWritten || !FileExists(path), "without both tests there is no file");
    Require(!isMade || (isWritten && ReadWholeFile(path) == group), "the file has both parts");
    if (!isWritten) return 0;
    ReportTables report;
    if (fuzz::Runs({6, 9, 13, 62},
                   [&] { report = ReadReportTables(path, RecordSource::GroupFile); })) {
        Require(report.isOverlay && report.TestCount() >= 1, "an overlay has tests");
    }
    return 0;
}
