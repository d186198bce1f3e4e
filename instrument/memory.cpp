// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/memory.h"

#include <algorithm>

#include "instrument/random.h"
#include "instrument/transformer.h"

namespace davo::instrument {

namespace {

constexpr std::size_t kFieldDigits = 32;
constexpr std::size_t kPreambleBytes = 12 * kFieldDigits / 2;
constexpr std::size_t kHeaderOffset = kPreambleBytes - kHeaderSlotSize;
constexpr const char* kFilling = "FFFFFFFF";

std::string Padded(const std::string& text, std::size_t width) {
    return text.substr(0, width) + std::string(width - std::min(width, text.size()), ' ');
}

std::string Digits(int value, std::size_t width) {
    const std::string text = std::to_string(value);
    return std::string(width - std::min(width, text.size()), '0') +
           text.substr(text.size() - std::min(width, text.size()));
}

std::string Packed(const std::array<std::string, 8>& header) {
    std::string packed;
    for (const std::string& field : header)
        packed += Padded(field, 20);
    return packed;
}

std::string HexOf(const std::string& bytes) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string hex;
    for (const char c : bytes) {
        const auto value = static_cast<unsigned char>(c);
        hex += kDigits[value >> 4U];
        hex += kDigits[value & 15U];
    }
    return hex;
}

std::array<std::string, 8> HeaderOf(int number, Random& random) {
    static constexpr std::array<const char*, 5> kStations = {
        "NORTH YARD", "SOUTH YARD", "RIVER CROSSING", "HILL 7", "A STATION NAME OF 20"};
    static constexpr std::array<const char*, 4> kMakers = {"ACME", "TORUS WORKS", "",
                                                           "IRON & WIRE"};
    return {"CENTRAL POWER",
            kStations[static_cast<std::size_t>(random.Between(0, 4))],
            "LINE " + std::to_string(random.Between(1, 40)),
            kMakers[static_cast<std::size_t>(random.Between(0, 3))],
            "CT-" + std::to_string(random.Between(100, 999)),
            "SN" + std::to_string(100000 + number),
            number % 3 == 0 ? "" : "AFTER REPAIR, 2ND",
            number % 2 == 0 ? "R. MEYER" : "J. DOE"};
}

}  // namespace

std::vector<MemoryRecord> MakeMemory(int count, std::uint64_t seed) {
    Random random(seed + 77);
    const auto presets = TransformerPresets();
    std::vector<MemoryRecord> memory;
    for (int number = 1; number <= count; ++number) {
        MemoryRecord record;
        record.number = number;
        record.date = Digits(random.Between(1, 12), 2) + "/" + Digits(random.Between(1, 28), 2) +
                      "/" + Digits(random.Between(19, 24), 2);
        if (number % 4 == 0) record.date = memory.back().date;
        record.time = Digits(random.Between(0, 23), 2) + ":" + Digits(random.Between(0, 59), 2);
        record.header = HeaderOf(number, random);
        int tests = random.Between(1, 6);
        if (number % 10 == 0) tests = number % 20 == 0 ? 100 : random.Between(20, 99);
        for (int test = 0; test < tests; ++test) {
            const auto preset = static_cast<std::size_t>(number + test) % presets.size();
            const Polarity polarity = random.Chance(0.1) ? Polarity::OutOfPhase : Polarity::AsWired;
            record.tests.push_back(
                MeasureShot(presets[preset], random.Chance(0.2), polarity, random).image);
        }
        memory.push_back(std::move(record));
    }
    return memory;
}

std::string MakeHeaderMemory() {
    const std::string erased(kHeaderSlotSize, kErased);
    std::string slots;
    for (int slot = 1; slot <= kHeaderSlots; ++slot) {
        if (slot != 1 && slot != 2 && slot != 4) {
            slots += erased;
            continue;
        }
        slots += Packed({"CENTRAL POWER", "STATION " + std::to_string(slot), "BAY 3", "ACME",
                         "CT-1200", "SN" + std::to_string(slot), "SPARE", "J. DOE"});
    }
    return slots;
}

std::string DirectoryReply(const std::vector<MemoryRecord>& memory) {
    std::string reply;
    for (const MemoryRecord& record : memory) {
        const auto field = [&](const char* key, std::size_t i) {
            return std::string(key) + "=" + Padded(record.header[i], 20) + "\r\n";
        };
        reply += "#" + Digits(record.number, 3) + "\r\n" + record.date + " " + record.time + "\r\n";
        reply += "TESTS=" + Digits(static_cast<int>(record.tests.size()), 2) + "\r\n";
        reply += field("COMPANY", 0) + field("STATION", 1) + field("CIRCUIT", 2) + field("MFR", 3) +
                 field("MODEL", 4) + field("SN", 5) + field("OPERATOR", 7) + field("COMMENTS", 6);
    }
    if (reply.empty()) reply = "\r\n";
    return reply + "DONE";
}

std::string RecordReply(const MemoryRecord& record) {
    std::string preamble(1, static_cast<char>(record.tests.size()));
    preamble += Digits(record.number, 3) + record.date + " " + record.time;
    std::string digits = HexOf(Padded(preamble, kHeaderOffset) + Packed(record.header));
    for (const RecordImage& image : record.tests)
        digits += EncodeRecordImage(image) + kFilling;
    digits.resize((digits.size() + kFieldDigits - 1) / kFieldDigits * kFieldDigits, 'F');

    std::string reply;
    for (std::size_t at = 0; at < digits.size(); at += kFieldDigits) {
        reply += digits.substr(at, kFieldDigits) + "\r\n";
    }
    return reply + "DONE\r\n";
}

}  // namespace davo::instrument
