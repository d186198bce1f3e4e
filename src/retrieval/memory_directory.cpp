// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/memory_directory.h"

#include <QRegularExpression>
#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "common/text.h"
#include "records/directory_entry.h"
#include "records/directory_file.h"
#include "records/sorting.h"

namespace davo {

namespace {

constexpr std::size_t kShortestDirectory = 10;
constexpr std::string_view kDirectoryEnd = "\r\nDONE";
// Longer than the pauses inside a reply.
constexpr std::chrono::milliseconds kReplyOver{300};
constexpr std::size_t kDateWidth = 8;

struct Key {
    const char* key;
    int width;
};
constexpr const char* kComments = "COMMENTS=";
constexpr std::array kKeys = {Key{"TESTS=", 2},    Key{"COMPANY=", 20},  Key{"STATION=", 20},
                              Key{"CIRCUIT=", 20}, Key{"MFR=", 20},      Key{"MODEL=", 20},
                              Key{"SN=", 20},      Key{"OPERATOR=", 20}, Key{kComments, 20}};

// How a record begins: its number, and its date and time. A "#" inside a value is no beginning.
constexpr const char* kHead = "#(\\d{3})\r\n([\\d ]{2}/[\\d ]{2}/[\\d ]{2} [\\d ]{2}:[\\d ]{2})";

// A whole record at the beginning of a text, up to one character behind the comment.
QRegularExpression WholeRecord() {
    QString pattern = QLatin1Char('^') + QLatin1String(kHead);
    for (const auto& [key, width] : kKeys)
        pattern += QStringLiteral("(?>.*?%1)([^\r\n]{%2})").arg(QLatin1String(key)).arg(width);
    return QRegularExpression(pattern + QStringLiteral(".?"),
                              QRegularExpression::DotMatchesEverythingOption);
}

// How many records that lost their beginning or a part are in text. Each has its comments, except
// that one may have lost these.
int RemainsIn(const QString& text) {
    const auto comments = static_cast<int>(text.count(QLatin1String(kComments)));
    if (comments > 0) return comments;
    const bool any =
        text.contains(QLatin1Char('#')) || std::ranges::any_of(kKeys, [&text](const Key& key) {
            return text.contains(QLatin1String(key.key));
        });
    return any ? 1 : 0;
}

std::string EntryOf(const QRegularExpressionMatch& record) {
    QString entry = QStringLiteral("TST_%1!").arg(record.captured(1)) + record.captured(2);
    for (std::size_t i = 0; i < kKeys.size(); ++i)
        entry += QLatin1String(kKeys.at(i).key) + record.captured(static_cast<int>(i) + 3);
    return entry.toLatin1().toStdString();
}

}  // namespace

std::optional<std::string> ReadMemoryDirectory(Link& link, Prompts& prompts) {
    link.ClearLine();
    if (link.LastWaitEnded() || !link.AskReady(kNotAvailableMessage)) return std::nullopt;
    std::string reply = link.SendCommandAwaitDone("d", kDirectoryEnd);
    if (link.LastWaitEnded()) return std::nullopt;
    // The word was in a comment, and the directory goes on.
    if (!Contains(reply, kDirectoryEnd)) {
        reply += link.ReadOn(kDirectoryEnd, kReplyOver);
        if (link.LastWaitEnded()) return std::nullopt;
    }
    if (reply.size() < kShortestDirectory) {
        prompts.Inform(QLatin1String(kNoTestRecordsMessage));
        return std::nullopt;
    }
    return reply;
}

CutRecordsResult CutRecords(std::string_view dirReply) {
    const std::size_t end = dirReply.find(kDirectoryEnd);
    // The line end stays: it is what is behind the last comment.
    const std::string_view bytes =
        end == std::string_view::npos ? dirReply : dirReply.substr(0, end + kLineEnd.size());
    // A character each.
    const QString text = QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
    const QRegularExpression head{QLatin1String(kHead)};
    const QRegularExpression whole = WholeRecord();
    const auto headFrom = [&](qsizetype at) {
        const qsizetype found = text.indexOf(head, at);
        return found < 0 ? text.size() : found;
    };
    CutRecordsResult cut;
    qsizetype at = headFrom(0);
    cut.damaged = RemainsIn(text.left(at));
    while (at < text.size()) {
        const qsizetype next = headFrom(at + 1);
        const QString part = text.mid(at, next - at);
        at = next;
        const QRegularExpressionMatch record = whole.match(part);
        cut.damaged += RemainsIn(part.mid(std::max<qsizetype>(0, record.capturedEnd())));
        if (!record.hasMatch()) continue;
        if (std::cmp_less(cut.records.size(), kMostMemoryRecords)) {
            cut.records.push_back(record.captured().toLatin1().toStdString());
            cut.entries.push_back(EntryOf(record));
        } else {
            ++cut.beyond;
        }
    }
    return cut;
}

MemoryDirectory BuildEntries(std::string_view dirReply) {
    CutRecordsResult cut = CutRecords(dirReply);
    MemoryDirectory directory{std::move(cut.entries), {}, cut.damaged, cut.beyond};
    for (std::string& entry : directory.entries) {
        const auto date = ParseRecordDate(Middle(entry, entry.find('!') + 1, kDateWidth));
        directory.dates.push_back(date.value_or(kNoRecordDate));
        if (ReplaceControls(entry) > 0) ++directory.cleaned;
    }
    SortDates(directory.dates, static_cast<int>(directory.dates.size()) - 1, kDescending);
    directory.entries = PlaceByDate(directory.entries, directory.dates);
    return directory;
}

QString NotListedText(const MemoryDirectory& directory) {
    QStringList lines;
    if (directory.damaged > 0) {
        lines += QStringLiteral(
                     "%1 of the test records arrived damaged and cannot be listed.\r\n"
                     "Please download the list again.")
                     .arg(directory.damaged);
    }
    if (directory.beyond > 0) {
        lines += QStringLiteral("The list holds %1 test records. The DAVO has %2 more.")
                     .arg(kMostMemoryRecords)
                     .arg(directory.beyond);
    }
    if (directory.cleaned > 0) {
        lines += QStringLiteral(
                     "%1 of the test records have control characters in the header, shown as "
                     "\"?\".")
                     .arg(directory.cleaned);
    }
    return lines.join(QStringLiteral("\r\n"));
}

}  // namespace davo
