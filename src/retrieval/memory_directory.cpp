// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/memory_directory.h"

#include <QByteArrayView>
#include <algorithm>
#include <array>
#include <chrono>

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

struct Key {
    std::string_view key;
    std::size_t width;
};
constexpr Key kTests = {"TESTS=", 2};
constexpr Key kComments = {"COMMENTS=", 20};
constexpr std::array<Key, 9> kKeys = {{kTests,
                                       {"COMPANY=", 20},
                                       {"STATION=", 20},
                                       {"CIRCUIT=", 20},
                                       {"MFR=", 20},
                                       {"MODEL=", 20},
                                       {"SN=", 20},
                                       {"OPERATOR=", 20},
                                       kComments}};

// How a record begins: '9' a digit, '0' a digit or a blank, anything else itself.
constexpr std::string_view kHead = "#999\r\n00/00/00 00:00";
constexpr std::size_t kNumberAt = 1;
constexpr std::size_t kNumberWidth = 3;
constexpr std::size_t kDateAt = 6;
constexpr std::size_t kDateWidth = 8;

bool Fits(char shape, char c) {
    const bool digit = c >= '0' && c <= '9';
    if (shape == '9') return digit;
    if (shape == '0') return digit || c == ' ';
    return c == shape;
}

bool IsHead(std::string_view text) {
    return std::ranges::equal(kHead, text.substr(0, kHead.size()), Fits);
}

// Where a record begins in text from at on; its size when none does. A "#" inside a value is no
// beginning.
std::size_t NextHead(std::string_view text, std::size_t at) {
    while ((at = text.find('#', at)) != std::string_view::npos && !IsHead(text.substr(at)))
        ++at;
    return std::min(at, text.size());
}

// What the record at the beginning of a text is made of.
struct Record {
    std::array<std::string_view, kKeys.size()> values;
    std::size_t size = 0;  // up to one character behind the comment
};

// text begins with a head and holds no other. Nothing when a key is missing or a value is short.
std::optional<Record> WholeRecord(std::string_view text) {
    Record record;
    std::size_t at = kHead.size();
    for (std::size_t i = 0; i < kKeys.size(); ++i) {
        const auto& [key, width] = kKeys.at(i);
        const std::size_t found = text.find(key, at);
        if (found == std::string_view::npos) return std::nullopt;
        const std::string_view value = Middle(text, found + key.size(), width);
        if (value.size() < width || Contains(value, "\r") || Contains(value, "\n")) {
            return std::nullopt;
        }
        record.values.at(i) = value;
        at = found + key.size() + width;
    }
    record.size = std::min(at + 1, text.size());
    return record;
}

// How many records that lost their beginning or a part are in text. Each has its comments, except
// that one may have lost these.
int RemainsIn(std::string_view text) {
    const auto comments = static_cast<int>(QByteArrayView(text).count(kComments.key));
    if (comments > 0) return comments;
    const bool any = Contains(text, "#") ||
                     std::any_of(kKeys.begin(), kKeys.end(),
                                 [text](const Key& key) { return Contains(text, key.key); });
    return any ? 1 : 0;
}

std::string EntryOf(std::string_view record) {
    std::string entry = "TST_";
    entry.append(Middle(record, kNumberAt, kNumberWidth)).append("!");
    entry.append(Middle(record, kDateAt, kHead.size() - kDateAt));
    const std::optional<Record> parts = WholeRecord(record);
    for (std::size_t i = 0; parts && i < kKeys.size(); ++i)
        entry.append(kKeys.at(i).key).append(parts->values.at(i));
    return entry;
}

}  // namespace

std::optional<std::string> ReadMemoryDirectory(Link& link, Prompts& prompts) {
    link.ClearLine();
    if (link.LastWaitEnded() || !link.AskReady(kNotAvailableMessage)) return std::nullopt;
    std::string reply = link.SendCommandAwaitDone("d", kDirectoryEnd);
    if (link.LastWaitEnded()) return std::nullopt;
    // The word stood in a comment, and the directory goes on.
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
    // The line end stays: it is what stands behind the last comment.
    const std::string_view text =
        end == std::string_view::npos ? dirReply : dirReply.substr(0, end + kLineEnd.size());
    CutRecordsResult cut;
    std::size_t head = NextHead(text, 0);
    cut.damaged = RemainsIn(text.substr(0, head));
    while (head < text.size()) {
        const std::size_t next = NextHead(text, head + 1);
        const std::string_view part = text.substr(head, next - head);
        head = next;
        const std::optional<Record> record = WholeRecord(part);
        if (!record) {
            cut.damaged += RemainsIn(part);
            continue;
        }
        cut.damaged += RemainsIn(part.substr(record->size));
        if (std::cmp_less(cut.records.size(), kMostMemoryRecords)) {
            cut.records.emplace_back(part.substr(0, record->size));
        } else {
            ++cut.beyond;
        }
    }
    return cut;
}

MemoryDirectory BuildEntries(std::string_view dirReply) {
    const CutRecordsResult cut = CutRecords(dirReply);
    MemoryDirectory directory;
    directory.damaged = cut.damaged;
    directory.beyond = cut.beyond;
    for (const std::string& record : cut.records) {
        std::string& entry = directory.entries.emplace_back(EntryOf(record));
        if (ReplaceControls(entry) > 0) ++directory.cleaned;
        directory.dates.push_back(
            ParseRecordDate(Middle(record, kDateAt, kDateWidth)).value_or(kNoRecordDate));
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
