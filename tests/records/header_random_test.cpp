// SPDX-License-Identifier: GPL-3.0-or-later
// "Davo.ini" against a second reader: it looks for each key with strstr and keeps a map.

#include <cstring>
#include <map>
#include <random>

#include "records/header_table.h"
#include "tests/records/captures.h"
#include "tests/support/random_seed.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

const std::vector<std::string> kKeys = {
    "COMPANY:", "STATION:", "CIRCUIT:", "MFR:", "MODEL:", "SN:", "COMMENTS:", "OPERATOR:"};

std::map<std::string, std::string> Reference(const std::vector<std::string>& lines) {
    std::map<std::string, std::string> fields;
    for (const std::string& line : lines) {
        for (const std::string& key : kKeys) {
            if (const char* found = std::strstr(line.c_str(), key.c_str())) {
                fields[key] = found + key.size();
                break;
            }
        }
    }
    for (const std::string& key : kKeys) {
        while (fields[key].size() < 20)
            fields[key] += ' ';
    }
    return fields;
}

std::string RandomText(std::mt19937_64& random, int longest) {
    std::string text;
    for (auto left = random() % static_cast<unsigned>(longest + 1); left > 0; --left) {
        const int code = 1 + static_cast<int>(random() % 255);
        text += code == '\r' || code == '\n' ? ' ' : static_cast<char>(code);
    }
    return text;
}

std::string RandomLine(std::mt19937_64& random) {
    std::string line = random() % 3 == 0 ? RandomText(random, 6) : "";
    for (auto keys = random() % 4; keys > 0; --keys) {
        std::string key = kKeys[random() % kKeys.size()];
        if (random() % 8 == 0) key.pop_back();
        if (random() % 16 == 0) key[0] = static_cast<char>(key[0] + 32);
        line += key + RandomText(random, 26);
    }
    return line;
}

TEST(HeaderRandom, AgreesWithTheReference) {
    const test::TemporaryFolder folder;
    std::mt19937_64 random(test::RandomSeed(20261121));
    for (int round = 0; round < 3000 && !testing::Test::HasFailure(); ++round) {
        std::vector<std::string> lines;
        std::string bytes;
        for (auto left = random() % 14; left > 0; --left) {
            lines.push_back(RandomLine(random));
            bytes += lines.back() + (random() % 4 == 0 ? "\n" : "\r\n");
        }
        test::PutFile(folder.Path("Davo.ini"), bytes);
        HeaderTable table;
        LoadHeaderFile(table, folder.Path());
        const auto expected = Reference(lines);
        for (std::size_t i = 0; i < kKeys.size(); ++i) {
            ASSERT_EQ(table.headerFields.at(4 + i), expected.at(kKeys[i])) << "round " << round;
        }
    }
}

TEST(HeaderRandom, SavedFieldsComeBack) {
    const test::TemporaryFolder folder;
    std::mt19937_64 random(test::RandomSeed(7));
    for (int round = 0; round < 50; ++round) {
        HeaderTable table;
        for (int i = 0; i < kHeaderFieldCount; ++i) {
            std::string box = RandomText(random, 30);
            for (char& c : box)
                c = c == ':' ? ';' : c;
            table.Field(i) = TakeHeaderField(box);
            EXPECT_LE(table.Field(i).size(), 20U);
        }
        SaveHeaderFile(table, folder.Path());
        HeaderTable back;
        LoadHeaderFile(back, folder.Path());
        for (int i = 0; i < kHeaderFieldCount; ++i) {
            const std::string& saved = table.Field(i);
            EXPECT_EQ(back.Field(i), saved + std::string(20 - saved.size(), ' '));
        }
    }
}

}  // namespace
}  // namespace davo
