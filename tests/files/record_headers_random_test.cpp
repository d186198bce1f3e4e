// SPDX-License-Identifier: GPL-3.0-or-later
// Compares the rewrite and the reading of the notes with a second way to say the same rules: marks
// on numbered lines instead of a walk.

#include <map>
#include <random>
#include <regex>

#include "common/run_time_error.h"
#include "files/record_headers.h"
#include "tests/support/random_rounds.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

// --- The reference ------------------------------------------------------------------------------

std::vector<std::string> LinesOf(const std::string& file) {
    static const std::regex line("([^\n]*?)(\r?\n)|([^\n]+)$");
    std::vector<std::string> lines;
    for (std::sregex_iterator at(file.begin(), file.end(), line), end; at != end; ++at)
        lines.push_back((*at)[2].matched ? (*at)[1].str() : (*at)[3].str());
    return lines;
}

std::string Padded(std::string text) {
    static const std::regex edges("^ +| +$");
    text = std::regex_replace(text.substr(0, 20), edges, "");
    return text + std::string(20 - text.size(), ' ');
}

std::string ReferenceNotes(const std::string& file) {
    std::vector<std::string> lines = LinesOf(file);
    std::string notes;
    bool inNotes = false;
    for (const std::string& line : lines) {
        if (inNotes) {
            notes += line + "\r\n";
        } else if (std::regex_search(line, std::regex("NOTES")) &&
                   !std::regex_search(line, std::regex("TEST NOTES"))) {
            inNotes = true;
        }
    }
    return notes.size() >= 2 ? notes.substr(0, notes.size() - 2) : notes;
}

std::string ReferenceRewrite(const std::string& file, const RecordHeaders& headers) {
    const std::vector<std::string> labels = {"COMPANY", "STATION", "CIRCUIT",  "MFR",
                                             "MODEL",   "SN",      "COMMENTS", "OPERATOR"};
    // Each line becomes what is in its place; the last rule to be applied is the first of the
    // list, so that it wins.
    std::string out;
    int tests = 0;
    for (const std::string& line : LinesOf(file)) {
        const auto has = [&line](const std::string& part) {
            return std::search(line.begin(), line.end(), part.begin(), part.end()) != line.end();
        };
        std::string place = line + "\r\n";
        bool stop = false;
        bool isTest = false;
        if (has("NOTES:")) {
            place.clear();
            stop = true;
        }
        if (has("TEST NOTES: ") || has("TEST DESCRIPTION: ")) {
            place.clear();
            stop = false;
        }
        if (has("REC NUMBER:")) {
            stop = false;
            isTest = true;
        }
        for (int i = 7; i >= 0; --i) {
            if (!has(labels[i] + ":")) continue;
            place = labels[i] + ": " + Padded(headers.header[i]) + "\r\n";
            stop = isTest = false;
        }
        if (isTest) {
            place = line + "\r\n";
            const std::string& description = headers.testDescriptions[tests];
            const std::string& notes = headers.testNotes[tests];
            if (!description.empty()) place += "TEST DESCRIPTION: " + Padded(description) + "\r\n";
            if (!notes.empty()) place += "TEST NOTES: " + Padded(notes) + "\r\n";
            ++tests;
        }
        if (stop) break;
        out += place;
    }
    if (!headers.fileNotes.empty()) out += "NOTES:\r\n" + headers.fileNotes + "\r\n";
    return out;
}

// --- Random files -------------------------------------------------------------------------------

class Chance {
  public:
    explicit Chance(std::uint64_t seed) : engine_(seed) {}

    int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(engine_); }
    bool OneIn(int count) { return Below(count) == 0; }

    // 8-bit characters, blanks at the edges, now and then a key of some line.
    std::string Text(int longest) {
        static const std::vector<std::string> keys = {
            "COMPANY:", "STATION: ",    "CIRCUIT:",      "MFR:",
            "MODEL:",   "SN:",          "COMMENTS: ",    "OPERATOR:",
            "NOTES",    "NOTES:",       "TEST NOTES: ",  "TEST NOTES:",
            "SN",       "REC NUMBER: ", "REC NUMBER: 7", "TEST DESCRIPTION: "};
        std::string text;
        const int length = Below(longest + 1);
        while (static_cast<int>(text.size()) < length) {
            if (OneIn(40)) {
                text += keys[Below(static_cast<int>(keys.size()))];
            } else if (OneIn(5)) {
                text += ' ';
            } else {
                text += static_cast<char>(OneIn(4) ? 0x80 + Below(128) : 0x21 + Below(94));
            }
        }
        return text;
    }

  private:
    std::mt19937_64 engine_;
};

std::string RandomFile(Chance& chance) {
    const std::string end = chance.OneIn(3) ? "\n" : "\r\n";
    std::string file = "TEST NUMBER: " + chance.Text(12) + end + "DATE: 11/21/26" + end +
                       "TIME: 10:15" + end + "# OF SHOTS: 02" + end;
    for (const char* key : kHeaderKeys)
        file += std::string(key) + ": " + chance.Text(30) + end;
    const int tests = chance.OneIn(50) ? 100 : chance.Below(6);
    for (int test = 1; test <= tests; ++test) {
        file += "REC NUMBER: " + std::to_string(test) + end;
        if (chance.OneIn(3)) file += "TEST DESCRIPTION: " + chance.Text(30) + end;
        if (chance.OneIn(3)) file += "TEST NOTES: " + chance.Text(30) + end;
        for (int point = chance.Below(4); point > 0; --point)
            file += "CURRENT: 0.0124VOLTAGE: 152.3" + end;
        file += "NUMBER OF DATA POINTS: 2" + end + "MEASURED RATIO: " + chance.Text(9) + end;
    }
    if (chance.OneIn(2)) {
        file += "NOTES:" + end;
        for (int line = chance.Below(5); line > 0; --line)
            file += chance.Text(40) + end;
    }
    if (chance.OneIn(10)) file.resize(file.size() - end.size());
    return file;
}

RecordHeaders RandomHeaders(Chance& chance) {
    RecordHeaders headers;
    for (std::string& text : headers.header)
        text = chance.Text(30);
    for (int i = 0; i < 100; ++i) {
        if (chance.OneIn(3)) headers.testDescriptions[i] = chance.Text(30);
        if (chance.OneIn(3)) headers.testNotes[i] = chance.Text(30);
    }
    for (int line = chance.Below(4); line > 0; --line)
        headers.fileNotes += chance.Text(40) + "\r\n";
    return headers;
}

TEST(RecordHeadersRandom, TheRewriteDoesWhatTheRulesSay) {
    const int files = RandomRounds(8000);
    Chance chance(RandomSeed(20261121));
    std::map<bool, int> survived;
    int compared = 0;
    for (int i = 0; i < files; ++i) {
        const std::string file = RandomFile(chance);
        ASSERT_EQ(ReadFileNotes(file), ReferenceNotes(file)) << file;
        RecordHeaders headers = RandomHeaders(chance);
        try {
            const std::string written = RewriteRecord(file, EveryText(headers));
            ASSERT_EQ(written, ReferenceRewrite(file, headers)) << file;
            ++compared;
            headers = ReadRecordHeaders(file);
        } catch (const RunTimeError&) {
            continue;  // a key in a text made it more than 100 tests
        }
        // A file that survives loses nothing in an edit of one field.
        const bool survives = SurvivesRewrite(file, EveryText(headers));
        ++survived[survives];
        if (!survives) continue;
        RecordHeaders expected = headers;
        expected.header[5] = headers.header[5] = "4711";
        for (std::string& text : expected.header) {
            text = CutToField(text);
            text.erase(text.find_last_not_of(' ') + 1);
        }
        if (!SurvivesRewrite(file, EveryText(headers))) continue;
        ASSERT_EQ(ReadRecordHeaders(RewriteRecord(file, EveryText(headers))), expected) << file;
    }
    EXPECT_GE(compared, RandomRounds(5000));
    EXPECT_GT(survived[true], RandomRounds(1000));
    EXPECT_GT(survived[false], RandomRounds(1000));
}

}  // namespace
}  // namespace davo::test
