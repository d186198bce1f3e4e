// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/session_journal.h"

#include <random>

#include "tests/records/captures.h"
#include "tests/support/random_seed.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

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

class SessionJournalTest : public testing::Test {
  protected:
    int ErrorOfRead() const {
        return test::ErrorBy([this] { SessionJournal::Read(path); });
    }

    TemporaryFolder folder;
    const QString path = folder.Path(kJournalFileName);
};

TEST_F(SessionJournalTest, GivesAnyBytesBack) {
    FullJournal().Write(path);
    ExpectSame(SessionJournal::Read(path), FullJournal());
    SessionJournal().Write(path);
    ExpectSame(SessionJournal::Read(path), SessionJournal());
}

TEST_F(SessionJournalTest, IsPlainText) {
    FullJournal().Write(path);
    for (const char c : FileBytes(path)) {
        EXPECT_TRUE(c == '\r' || c == '\n' || (c >= ' ' && c <= '~'));
    }
}

TEST_F(SessionJournalTest, MissingIs53) {
    EXPECT_EQ(ErrorOfRead(), 53);
}

TEST_F(SessionJournalTest, EveryCutIs13) {
    SessionJournal journal;
    journal.testNotes = "note";
    journal.Write(path);
    const std::string whole = FileBytes(path);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        PutFile(path, whole.substr(0, length));
        EXPECT_EQ(ErrorOfRead(), 13) << length;
    }
}

TEST_F(SessionJournalTest, EveryRandomChangeIs13) {
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
        EXPECT_EQ(ErrorOfRead(), 13) << "round " << round;
    }
}

TEST_F(SessionJournalTest, ForeignTextIs13) {
    for (const char* text :
         {"", "CHECK: ", "DAVO SESSION 1\r\n", "\r\n\r\n", "TEST NUMBER: 1\r\n"}) {
        PutFile(path, text);
        EXPECT_EQ(ErrorOfRead(), 13) << text;
    }
}

}  // namespace
}  // namespace davo
