// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/session_journal.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <charconv>

#include "common/files.h"
#include "common/run_time_error.h"
#include "common/text.h"

namespace davo {

namespace {

constexpr std::string_view kFirstLine = "DAVO SESSION 1";
constexpr std::string_view kCheckKey = "CHECK: ";

// Everything that is no printable ASCII character becomes "%XX", so that any text is one line.
std::string Escaped(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string line;
    line.reserve(text.size());
    for (const char c : text) {
        if (c >= ' ' && c <= '~' && c != '%') {
            line.push_back(c);
            continue;
        }
        const auto code = static_cast<unsigned char>(c);
        line.push_back('%');
        line.push_back(kDigits[code / 16U]);
        line.push_back(kDigits[code % 16U]);
    }
    return line;
}

[[noreturn]] void ThrowDamaged() {
    throw RunTimeError(ErrorNumber::TypeMismatch, "session journal");
}

template <class Number>
Number NumberOf(std::string_view digits, int base) {
    Number number{};
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number, base);
    if (error != std::errc{} || stop != end) ThrowDamaged();
    return number;
}

std::string Unescaped(std::string_view line) {
    std::string text;
    text.reserve(line.size());
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] != '%') {
            text.push_back(line[i]);
            continue;
        }
        text.push_back(static_cast<char>(NumberOf<unsigned char>(Middle(line, i + 1, 2), 16)));
        i += 2;
    }
    return text;
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
    journal.shotsInCapture = NumberOf<int>(take("SHOTS"), 10);
    journal.saved = NumberOf<int>(take("SAVED"), 10) != 0;
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
