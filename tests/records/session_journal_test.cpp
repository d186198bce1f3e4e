// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/session_journal.h"

#include <random>

#include "common/run_time_error.h"
#include "tests/records/captures.h"
#include "tests/support/random_seed.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using test::FileBytes;
using test::PutFile;
using test::TemporaryFolder;

std::string AllBytes() {
    std::string bytes;
    for (int code = 0; code < 256; ++code)
        bytes.push_back(static_cast<char>(code));
    return bytes;
}

SessionJournal FullJournal() {
    SessionJournal journal;
    journal.header.headerFields[kHeaderDate] = "11/21/26";
    journal.header.headerFields[kHeaderTime] = "09:32";
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        journal.header.Field(i) = std::to_string(i) + AllBytes();
    }
    journal.testNotes = "one\r\n\r\nCHECK: two\r\n" + AllBytes();
    journal.shotsInCapture = 42;
    journal.pendingShot = test::CaptureBlock(test::ImageWithPoints(5)) + AllBytes();
    journal.saved = true;
    return journal;
}

void ExpectSame(const SessionJournal& a, const SessionJournal& b) {
    EXPECT_EQ(a.header.headerFields, b.header.headerFields);
    EXPECT_EQ(a.testNotes, b.testNotes);
    EXPECT_EQ(a.shotsInCapture, b.shotsInCapture);
    EXPECT_EQ(a.pendingShot, b.pendingShot);
    EXPECT_EQ(a.saved, b.saved);
}

ErrorNumber NumberOfRead(const QString& path) {
    try {
        SessionJournal::Read(path);
    } catch (const RunTimeError& error) {
        return error.Number();
    }
    return {};
}

TEST(SessionJournal, GivesAnyBytesBack) {
    const TemporaryFolder folder;
    const QString path = folder.Path(kJournalFileName);
    FullJournal().Write(path);
    ExpectSame(SessionJournal::Read(path), FullJournal());
    SessionJournal().Write(path);
    ExpectSame(SessionJournal::Read(path), SessionJournal());
}

TEST(SessionJournal, IsPlainText) {
    const TemporaryFolder folder;
    FullJournal().Write(folder.Path(kJournalFileName));
    for (const char c : FileBytes(folder.Path(kJournalFileName))) {
        EXPECT_TRUE(c == '\r' || c == '\n' || (c >= ' ' && c <= '~'));
    }
}

TEST(SessionJournal, MissingIs53) {
    const TemporaryFolder folder;
    EXPECT_EQ(NumberOfRead(folder.Path(kJournalFileName)), ErrorNumber::FileNotFound);
}

TEST(SessionJournal, EveryCutIs13) {
    const TemporaryFolder folder;
    const QString path = folder.Path(kJournalFileName);
    SessionJournal journal;
    journal.testNotes = "note";
    journal.Write(path);
    const std::string whole = FileBytes(path);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        PutFile(path, whole.substr(0, length));
        EXPECT_EQ(NumberOfRead(path), ErrorNumber::TypeMismatch) << length;
    }
}

TEST(SessionJournal, EveryRandomChangeIs13) {
    const TemporaryFolder folder;
    const QString path = folder.Path(kJournalFileName);
    FullJournal().Write(path);
    const std::string whole = FileBytes(path);
    std::mt19937_64 random(test::RandomSeed(20261121));
    for (int round = 0; round < 3000; ++round) {
        std::string bytes = whole;
        const std::size_t at = random() % bytes.size();
        switch (random() % 3) {
            case 0:
                bytes[at] = static_cast<char>(bytes[at] ^ (1 + static_cast<int>(random() % 255)));
                break;
            case 1:
                bytes.erase(at, 1);
                break;
            default:
                bytes.insert(at, 1, static_cast<char>(random()));
        }
        // Taking away or doubling one of two equal neighbours can give the same text again.
        if (bytes == whole) continue;
        PutFile(path, bytes);
        EXPECT_EQ(NumberOfRead(path), ErrorNumber::TypeMismatch) << "round " << round;
    }
}

TEST(SessionJournal, ForeignTextIs13) {
    const TemporaryFolder folder;
    const QString path = folder.Path(kJournalFileName);
    for (const char* text :
         {"", "CHECK: ", "DAVO SESSION 1\r\n", "\r\n\r\n", "TEST NUMBER: 1\r\n"}) {
        PutFile(path, text);
        EXPECT_EQ(NumberOfRead(path), ErrorNumber::TypeMismatch) << text;
    }
}

}  // namespace
}  // namespace davo
