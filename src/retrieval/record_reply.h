// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace davo {

// A record has at most so many tests; more are not converted.
inline constexpr int kMostRecordTests = 100;

// The header lines of the record file for a directory entry: TEST NUMBER, DATE, TIME, # OF SHOTS
// and the eight fields, each as the entry holds it (20 characters), lines ended by CR LF. testName
// is the name under which the file is written. A key that the entry lacks gives an empty value.
std::string RecordHeaderLines(std::string_view entry, std::string_view testName);

// The reply to "R" as record file lines.
struct ConvertedRecord {
    std::string lines;          // of all tests that came, lines ended by CR LF
    int tests = 0;              // how many the reply says, at most kMostRecordTests
    int converted = 0;          // how many are in lines; fewer when fields are missing
    std::vector<int> doubtful;  // of these (from 1), those whose values may be wrong
    // Fewer fields than the tests need. Where they are lost cannot be seen when the others are
    // whole: at the end, or the tests behind the gap have the values of others.
    bool fieldsMissing = false;
};

// reply holds hexadecimal fields separated by blanks, commas or line ends, up to a field "DONE".
// Twelve fields are before the tests, the first begins with their number. A test's image is the
// 16 characters carried over from the test before and nine fields; an odd test takes the first 16
// characters of a tenth and carries its last 16. Fields are taken as they come: the hexadecimal
// text parser decides what a character that is no digit counts. An empty reply has no tests.
//
// A field is whole when it is 32 hexadecimal digits. A test with a field that is not whole is
// doubtful; so are all behind it when the reply has fewer fields than its tests need, and all tests
// when it has more or when a field before them is not whole.
ConvertedRecord ConvertRecordReply(std::string_view reply);

// The length in bytes of a reply of tests tests, for a progress bar: fields of 32 digits, one a
// line, and the closing line.
std::size_t UsualReplyBytes(int tests);

}  // namespace davo
