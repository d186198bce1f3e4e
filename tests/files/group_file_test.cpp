// SPDX-License-Identifier: GPL-3.0-or-later
// The two tests of an overlay as one file.
#include "files/group_file.h"

#include <random>

#include "common/files.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "tests/support/random_seed.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo::test {
namespace {

std::string Joined(const std::vector<std::string>& lines) {
    return JoinLines(lines);
}

std::string HeaderLines() {
    return RecordFileText("T1");
}

const std::string kTwoRecords =
    "REC NUMBER: 1\r\nCURRENT: 0.0100VOLTAGE: 1.0\r\nREC NUMBER:  2\r\nCURRENT: "
    "0.0200VOLTAGE: 2.0\r\nNOTES:\r\na, b\r\n";

TEST(TestEntries, ListsTheTestsOfAFile) {
    EXPECT_THAT(TestEntries(HeaderLines() + kTwoRecords),
                ElementsAre("TEST NUMBER:1", "TEST NUMBER: 2"));
    EXPECT_TRUE(TestEntries(HeaderLines()).empty());
    EXPECT_TRUE(TestEntries("").empty());
}

TEST(OverlayTest, IsItsText) {
    EXPECT_EQ(OverlayTestText(u"T0012"_s, u"TEST NUMBER:3"_s), u"T0012 - TEST NUMBER:3"_s);
    const auto test = OverlayTestOf(u"A - B.txt"_s, u"TEST NUMBER: 12"_s);
    ASSERT_TRUE(test.has_value());
    EXPECT_EQ(test->file, u"A - B.txt"_s);
    EXPECT_EQ(test->number, 12);
    EXPECT_FALSE(OverlayTestOf(u"A.txt"_s, u"T0012"_s).has_value());
    EXPECT_FALSE(OverlayTestOf(u"A.txt"_s, {}).has_value());
}

TEST(GroupPart, HasTheHeaderAndTheRecordOfThatNumber) {
    EXPECT_EQ(GroupPart(HeaderLines() + kTwoRecords, 1),
              HeaderLines() + Joined({"REC NUMBER: 1", "CURRENT: 0.0100VOLTAGE: 1.0"}));
}

TEST(GroupPart, ReachesToTheEndAndCutsAtCommas) {
    EXPECT_EQ(GroupPart(HeaderLines() + kTwoRecords, 2),
              HeaderLines() +
                  Joined({"REC NUMBER:  2", "CURRENT: 0.0200VOLTAGE: 2.0", "NOTES:", "a", "b"}));
}

TEST(GroupPart, IsTheHeaderAloneWithoutSuchARecord) {
    EXPECT_EQ(GroupPart(HeaderLines() + kTwoRecords, 3), HeaderLines());
}

TEST(GroupPart, CountsAHeaderLineWithACommaAsTwo) {
    std::string file = HeaderLines();
    file.replace(file.find("COMPANY: C"), 10, "COMPANY: \"C\",D");
    const std::string part = GroupPart(file + kTwoRecords, 1);
    EXPECT_NE(part.find("COMPANY: \"C\"\r\nD\r\nSTATION: S\r\n"), std::string::npos) << part;
    EXPECT_EQ(part.find("OPERATOR"), std::string::npos) << "the thirteenth field";
}

TEST(GroupPart, RefusesAFileWithoutAHeader) {
    EXPECT_EQ(NumberThrownBy([&] { GroupPart("TEST NUMBER: T1\r\n", 1); }),
              ErrorNumber::InputPastEnd);
}

TEST(WriteGroupFile, ReplacesTheEarlierOneAndTakesTheSameTestTwice) {
    const TemporaryFolder folder;
    const QString dataPath = folder.Path("");
    ReplaceFile(folder.Path("T1.txt"), HeaderLines() + kTwoRecords);
    ReplaceFile(folder.Path("2Graphs.GRP"), "old");
    const OverlayTest test{u"T1.txt"_s, 1};
    WriteGroupFile(dataPath, test, test);
    const std::string part = GroupPart(HeaderLines() + kTwoRecords, 1);
    EXPECT_EQ(ReadWholeFile(folder.Path("2Graphs.GRP")), part + part);
    EXPECT_THROW(WriteGroupFile(dataPath, test, {u"gone.txt"_s, 1}), RunTimeError);
    EXPECT_EQ(ReadWholeFile(folder.Path("2Graphs.GRP")), part + part);
}

// --- The same by another way ---

// All fields of bytes, character by character.
std::vector<std::string> FieldsOf(const std::string& bytes) {
    std::vector<std::string> fields;
    std::string field;
    enum { Before, Plain, Quoted, After } state = Before;
    const auto end = [&] {
        if (state == Plain) field.erase(field.find_last_not_of(' ') + 1);
        fields.push_back(field);
        field.clear();
        state = Before;
    };
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        if (state == Quoted) {
            if (c == '"') {
                state = After;
            } else {
                field += c;
            }
            continue;
        }
        if (c == ',' || c == '\r' || c == '\n') {
            end();
            if (c == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n') ++i;
            continue;
        }
        if (state == After || (state == Before && c == ' ')) continue;
        if (state == Before && c == '"') {
            state = Quoted;
            continue;
        }
        state = Plain;
        field += c;
    }
    const char last = bytes.empty() ? '\n' : bytes.back();
    if (state != Before || (last != ',' && last != '\r' && last != '\n')) end();
    return fields;
}

TEST(GroupPartAtRandom, AgreesWithFieldsCutOneCharacterAtATime) {
    std::mt19937_64 random(RandomSeed(41));
    const auto upTo = [&](int most) { return std::uniform_int_distribution(0, most)(random); };
    const auto text = [&] {
        static const std::string kAlphabet = "ab,\" :1. ,\"";
        std::string made;
        for (int i = upTo(12); i > 0; --i)
            made +=
                kAlphabet[static_cast<std::size_t>(upTo(static_cast<int>(kAlphabet.size()) - 1))];
        return made;
    };
    int found = 0;
    for (int run = 0; run < 6000; ++run) {
        std::string file;
        for (int i = 0; i < 12; ++i)
            file += "KEY: " + text() + (upTo(9) == 0 ? "\n" : "\r\n");
        const int records = upTo(4);
        for (int record = 1; record <= records; ++record) {
            file +=
                (upTo(3) == 0 ? "REC NUMBER:  " : "REC NUMBER: ") + std::to_string(record) + "\r\n";
            for (int i = upTo(5); i > 0; --i)
                file += text() + "\r\n";
        }
        const int wanted = upTo(4);
        std::vector<std::string> lines;
        const std::vector<std::string> fields = FieldsOf(file);
        if (fields.size() < 12) {
            // A quote without its second one took the lines behind it.
            EXPECT_THROW(GroupPart(file, wanted), RunTimeError) << file;
            continue;
        }
        bool copies = false;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const bool isRecord = fields[i].find("REC NUMBER: ") != std::string::npos;
            if (i >= 12 && isRecord && copies) break;
            if (i >= 12 && isRecord && !copies)
                copies = fields[i].size() >= 12 && NumericValue(fields[i].substr(12)) == wanted;
            if (i < 12 || copies) lines.push_back(fields[i]);
        }
        found += copies ? 1 : 0;
        ASSERT_EQ(GroupPart(file, wanted), JoinLines(lines)) << file;
    }
    EXPECT_GT(found, 500);
}

}  // namespace
}  // namespace davo::test
