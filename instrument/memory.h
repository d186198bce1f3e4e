// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "records/record_image.h"

namespace davo::instrument {

inline constexpr int kHeaderSlots = 10;
inline constexpr std::size_t kHeaderSlotSize = 160;  // eight fields of 20
inline constexpr std::size_t kHeaderMemorySize = kHeaderSlots * kHeaderSlotSize;
inline constexpr char kErased = '\xFF';

// One test record in the instrument's memory.
struct MemoryRecord {
    int number = 1;    // 1 to 999
    std::string date;  // "MM/DD/YY"
    std::string time;  // "hh:mm"
    std::array<std::string, 8>
        header;  // company, station, circuit, mfr, model, sn, comments, operator
    std::vector<RecordImage> tests;  // 1 to 100
};

// count records (0 to 999) numbered from 1, each with 1 to 6 tests, every tenth with many (up to
// 100); several of them share a date.
std::vector<MemoryRecord> MakeMemory(int count, std::uint64_t seed);

// Header memory with slots 1, 2 and 4 filled and the others erased: kHeaderMemorySize characters.
std::string MakeHeaderMemory();

// The reply to "d": per record "#" and its three-digit number, date and time, test count and the
// eight header fields, each on a line; then CR LF "DONE". Nothing follows, so that no stray line
// end can be taken for the next reply. A count of 100 does not fit its two columns and reads "00".
std::string DirectoryReply(const std::vector<MemoryRecord>& memory);

// The reply to "R": fields of 32 digits, one a line, then "DONE". Twelve fields of preamble (the
// first begins with the test count), then 304 digits for each test: its image and eight digits of
// filling; the last line is filled up.
std::string RecordReply(const MemoryRecord& record);

}  // namespace davo::instrument
