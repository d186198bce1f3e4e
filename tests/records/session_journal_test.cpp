// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/session_journal.h"

#include <algorithm>
#include <array>
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

// Earlier releases escape "%" and what is no printable ASCII character, and nothing else.
TEST_F(SessionJournalTest, ThatOfAnEarlierReleaseIsReadWhole) {
    PutFile(path,
            "DAVO SESSION 1\r\n"
            "DATE: 11/21/26\r\n"
            "TIME: 09:32\r\n"
            "COMPANY: Power & Light, Ltd. \r\n"
            "STATION: Hilltop (bay 4)     \r\n"
            "CIRCUIT: Feeder 4; \"B\"\r\n"
            "MFR: M%FCller\r\n"
            "MODEL: CT-600/5+1\r\n"
            "SN: #00012345\r\n"
            "COMMENTS: 100%25 ~ ok? {a|b}\r\n"
            "OPERATOR: J. O'Neill\r\n"
            "NOTES: one%0D%0ACHECK: 50 %25 @ 2 %B5s%0D%0A%09two\r\n"
            "PENDING: DATA%0D%0A0A0B%0D%0ADONE%0D%0AMEASURED RATIO: 241.2%0D%0A%0D%0A\r\n"
            "SHOTS: 2\r\n"
            "SAVED: 0\r\n"
            "CHECK: 9a4851aaf6c16229e04937ae872720b9c7e71082\r\n");
    SessionJournal earlier;
    earlier.header.headerFields[kHeaderDate] = "11/21/26";
    earlier.header.headerFields[kHeaderTime] = "09:32";
    const std::array<const char*, kHeaderFieldCount> fields = {
        "Power & Light, Ltd. ", "Hilltop (bay 4)     ",
        "Feeder 4; \"B\"",      "M\xFCller",
        "CT-600/5+1",           "#00012345",
        "100% ~ ok? {a|b}",     "J. O'Neill"};
    std::ranges::copy(fields, earlier.header.Fields().begin());
    earlier.testNotes = "one\r\nCHECK: 50 % @ 2 \xB5s\r\n\ttwo";
    earlier.pendingShot = "DATA\r\n0A0B\r\nDONE\r\nMEASURED RATIO: 241.2\r\n\r\n";
    earlier.shotsInCapture = 2;
    ExpectSame(SessionJournal::Read(path), earlier);
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
