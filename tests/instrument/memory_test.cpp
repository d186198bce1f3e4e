// SPDX-License-Identifier: GPL-3.0-or-later
// The bulky replies, cut the way the PC cuts them, written here a second time.

#include "instrument/memory.h"

#include <set>
#include <sstream>

#include "tests/instrument/image_fields.h"
#include "tests/instrument/memory_pc.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

using namespace instrument;

std::vector<std::string> CutDirectory(const std::string& reply) {
    std::vector<std::string> records;
    std::size_t at = reply.find('#');
    while (at != std::string::npos) {
        const std::size_t comments = reply.find("COMMENTS=", at);
        if (comments == std::string::npos) break;
        records.push_back(reply.substr(at, comments + 30 - at));
        at = reply.find('#', comments + 29);
    }
    return records;
}

std::string After(const std::string& record, const std::string& key, std::size_t width) {
    const std::size_t at = record.find(key);
    return at == std::string::npos ? "?" : record.substr(at + key.size(), width);
}

std::string Filled(std::string text) {
    text.resize(20, ' ');
    return text;
}

void ExpectEntry(const std::string& text, const MemoryRecord& record) {
    const std::string number = std::to_string(1000 + record.number).substr(1);
    EXPECT_EQ(text.substr(0, 6), "#" + number + "\r\n");
    EXPECT_EQ(text.substr(6, 14), record.date + " " + record.time);
    const std::string tests = std::to_string(100 + record.tests.size() % 100).substr(1);
    EXPECT_EQ(After(text, "TESTS=", 2), tests);
    const std::array<const char*, 8> keys = {
        "COMPANY=", "STATION=", "CIRCUIT=", "MFR=", "MODEL=", "SN=", "COMMENTS=", "OPERATOR="};
    for (std::size_t i = 0; i < keys.size(); ++i) {
        EXPECT_EQ(After(text, keys[i], 20), Filled(record.header[i])) << keys[i];
    }
    // In the order in which they are looked for.
    std::size_t before = 0;
    for (const char* key : {"TESTS=", "COMPANY=", "STATION=", "CIRCUIT=", "MFR=", "MODEL=", "SN=",
                            "OPERATOR=", "COMMENTS="}) {
        const std::size_t at = text.find(key);
        EXPECT_GT(at, before) << key;
        before = at;
    }
}

TEST(Directory, AnEmptyMemoryIsALineEndAndDone) {
    MemoryPc pc({});
    pc.Send("d");
    EXPECT_EQ(pc.Rest(), "\r\nDONE");
}

TEST(Directory, CutAsThePcCutsItGivesWhatIsStored) {
    for (const int count : {1, 2, 12, 135, 136}) {
        const auto memory = MakeMemory(count, RandomSeed(21));
        MemoryPc pc({.memory = memory});
        pc.Send("d");
        const std::string reply = pc.Rest();
        EXPECT_TRUE(reply.ends_with("\r\nDONE"));
        EXPECT_EQ(reply.find("DONE"), reply.size() - 4) << "DONE ends the reply, no record has it";
        const std::vector<std::string> records = CutDirectory(reply);
        ASSERT_EQ(records.size(), memory.size());
        for (std::size_t i = 0; i < records.size(); ++i)
            ExpectEntry(records[i], memory[i]);
    }
}

TEST(Memory, HasRecordsOfAllSizesAndSharedDates) {
    const auto memory = MakeMemory(135, RandomSeed(22));
    std::set<std::size_t> sizes;
    for (std::size_t i = 0; i < memory.size(); ++i) {
        EXPECT_EQ(memory[i].number, static_cast<int>(i) + 1);
        EXPECT_GE(memory[i].tests.size(), 1U);
        EXPECT_LE(memory[i].tests.size(), 100U);
        EXPECT_EQ(memory[i].date.size(), 8U);
        EXPECT_EQ(memory[i].time.size(), 5U);
        sizes.insert(memory[i].tests.size());
    }
    EXPECT_TRUE(sizes.contains(1) && sizes.contains(100));
    EXPECT_EQ(memory[3].date, memory[2].date);
}

// Reads field by field: a preamble of twelve, then nine fields for each test, and for every odd one
// a tenth whose halves belong to this test and the next.
std::vector<std::string> CutRecord(const std::string& reply) {
    std::istringstream fields(reply);
    const auto next = [&] {
        std::string field;
        fields >> field;
        return field;
    };
    const int tests = std::stoi(next().substr(0, 2), nullptr, 16);
    for (int i = 0; i < 11; ++i)
        next();
    std::vector<std::string> blocks;
    std::string carried;
    for (int test = 1; test <= tests; ++test) {
        std::string block = std::exchange(carried, {});
        for (int i = 0; i < 9; ++i)
            block += next();
        if (test % 2 == 1) {
            const std::string shared = next();
            block += shared.substr(0, 16);
            carried = shared.substr(16);
        }
        blocks.push_back(block);
    }
    EXPECT_EQ(next(), "DONE");
    return blocks;
}

TEST(RecordReply, CutAsThePcCutsItGivesTheImagesBack) {
    const auto memory = MakeMemory(40, RandomSeed(23));
    MemoryPc pc({.memory = memory});
    for (const MemoryRecord& record : memory) {
        pc.Send("L" + std::to_string(1000 + record.number).substr(1));
        EXPECT_EQ(pc.Rest(), "Record Found\r\n");
        pc.Send("BR");
        EXPECT_EQ(pc.Until("RDY\r\n"), "RDY\r\n");
        const std::string reply = pc.Rest();
        EXPECT_TRUE(reply.ends_with("\r\nDONE\r\n"));
        const std::vector<std::string> blocks = CutRecord(reply);
        ASSERT_EQ(blocks.size(), record.tests.size());
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            ExpectImage(blocks[i].substr(0, 296), record.tests[i]);
        }
    }
}

}  // namespace
}  // namespace davo::test
