// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/record_headers.h"

#include "common/files.h"
#include "common/run_time_error.h"
#include "records/record_file.h"
#include "tests/support/record_text.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

std::string Twenty(std::string text) {
    text.resize(20, ' ');
    return text;
}

TEST(RecordHeaders, ReadsTheTextsByTheirPlaces) {
    const RecordHeaders headers = ReadRecordHeaders(
        HeaderOfT1("North", "12 a") + ShotText(1, "TEST DESCRIPTION: First shot          \r\n") +
        ShotText(2, "TEST DESCRIPTION: Second\r\nTEST NOTES: dry\r\n") +
        ShotText(3, "TEST NOTES: wet\r\n") + "NOTES:\r\nline 1\r\n\r\nline 3\r\n");
    EXPECT_EQ(headers.testNumber, "T1");
    EXPECT_EQ(headers.time, "10:15");
    const std::array<std::string, 8> expected = {"ACME", "North", "12 a", "Maker",
                                                 "M-5",  "4711",  "fine", "J. Operator"};
    EXPECT_EQ(headers.header, expected);
    EXPECT_EQ(headers.recNumbers, (std::vector<std::string>{"1", "2", "3"}));
    EXPECT_EQ(headers.testDescriptions[0], "First shot");
    EXPECT_EQ(headers.testDescriptions[1], "Second");
    EXPECT_EQ(headers.testDescriptions[2], "");
    EXPECT_EQ(headers.testNotes[0], "");
    EXPECT_EQ(headers.testNotes[1], "dry");
    EXPECT_EQ(headers.testNotes[2], "wet");
    EXPECT_EQ(headers.fileNotes, "line 1\r\n\r\nline 3");
}

TEST(RecordHeaders, ReadsAnEmptyFileAndPartsOfOne) {
    EXPECT_EQ(ReadRecordHeaders(""), RecordHeaders());
    const std::string whole = HeaderOfT1("North", "12") + ShotText(1, "TEST NOTES: a\r\n");
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        EXPECT_LE(ReadRecordHeaders(whole.substr(0, size)).recNumbers.size(), 1U);
    }
}

TEST(RecordHeaders, NotesBeginBehindTheFirstLineWithTheirWord) {
    EXPECT_EQ(ReadFileNotes("TEST NOTES: a\r\nNOTES:\r\nb\r\n"), "b");
    EXPECT_EQ(ReadFileNotes("see NOTES\r\nNOTES:\r\nb\r\n"), "NOTES:\r\nb");
    EXPECT_EQ(ReadFileNotes("NOTES:\nb\nc"), "b\r\nc");
    EXPECT_EQ(ReadFileNotes("NOTES:\r\n"), "");
    EXPECT_EQ(ReadFileNotes("NOTES:\r\n\r\n"), "");
    EXPECT_EQ(ReadFileNotes("NOTES:\r\na\r\n\r\n"), "a\r\n");
    EXPECT_EQ(ReadFileNotes("TEST NOTES: a\r\n"), "");
    EXPECT_EQ(ReadFileNotes(""), "");
}

TEST(RecordHeaders, RewritesEachHeaderLine) {
    RecordHeaders headers = ReadRecordHeaders(HeaderOfT1("North", "12") + ShotText(1));
    headers.header = {"C1", " S 2 ", "", "M\xFCller", "ABCDEFGHIJKLMNOPQRSTUVWXY", "6", "7", "8"};
    const std::string expected =
        "TEST NUMBER: T1\r\nDATE: 11/21/26\r\nTIME: 10:15\r\n# OF SHOTS: 03\r\n"
        "COMPANY: C1                  \r\nSTATION: S 2                 \r\n"
        "CIRCUIT:                     \r\nMFR: M\xFCller              \r\n"
        "MODEL: ABCDEFGHIJKLMNOPQRST\r\nSN: 6                   \r\n"
        "COMMENTS: 7                   \r\nOPERATOR: 8                   \r\n";
    EXPECT_EQ(RewriteRecord(HeaderOfT1("North", "12") + ShotText(1), EveryText(headers)),
              expected + ShotText(1));
}

TEST(RecordHeaders, TheFirstKeyOfALineInTheirOrderWins) {
    RecordHeaders headers;
    headers.header = {"c", "s", "i", "m", "o", "n", "t", "p"};
    // The keys are found anywhere in a line.
    EXPECT_EQ(RewriteRecord("OPERATOR: see COMPANY: x\r\n", EveryText(headers)),
              "COMPANY: " + Twenty("c") + "\r\n");
    EXPECT_EQ(RewriteRecord("COMPANY: see OPERATOR: x\r\n", EveryText(headers)),
              "COMPANY: " + Twenty("c") + "\r\n");
    EXPECT_EQ(RewriteRecord("COMMENTS: SN: 5\r\n", EveryText(headers)),
              "SN: " + Twenty("n") + "\r\n");
    EXPECT_EQ(RewriteRecord("a REC NUMBER: 1 MFR: x\r\n", EveryText(headers)),
              "MFR: " + Twenty("m") + "\r\n");
    EXPECT_EQ(RewriteRecord("TEST NOTES: MODEL: x\r\n", EveryText(headers)),
              "MODEL: " + Twenty("o") + "\r\n");
    EXPECT_EQ(RewriteRecord("OPERATOR: NOTES: x\r\nb\r\n", EveryText(headers)),
              "OPERATOR: " + Twenty("p") + "\r\nb\r\n");
    // No key: another case, or no colon.
    EXPECT_EQ(RewriteRecord("Company: x\r\nSN 5\r\n", EveryText(headers)),
              "Company: x\r\nSN 5\r\n");
}

TEST(RecordHeaders, TheTestsTextsStandBehindTheirRecordNumbers) {
    const std::string file = ShotText(1, "TEST DESCRIPTION: old\r\nTEST NOTES: old\r\n") +
                             ShotText(2) + ShotText(3, "TEST NOTES: old\r\n");
    RecordHeaders headers;
    headers.testDescriptions[1] = "second";
    headers.testNotes[1] = "more";
    headers.testNotes[2] = "ABCDEFGHIJKLMNOPQRSTU";
    EXPECT_EQ(RewriteRecord(file, EveryText(headers)),
              ShotText(1) +
                  ShotText(2,
                           "TEST DESCRIPTION: second              \r\n"
                           "TEST NOTES: more                \r\n") +
                  ShotText(3, "TEST NOTES: ABCDEFGHIJKLMNOPQRST\r\n"));
}

TEST(RecordHeaders, EmptyingADescriptionRemovesItsLine) {
    const std::string file = HeaderOfT1("North", "12") + ShotText(1, "TEST DESCRIPTION: old\r\n");
    RecordHeaders headers = ReadRecordHeaders(file);
    headers.testDescriptions[0].clear();
    const std::string written = RewriteRecord(file, EveryText(headers));
    EXPECT_EQ(written.find("TEST DESCRIPTION"), std::string::npos);
    EXPECT_EQ(ParseTestRecordFile(written).records.at(0).testDescription, "");
}

TEST(RecordHeaders, AFileWithoutNotesGetsThemAtItsEnd) {
    const std::string file = HeaderOfT1("North", "12") + ShotText(1);
    RecordHeaders headers = ReadRecordHeaders(file);
    headers.fileNotes = "a\r\n\r\nb";
    const std::string written = RewriteRecord(file, EveryText(headers));
    EXPECT_TRUE(written.ends_with(ShotText(1) + "NOTES:\r\na\r\n\r\nb\r\n"));
    EXPECT_EQ(ReadFileNotes(written), "a\r\n\r\nb");
    headers.fileNotes.clear();
    EXPECT_EQ(RewriteRecord(written, EveryText(headers)), RewriteRecord(file, EveryText(headers)));
}

TEST(RecordHeaders, NothingBehindTheNotesLineIsCopied) {
    RecordHeaders headers;
    headers.fileNotes = "new NOTES: COMPANY:\r\n";
    EXPECT_EQ(RewriteRecord("a\r\nNOTES:\r\nREC NUMBER: 1\r\nCOMPANY: x\r\n", EveryText(headers)),
              "a\r\nNOTES:\r\nnew NOTES: COMPANY:\r\n\r\n");
    // The word is enough, wherever it is in the line.
    EXPECT_EQ(RewriteRecord("a\r\nmy NOTES: b\r\nc\r\n", EveryText(RecordHeaders())), "a\r\n");
    // The key of a test's notes has a blank.
    EXPECT_EQ(RewriteRecord("a\r\nTEST NOTES:\r\nc\r\n", EveryText(RecordHeaders())), "a\r\n");
}

TEST(RecordHeaders, LinesEndWithCrLfWhateverWasRead) {
    EXPECT_EQ(RewriteRecord("a\nREC NUMBER: 1\nb", EveryText(RecordHeaders())),
              "a\r\nREC NUMBER: 1\r\nb\r\n");
}

TEST(RecordHeaders, AHundredTestsAreTheLimit) {
    std::string file;
    for (int i = 1; i <= 100; ++i)
        file += "REC NUMBER: " + std::to_string(i) + "\r\n";
    RecordHeaders headers = ReadRecordHeaders(file);
    EXPECT_EQ(headers.recNumbers.size(), 100U);
    headers.testNotes[99] = "last";
    EXPECT_TRUE(RewriteRecord(file, EveryText(headers))
                    .ends_with("REC NUMBER: 100\r\nTEST NOTES: last                \r\n"));
    file += "REC NUMBER: 101\r\n";
    const auto expectRefused = [](const auto& act) {
        try {
            act();
            ADD_FAILURE() << "nothing thrown";
        } catch (const RunTimeError& error) {
            EXPECT_EQ(error.Number(), ErrorNumber::SubscriptOutOfRange);
            EXPECT_STREQ(
                error.what(),
                "Run-time error '9': Subscript out of range: the file holds more than 100 tests");
        }
    };
    expectRefused([&] { ReadRecordHeaders(file); });
    expectRefused([&] { RewriteRecord(file, EveryText(headers)); });
}

TEST(RecordHeaders, AnEditOfAnotherFieldLeavesAFieldWithAKeyOfALaterOne) {
    const std::string file = HeaderOfT1("see OPERATOR: me", "12") + ShotText(1);
    RecordHeaders headers = ReadRecordHeaders(file);
    EXPECT_EQ(headers.header[1], "see OPERATOR: me");
    headers.header[7] = "Miller";
    EXPECT_TRUE(SurvivesRewrite(file, EveryText(headers)));
    const RecordHeaders read = ReadRecordHeaders(RewriteRecord(file, EveryText(headers)));
    EXPECT_EQ(read.header[1], "see OPERATOR: me");
    EXPECT_EQ(read.header[7], "Miller");
}

TEST(RecordHeaders, WhatDoesNotSurviveIsKnownBefore) {
    const std::string file =
        HeaderOfT1("North", "12") + ShotText(1, "TEST NOTES: x\r\n") + "NOTES:\r\nabc\r\n";
    const RecordHeaders headers = ReadRecordHeaders(file);
    EXPECT_TRUE(SurvivesRewrite(file, EveryText(headers)));
    const auto with = [&](const auto& change) {
        RecordHeaders changed = headers;
        change(changed);
        return SurvivesRewrite(file, EveryText(changed));
    };
    EXPECT_TRUE(with([](RecordHeaders& h) { h.fileNotes = "NOTES: COMPANY: REC NUMBER: 5"; }));
    EXPECT_TRUE(with([](RecordHeaders& h) { h.testNotes[0] = "SN 5 & M\xFCller"; }));
    EXPECT_TRUE(with([](RecordHeaders& h) { h.header[6] = "NOTE"; }));
    // A later rewrite would take their lines for others.
    EXPECT_FALSE(with([](RecordHeaders& h) { h.header[6] = "SN: 5"; }));
    EXPECT_FALSE(with([](RecordHeaders& h) { h.testDescriptions[0] = "MODEL: A"; }));
    EXPECT_FALSE(with([](RecordHeaders& h) { h.testNotes[0] = "REC NUMBER: 2"; }));
    // The notes would begin there.
    EXPECT_FALSE(with([](RecordHeaders& h) { h.header[6] = "SEE NOTES"; }));
    EXPECT_FALSE(with([](RecordHeaders& h) { h.testDescriptions[0] = "NOTES"; }));
    // Such texts of the file itself.
    for (const char* line : {"TEST NOTES:\r\n", "NOTES\r\n", "COMPANY: twice\r\nSN: x\r\n"}) {
        const std::string odd = HeaderOfT1("North", "12") + line + ShotText(1);
        const bool survives = std::string(line).starts_with("COMPANY");
        EXPECT_EQ(SurvivesRewrite(odd, EveryText(ReadRecordHeaders(odd))), survives) << line;
    }
    const std::string lost = HeaderOfT1("COMPANY: 5", "12") + ShotText(1);
    EXPECT_FALSE(SurvivesRewrite(lost, EveryText(ReadRecordHeaders(lost))));
}

// Two lines that became one, as by a line end that was lost.
TEST(RecordHeaders, AReadingWithTheKeyOfAnotherLineDoesNotSurvive) {
    const std::string file = HeaderOfT1("North", "12") + ShotText(1) + "NOTES:\r\nabc\r\n";
    for (const std::string_view measured :
         {"CURRENT:", "MEASURED RATIO:", "NAMEPLATE RATIO:", "KNEE VOLTAGE:", "DATE:"}) {
        for (const char* key : {"TEST DESCRIPTION: x", "TEST NOTES: x", "SN: 5", "NOTES:"}) {
            std::string damaged = file;
            const std::size_t at = damaged.find(measured);
            ASSERT_NE(at, std::string::npos) << measured;
            damaged.insert(damaged.find('\r', at), key);
            const RecordHeaders headers = ReadRecordHeaders(damaged);
            EXPECT_FALSE(SurvivesRewrite(damaged, EveryText(headers))) << measured << key;
            // Where nothing of its test is written, the line is kept.
            if (measured == "DATE:") continue;
            RecordHeaders typed = headers;
            typed.header[0] = "another";
            const MergedHeaders merged = MergeHeaders(headers, typed, headers);
            EXPECT_TRUE(SurvivesRewrite(damaged, merged)) << measured << key;
        }
    }
}

TEST(RecordHeaders, ReadersReadWhatWasRewritten) {
    const std::string file = HeaderOfT1("North", "12") + ShotText(1) + ShotText(2);
    RecordHeaders headers = ReadRecordHeaders(file);
    headers.testDescriptions[0] = "first";
    headers.testNotes[1] = "second";
    headers.fileNotes = "all\r\ngood";
    const TestRecordFile read = ParseTestRecordFile(RewriteRecord(file, EveryText(headers)));
    ASSERT_EQ(read.records.size(), 2U);
    EXPECT_EQ(read.records[0].testDescription, "first               ");
    EXPECT_EQ(read.records[1].testNotes, "second              ");
    EXPECT_EQ(read.records[1].points.size(), 2U);
    EXPECT_EQ(read.notes, std::vector<std::string>{"all\r\ngood\r\n"});
}

}  // namespace
}  // namespace davo::test
