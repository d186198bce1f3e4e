// SPDX-License-Identifier: GPL-3.0-or-later
// Random replies converted a second time by other means: the rules' own character positions over
// the whole text, regular expressions for the fields, and the number reference for the pictures.

#include <map>
#include <random>
#include <regex>

#include "records/directory_entry.h"
#include "records/directory_file.h"
#include "retrieval/memory_directory.h"
#include "retrieval/record_reply.h"
#include "tests/support/number_reference.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

class Random {
  public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}
    int Between(int low, int high) {
        return low + static_cast<int>(engine_() % static_cast<unsigned>(high - low + 1));
    }
    bool OneIn(int chances) { return Between(1, chances) == 1; }
    template <class T>
    const T& Of(const std::vector<T>& from) {
        return from[static_cast<std::size_t>(Between(0, static_cast<int>(from.size()) - 1))];
    }

  private:
    std::mt19937_64 engine_;
};

// length characters from the first-th on, counted from 1.
std::string Mid(const std::string& text, std::size_t first, std::size_t length) {
    return first > text.size() ? std::string() : text.substr(first - 1, length);
}

// Where part is from the first-th character on, counted from 1; 0 when nowhere.
std::size_t InStr(std::size_t first, const std::string& text, const std::string& part) {
    const auto at = text.find(part, first - 1);
    return at == std::string::npos ? 0 : at + 1;
}

// --- record replies -----------------------------------------------------------------------------

int Hex(const std::string& digits) {
    return digits.empty() ? 0 : std::stoi(digits, nullptr, 16);
}

int Word(const std::string& block, std::size_t p) {
    return Hex(Mid(block, p + 2, 2) + Mid(block, p, 2));
}

std::string ReferenceTest(int number, const std::string& block) {
    const double scale = Hex(Mid(block, 295, 2)) == 10 ? 0.0002 : 0.0001;
    std::string points;
    int count = 0;
    for (std::size_t p = 1; p <= 249; p += 8) {
        const double current = Word(block, p) * scale;
        const double voltage = Word(block, p + 4) * 0.1;
        if (!(current > 0 && voltage > 0)) continue;
        ++count;
        points.insert(0, "CURRENT: " + ReferencePicture(current, 1, 4) +
                             "VOLTAGE: " + ReferencePicture(voltage, 1, 1) + "\r\n");
    }
    std::string text = "REC NUMBER:  " + std::to_string(number) + "\r\n" + points +
                       "NUMBER OF DATA POINTS: " + std::to_string(count) + "\r\n";
    const auto line = [&](const std::string& key, double value, int decimals,
                          const std::string& unit) {
        text += key + ReferencePicture(value, 1, decimals) + unit + "\r\n";
    };
    line("KNEE VOLTAGE: ", Word(block, 257) * 0.1, 3, " VOLTS");
    line("KNEE CURRENT: ", Word(block, 261) * scale, 3, " AMPS");
    line("EXCITATION CUR: ", Word(block, 265) * scale, 3, " AMPS");
    line("EXCITATION VTG: ", Word(block, 269) * 0.1, 3, " VOLTS");
    const double measured =
        static_cast<double>(std::stoll(
            Mid(block, 279, 2) + Mid(block, 277, 2) + Mid(block, 275, 2) + Mid(block, 273, 2),
            nullptr, 16)) *
        0.0001;
    line("MEASURED RATIO: ", measured, 3, "");
    const double phase = Word(block, 281) * 0.1;
    std::string polarity = "N/A";
    if (phase >= 90.1 && phase <= 269.9) polarity = "OUT OF PHASE";
    if (phase <= 90 || (phase >= 270 && phase <= 360)) polarity = "IN PHASE";
    text += "POLARITY: " + polarity + "\r\n";
    line("PHASE ANGLE: ", phase, 1, " DEG");
    const int high = Word(block, 285);
    const int low = Word(block, 289);
    if (high % 65535 == 0 || low % 65535 == 0) {
        text += "NAMEPLATE RATIO: N/A\r\nPERCENT ERROR: N/A\r\n";
    } else {
        const double nameplate = high / (low * 0.1);
        line("NAMEPLATE RATIO: ", nameplate, 3, "");
        line("PERCENT ERROR: ", std::fabs(measured - nameplate) / nameplate * 100, 2, " %");
    }
    static const std::map<std::string, std::string> kTypes = {{"01", "IEEE 30 DEGREE TANGENT"},
                                                              {"02", "IEEE 45 DEGREE TANGENT"}};
    const auto type = kTypes.find(Mid(block, 293, 2));
    return text +
           "KNEE POINT TYPE: " + (type == kTypes.end() ? "ASA 10%VTG -> 50%CUR" : type->second) +
           "\r\n";
}

std::string ReferenceLines(const std::string& reply, int& tests) {
    static const std::regex kField("[^ ,\\t\\r\\n]+");
    std::vector<std::string> fields;
    for (std::sregex_iterator at(reply.begin(), reply.end(), kField), end; at != end; ++at)
        fields.push_back(at->str());
    tests = std::min(Hex(fields.at(0).substr(0, 2)), 100);
    std::size_t next = 12;
    std::string lines;
    std::string carry;
    for (int test = 1; test <= tests; ++test) {
        std::string block = carry;
        carry.clear();
        for (int i = 0; i < 9; ++i)
            block += fields.at(next++);
        if (test % 2 == 1) {
            const std::string half = fields.at(next++);
            block += half.substr(0, 16);
            carry = half.substr(half.size() - 16);
        }
        lines += ReferenceTest(test, block);
    }
    return lines;
}

std::string RandomWord(Random& random) {
    static const std::vector<std::string> kOften = {"0000", "FFFF", "8403", "8503", "8A0A",
                                                    "8B0A", "8C0A", "100E", "110E"};
    if (random.OneIn(3)) return random.Of(kOften);
    std::string word;
    for (int i = 0; i < 4; ++i)
        word += "0123456789ABCDEF"[random.Between(0, 15)];
    return word;
}

std::string RandomReply(Random& random, int tests) {
    std::string digits;
    constexpr int kWordsOfPreamble = 12 * 8;
    for (int i = 0; i < kWordsOfPreamble; ++i)
        digits += RandomWord(random);
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    digits[0] = kDigits[static_cast<std::size_t>(tests) / 16];
    digits[1] = kDigits[static_cast<std::size_t>(tests) % 16];
    static const std::vector<std::string> kLastWords = {"010A", "0100", "020A", "0210",
                                                        "000A", "FF01", "0009"};
    for (int test = 0; test < tests; ++test) {
        for (int word = 0; word < 73; ++word)
            digits += RandomWord(random);
        digits += random.Of(kLastWords) + "FFFFFFFF";
    }
    while (digits.size() % 32 != 0)
        digits += 'F';
    static const std::vector<std::string> kSeparators = {"\r\n", " ", ",", ", ", "\n", "  "};
    const std::string usual = random.Of(kSeparators);
    const bool mixed = random.OneIn(2);
    std::string reply;
    for (std::size_t at = 0; at < digits.size(); at += 32)
        reply += digits.substr(at, 32) + (mixed ? random.Of(kSeparators) : usual);
    return reply;
}

TEST(RecordReplyRandom, AgreesWithTheReference) {
    Random random(RandomSeed(20241));
    for (int round = 0; round < 5000; ++round) {
        const int wanted = round % 500 == 0 ? 100 + random.Between(0, 20) : random.Between(1, 6);
        const std::string reply = RandomReply(random, wanted);
        int tests = 0;
        const std::string expected = ReferenceLines(reply, tests);
        const ConvertedRecord record = ConvertRecordReply(reply + "\r\nDONE\r\n");
        ASSERT_EQ(record.lines, expected) << "round " << round << "\n" << reply;
        ASSERT_EQ(record.tests, tests);
        ASSERT_EQ(record.converted, tests);
        ASSERT_TRUE(record.doubtful.empty());
    }
}

TEST(RecordReplyRandom, OutlivesEveryDamage) {
    Random random(RandomSeed(20242));
    for (int round = 0; round < 3000; ++round) {
        std::string reply = RandomReply(random, random.Between(1, 5)) + "\r\nDONE\r\n";
        for (int hits = random.Between(1, 8); hits > 0; --hits) {
            const auto at =
                static_cast<std::size_t>(random.Between(0, static_cast<int>(reply.size()) - 1));
            switch (random.Between(0, 2)) {
                case 0:
                    reply[at] = static_cast<char>(random.Between(0, 255));
                    break;
                case 1:
                    reply.erase(at, static_cast<std::size_t>(random.Between(1, 50)));
                    break;
                default:
                    reply.insert(at, 1, static_cast<char>(random.Between(0, 255)));
            }
            if (reply.empty()) reply = " ";
        }
        const ConvertedRecord record = ConvertRecordReply(reply);
        ASSERT_LE(record.converted, record.tests);
        ASSERT_LE(record.tests, kMostRecordTests);
        std::size_t records = 0;
        for (std::size_t at = 0; (at = record.lines.find("REC NUMBER: ", at)) != std::string::npos;
             ++at) {
            ++records;
        }
        ASSERT_EQ(static_cast<int>(records), record.converted);
    }
}

// --- directories --------------------------------------------------------------------------------

struct ReferenceDirectory {
    std::vector<std::string> records;
    std::vector<std::string> entries;  // in reply order
};

ReferenceDirectory Reference(const std::string& reply) {
    ReferenceDirectory directory;
    std::size_t from = 1;
    while (directory.records.size() < 135) {
        const std::size_t mark = InStr(from, reply, "#");
        if (mark == 0) break;
        const std::size_t comments = InStr(mark, reply, "COMMENTS=");
        directory.records.push_back(Mid(reply, mark, comments + 29 - mark + 1));
        if (InStr(comments + 29, reply, "#") == 0) break;
        from = comments + 30;
    }
    static const std::regex kLineEnd("\r\n");
    for (const std::string& record : directory.records) {
        const std::string r = std::regex_replace(record, kLineEnd, "!");
        std::string entry = "TST_" + Mid(r, InStr(1, r, "#") + 1, 3);
        entry += "!" + Mid(r, InStr(1, r, "!") + 1, 14);
        entry += "TESTS=" + Mid(r, InStr(1, r, "TESTS=") + 6, 2);
        for (const std::string key : {"COMPANY=", "STATION=", "CIRCUIT=", "MFR=", "MODEL=", "SN=",
                                      "OPERATOR=", "COMMENTS="}) {
            entry += key + Mid(r, InStr(1, r, key) + key.size(), 20);
        }
        directory.entries.push_back(entry);
    }
    return directory;
}

std::string TwoDigits(int number) {
    return std::to_string(100 + number).substr(1);
}

std::string RandomDirectory(Random& random, int records) {
    static const std::string kCharacters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZ abcdefghijklmnopqrstuvwxyz0123456789#/:,.-&\"!\xC4\xDF";
    static const std::vector<std::string> kBetween = {"\r\n", "", " ", "\r\n\r\n", "--"};
    std::string reply;
    for (int i = 0; i < records; ++i) {
        const auto value = [&](int width) {
            std::string text;
            for (int k = random.Between(0, width); k > 0; --k)
                text += kCharacters[static_cast<std::size_t>(
                    random.Between(0, static_cast<int>(kCharacters.size()) - 1))];
            return text + std::string(static_cast<std::size_t>(width) - text.size(), ' ');
        };
        reply += "#" + std::to_string(1000 + random.Between(0, 999)).substr(1) + "\r\n" +
                 TwoDigits(random.Between(1, 12)) + "/" + TwoDigits(random.Between(1, 28)) + "/" +
                 TwoDigits(random.Between(20, 22)) + " " + TwoDigits(random.Between(0, 23)) + ":" +
                 TwoDigits(random.Between(0, 59)) + random.Of(kBetween);
        reply += "TESTS=" + TwoDigits(random.Between(1, 99)) + random.Of(kBetween);
        for (const char* key :
             {"COMPANY=", "STATION=", "CIRCUIT=", "MFR=", "MODEL=", "SN=", "OPERATOR="}) {
            reply += key + value(20) + random.Of(kBetween);
        }
        // The character behind the comment is not a beginning.
        reply += "COMMENTS=" + value(20) + "\r" + random.Of(kBetween);
    }
    return reply + "\r\nDONE";
}

TEST(MemoryDirectoryRandom, AgreesWithTheReference) {
    Random random(RandomSeed(20243));
    for (int round = 0; round < 5000; ++round) {
        const int records = round % 250 == 0 ? random.Between(120, 150) : random.Between(0, 12);
        const std::string reply = RandomDirectory(random, records);
        const ReferenceDirectory expected = Reference(reply);
        const CutRecordsResult cut = CutRecords(reply);
        ASSERT_EQ(cut.records, expected.records) << "round " << round;
        ASSERT_EQ(cut.damaged, 0);
        ASSERT_EQ(cut.beyond, std::max(0, records - 135));

        const MemoryDirectory directory = BuildEntries(reply);
        // By date, newest first; within a day in reply order, unless another record's values hold
        // that date, which the placing allows.
        std::vector<std::string> sorted = expected.entries;
        const auto date = [](const std::string& entry) {
            return ParseRecordDate(entry.substr(8, 8)).value_or(kNoRecordDate);
        };
        std::stable_sort(sorted.begin(), sorted.end(),
                         [&](const auto& a, const auto& b) { return date(a) > date(b); });
        ASSERT_EQ(directory.entries, sorted) << "round " << round;
        for (std::size_t i = 0; i < sorted.size(); ++i)
            ASSERT_EQ(directory.dates.at(i), date(sorted[i]));
    }
}

TEST(MemoryDirectoryRandom, KeepsEveryRecordThatDamageLeftWhole) {
    Random random(RandomSeed(20244));
    for (int round = 0; round < 3000; ++round) {
        const int records = random.Between(1, 6);
        std::string reply = RandomDirectory(random, records);
        const std::vector<std::string> whole = CutRecords(reply).records;
        ASSERT_EQ(std::ssize(whole), records);
        // One record loses a key.
        const auto hit = static_cast<std::size_t>(random.Between(0, records - 1));
        static const std::vector<std::string> kKeys = {
            "TESTS=", "COMPANY=", "STATION=",  "CIRCUIT=", "MFR=",
            "MODEL=", "SN=",      "OPERATOR=", "COMMENTS="};
        const std::string key = random.Of(kKeys);
        const std::size_t record = reply.find(whole[hit]);
        reply[reply.find(key, record)] = '\x7F';
        std::vector<std::string> left = whole;
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(hit));
        const CutRecordsResult cut = CutRecords(reply);
        ASSERT_EQ(cut.records, left) << key;
        ASSERT_EQ(cut.damaged, 1) << key;
    }
}

TEST(MemoryDirectoryRandom, OutlivesEveryDamage) {
    Random random(RandomSeed(20245));
    for (int round = 0; round < 3000; ++round) {
        std::string reply = RandomDirectory(random, random.Between(1, 6));
        for (int hits = random.Between(1, 10); hits > 0; --hits) {
            const auto at =
                static_cast<std::size_t>(random.Between(0, static_cast<int>(reply.size()) - 1));
            if (random.OneIn(2)) {
                reply[at] = static_cast<char>(random.Between(0, 255));
            } else {
                reply.erase(at, static_cast<std::size_t>(random.Between(1, 40)));
            }
            if (reply.empty()) reply = " ";
        }
        const MemoryDirectory directory = BuildEntries(reply);
        ASSERT_EQ(directory.entries.size(), directory.dates.size());
        for (const std::string& entry : directory.entries)
            ASSERT_EQ(RowsOfEntries({entry}, 1).size(), 1U);
    }
}

}  // namespace
}  // namespace davo::test
