// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/record_download.h"

#include <QScopedValueRollback>
#include <algorithm>
#include <utility>

#include "common/files.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/directory_entry.h"
#include "records/record_name.h"

namespace davo {

namespace {

constexpr std::size_t kNumberInName = 4;  // of a record name, behind "TST_"
constexpr std::string_view kNotFound = "Record Not Found";
constexpr std::string_view kReplyEnd = "\r\nDONE\r\n";
constexpr qsizetype kMostRemarks = 12;
constexpr const char* kNotWholeQuestion =
    "This record did not arrive complete.\r\n%1\r\nDo you want to replace the existing file "
    "anyway?";

QString Extension() {
    return QStringLiteral(".txt");
}

// The record name of an entry, all of it when it has no mark.
std::string NameOf(const std::string& entry) {
    return EntryName(entry).value_or(entry);
}

// The number of tests that an entry has, as its text; empty when it has none.
std::string_view TestsText(std::string_view entry) {
    constexpr std::string_view kTestsKey = "TESTS=";
    const std::size_t found = entry.find(kTestsKey);
    return found == std::string_view::npos ? std::string_view()
                                           : Middle(entry, found + kTestsKey.size(), 2);
}

// The number of tests that an entry has; 0 when it has none, and when they are a hundred, which
// two columns cannot hold.
int TestsOf(std::string_view entry) {
    return static_cast<int>(WholeNumericValue(TestsText(entry)).value_or(0));
}

// What is wrong with the number of tests that came; empty when it is that of the entry.
QString CountRemark(std::string_view entry, const ConvertedRecord& record) {
    const int listed = TestsOf(entry);
    const int expected = listed > 0 ? listed : record.tests;
    if (record.converted == 0) return QStringLiteral("no tests were received.");
    if (record.converted < expected) {
        return QStringLiteral("only %1 of %2 tests were received.")
            .arg(record.converted)
            .arg(expected);
    }
    if (record.tests == listed || (listed == 0 && record.tests == kMostRecordTests)) return {};
    return QStringLiteral("the list says %1 tests, the record itself %2.")
        .arg(FromPage(TestsText(entry)))
        .arg(record.tests);
}

QString NotFoundText(const std::string& name) {
    return QStringLiteral("Record Not Found: the DAVO does not have the record %1.")
        .arg(FromPage(name));
}

QString ReasonText(const DownloadResult& result, const QString& error) {
    switch (result.end) {
        case DownloadEnd::NotFound:
            return NotFoundText(result.missing.front());
        case DownloadEnd::Left:
            return QStringLiteral("The download was ended.");
        case DownloadEnd::Lost:
            return QStringLiteral("The DAVO cannot be reached.");
        case DownloadEnd::Failed:
            return error;
        case DownloadEnd::Complete:
        case DownloadEnd::Cancelled:
            break;
    }
    return {};
}

// "TST_001, TST_002", the first of a long list only.
QString NameList(const QStringList& names) {
    constexpr qsizetype kMostNamed = 20;
    QString text = names.mid(0, kMostNamed).join(QStringLiteral(", "));
    if (names.size() > kMostNamed) {
        text += QStringLiteral(" and %1 more").arg(names.size() - kMostNamed);
    }
    return text;
}

}  // namespace

QString NotWholeText(std::string_view entry, const ConvertedRecord& record) {
    QStringList remarks;
    remarks += CountRemark(entry, record);
    if (record.fieldsMissing && record.converted > 0) {
        remarks += QStringLiteral("a part of the record is missing: all values may be wrong.");
    }
    if (!record.doubtful.empty()) {
        remarks +=
            QStringLiteral("the values of these tests arrived damaged: %1.")
                .arg(RunsText(record.doubtful, [](int test) { return QString::number(test); }));
    }
    remarks.removeAll(QString());
    return remarks.join(QLatin1Char(' '));
}

RecordDownload::RecordDownload(Link& link, Prompts& prompts, DirectoryTables& tables,
                               QString dataPath, QString scratchFolder)
    : link_(link),
      prompts_(prompts),
      tables_(tables),
      dataPath_(std::move(dataPath)),
      scratchFolder_(std::move(scratchFolder)) {}

DownloadResult RecordDownload::Run() {
    const QScopedValueRollback running(running_, true);
    leaving_ = false;
    next_ = 0;
    listed_.clear();
    notWhole_.clear();
    remarks_.clear();

    const auto count = static_cast<std::size_t>(std::max<int>(tables_.recordCount, 0));
    tables_.dirEntries.resize(std::min(count, tables_.dirEntries.size()));
    DownloadResult result;
    QString error;
    try {
        Download(result);
    } catch (const RunTimeError& stopped) {
        result.end = DownloadEnd::Failed;
        error = QString::fromUtf8(stopped.what());
    }
    const bool told = result.end != DownloadEnd::Complete;
    for (std::size_t i = next_; told && i < tables_.dirEntries.size(); ++i)
        result.missing.push_back(NameOf(tables_.dirEntries[i]));
    Tell(result, error);
    return result;
}

void RecordDownload::Leave() {
    if (!running_) return;
    leaving_ = true;
    link_.EndWait();
}

void RecordDownload::Download(DownloadResult& result) {
    TellProgress(0, 0);
    tables_.dirFileNames.clear();
    for (const std::string& entry : tables_.dirEntries)
        tables_.dirFileNames.push_back(FromPage(NameOf(entry)) + Extension());
    WriteDirectory();

    link_.ClearLine();
    if (const auto ended = WhyEnded()) {
        result.end = *ended;
        return;
    }
    while (next_ < tables_.dirEntries.size()) {
        result.end = DownloadRecord(next_, result);
        if (result.end != DownloadEnd::Complete) return;
        TellProgress(next_, 0);
    }
}

DownloadEnd RecordDownload::DownloadRecord(std::size_t index, DownloadResult& result) {
    const std::string entry = tables_.dirEntries.at(index);
    const std::string name = NameOf(entry);
    OnStatus(QStringLiteral("Downloading Record %1 of %2")
                 .arg(index + 1)
                 .arg(tables_.dirEntries.size()));
    OnActivity(QStringLiteral("Prepare to download from DAVO, Please Wait..."));
    const std::optional<std::string> target = AskTarget(name);
    if (!target) return DownloadEnd::Cancelled;
    if (const auto ended = WhyEnded()) return *ended;
    if (target->empty()) {
        next_ = index + 1;
        return DownloadEnd::Complete;
    }
    OnActivity(QStringLiteral("Downloading %1 from DAVO, Please Wait...").arg(FromPage(name)));

    std::string reply;
    if (const auto ended =
            Exchange("L" + std::string(Middle(name, kNumberInName)), kLineEnd, reply)) {
        return *ended;
    }
    if (Contains(reply, kNotFound)) {
        if (MayWriteInPart(*target, NotFoundText(name))) {
            ReplaceFile(PathOf(*target), RecordHeaderLines(entry, *target));
        }
        return DownloadEnd::NotFound;
    }
    if (const auto ended = Exchange(kReadyCommand, kReadyReply, reply)) return *ended;
    {
        const QScopedValueRollback<std::function<void(std::size_t)>> grows(
            link_.OnReplyGrows, [&](std::size_t bytes) { TellProgress(index, bytes); });
        if (const auto ended = Exchange("R", kReplyEnd, reply)) return *ended;
    }
    // By way of the scratch file, where it can be looked at when a record seems odd.
    const QString scratch = scratchFolder_ + QLatin1String(kRecordScratchFileName);
    ReplaceFile(scratch, reply);
    WriteRecord(entry, *target, ReadWholeFile(scratch), result);
    next_ = index + 1;
    return DownloadEnd::Complete;
}

void RecordDownload::TellProgress(std::size_t whole, std::size_t bytes) const {
    const std::vector<std::string>& entries = tables_.dirEntries;
    const bool sizesKnown =
        std::ranges::all_of(entries, [](const std::string& entry) { return TestsOf(entry) > 0; });
    if (!sizesKnown && bytes > 0) return;
    std::size_t done = 0;
    std::size_t total = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::size_t size = sizesKnown ? UsualReplyBytes(TestsOf(entries[i])) : 1;
        if (i < whole) done += size;
        if (i == whole) done += std::min(bytes, size);
        total += size;
    }
    OnProgress(done, total);
}

void RecordDownload::WriteRecord(const std::string& entry, const std::string& name,
                                 const std::string& reply, DownloadResult& result) {
    const ConvertedRecord record = ConvertRecordReply(reply);
    QString remark = NotWholeText(entry, record);
    if (!remark.isEmpty()) {
        notWhole_ += FromPage(name);
        remark.prepend(FromPage(name) + QStringLiteral(": "));
        if (!MayWriteInPart(name, remark)) {
            remarks_ += remark + QStringLiteral(" The existing file was kept.");
            return;
        }
    }
    ReplaceFile(PathOf(name), RecordHeaderLines(entry, name) + record.lines);
    if (remark.isEmpty()) {
        result.written.push_back(FromPage(name) + Extension());
    } else {
        remarks_ += remark;
    }
    listed_.push_back(name + entry.substr(NameOf(entry).size()));
    WriteDirectory();
}

std::optional<DownloadEnd> RecordDownload::Exchange(std::string_view command,
                                                    std::string_view expectedReply,
                                                    std::string& reply) {
    reply = link_.SendCommand(command, expectedReply);
    if (const auto ended = WhyEnded()) return ended;
    if (link_.LastWaitEnded()) return DownloadEnd::Left;
    // Only "B" gives up by itself. Any other reply is empty when the line is taken by another wait.
    if (reply.empty() && command != kReadyCommand) return DownloadEnd::Lost;
    return std::nullopt;
}

std::optional<DownloadEnd> RecordDownload::WhyEnded() const {
    if (!link_.State().portOpen) return DownloadEnd::Lost;
    if (leaving_) return DownloadEnd::Left;
    return std::nullopt;
}

bool RecordDownload::MayWriteInPart(const std::string& name, const QString& remark) {
    // That a whole record may replace the file was asked before.
    return !FileExists(PathOf(name)) ||
           prompts_.Agrees(QString(QLatin1String(kNotWholeQuestion)).arg(remark));
}

// With the number of the entries that are there already: whenever the download ends, the file can
// be loaded.
void RecordDownload::WriteDirectory() const {
    ReplaceFile(dataPath_ + QLatin1String(kDirectoryFileName), DirectoryFileText(listed_));
}

QString RecordDownload::PathOf(const std::string& name) const {
    return dataPath_ + FromPage(name) + Extension();
}

std::optional<std::string> RecordDownload::AskTarget(const std::string& name) {
    if (!FileExists(PathOf(name))) return name;
    const QString shown = FromPage(name);
    const Answer answer = prompts_.YesNoCancel(
        QStringLiteral("The file ") + shown +
            QStringLiteral(" already exists. Do you want to replace the existing file? "),
        Answer::No);
    if (answer == Answer::Cancel) return std::nullopt;
    if (answer == Answer::No) {
        const QString newName = AskRecordName(
            prompts_, {.title = {},
                       .prompt = QStringLiteral("Old name: ") + shown +
                                 QStringLiteral("\r\nEnter a new name: "),
                       .folder = dataPath_,
                       .taken = QStringLiteral("The name %1 already exists. Please rename.")});
        return ToPage(newName);
    }
    // The file stays until the new one takes its place: the download may still fail.
    prompts_.Message(QStringLiteral("The record ") + shown +
                     QStringLiteral(" shall be overwritten!"));
    return name;
}

void RecordDownload::Tell(const DownloadResult& result, const QString& error) {
    QStringList lines;
    const QString reason = ReasonText(result, error);
    if (!reason.isEmpty()) lines += reason;
    if (!reason.isEmpty() && !result.missing.empty()) {
        QStringList names;
        for (const std::string& name : result.missing)
            names += FromPage(name);
        lines += QStringLiteral("Not downloaded: ") + NameList(names);
    }
    lines += remarks_.mid(0, kMostRemarks);
    if (remarks_.size() > kMostRemarks) {
        lines += QStringLiteral("Not complete either: ") + NameList(notWhole_.mid(kMostRemarks));
    }
    if (!lines.isEmpty()) prompts_.Message(lines.join(QStringLiteral("\r\n")));
}

}  // namespace davo
