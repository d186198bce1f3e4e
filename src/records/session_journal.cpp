// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/session_journal.h"

#include <QByteArray>
#include <QCryptographicHash>

#include "common/files.h"
#include "common/run_time_error.h"
#include "common/text.h"

namespace davo {

namespace {

constexpr std::string_view kFirstLine = "DAVO SESSION 1";
constexpr std::string_view kCheckKey = "CHECK: ";

// Everything but letters, digits and a few signs becomes "%XX", so that any text is one line.
std::string Escaped(std::string_view text) {
    return QByteArray(text.data(), static_cast<qsizetype>(text.size()))
        .toPercentEncoding()
        .toStdString();
}

std::string Unescaped(std::string_view line) {
    const QByteArray text(line.data(), static_cast<qsizetype>(line.size()));
    return QByteArray::fromPercentEncoding(text).toStdString();
}

[[noreturn]] void ThrowDamaged() {
    throw RunTimeError(ErrorNumber::TypeMismatch, "session journal");
}

int NumberOf(const std::string& digits) {
    bool isNumber = false;
    const int number = QByteArray::fromStdString(digits).toInt(&isNumber);
    if (!isNumber) ThrowDamaged();
    return number;
}

std::string CheckText(std::string_view bytes) {
    const QByteArray hash = QCryptographicHash::hash(
        QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size())),
        QCryptographicHash::Sha1);
    return hash.toHex().toStdString();
}

// The texts of a journal in the order of its lines, each with its key.
template <class Journal, class Visit>
void ForEachText(Journal& journal, Visit visit) {
    visit("DATE", journal.header.headerFields.at(kHeaderDate));
    visit("TIME", journal.header.headerFields.at(kHeaderTime));
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        visit(kHeaderKeys.at(static_cast<std::size_t>(i)), journal.header.Field(i));
    }
    visit("NOTES", journal.testNotes);
    visit("PENDING", journal.pendingShot);
}

std::string Packed(const SessionJournal& journal) {
    std::vector<std::string> lines;
    const auto put = [&lines](const std::string& key, std::string_view value) {
        lines.push_back(key + ": " + Escaped(value));
    };
    lines.emplace_back(kFirstLine);
    ForEachText(journal, put);
    put("SHOTS", std::to_string(journal.shotsInCapture));
    put("SAVED", journal.saved ? "1" : "0");
    const std::string bytes = JoinLines(lines);
    return bytes + JoinLines({std::string(kCheckKey) + CheckText(bytes)});
}

SessionJournal Unpacked(std::string_view bytes) {
    const std::size_t check = bytes.rfind(kCheckKey);
    if (check == std::string_view::npos) ThrowDamaged();
    const std::string_view checked = bytes.substr(0, check);
    const std::string wanted = JoinLines({std::string(kCheckKey) + CheckText(checked)});
    if (bytes.substr(check) != wanted) ThrowDamaged();

    const std::vector<std::string> lines = SplitLines(checked);
    std::size_t next = 0;
    const auto take = [&lines, &next](const std::string& key) {
        const std::string start = key + ": ";
        if (next >= lines.size() || !lines[next].starts_with(start)) ThrowDamaged();
        return Unescaped(Middle(lines[next++], start.size()));
    };
    if (lines.empty() || lines[next++] != kFirstLine) ThrowDamaged();
    SessionJournal journal;
    ForEachText(journal, [&take](const char* key, std::string& text) { text = take(key); });
    journal.shotsInCapture = NumberOf(take("SHOTS"));
    journal.saved = NumberOf(take("SAVED")) != 0;
    return journal;
}

}  // namespace

void SessionJournal::Write(const QString& path) const {
    ReplaceFile(path, Packed(*this));
}

SessionJournal SessionJournal::Read(const QString& path) {
    return Unpacked(ReadWholeFile(path));
}

}  // namespace davo
