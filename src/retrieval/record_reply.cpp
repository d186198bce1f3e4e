// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/record_reply.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "common/numbers.h"
#include "common/text.h"
#include "records/directory_entry.h"
#include "records/record_image.h"
#include "records/record_keys.h"
#include "records/record_lines.h"

namespace davo {

namespace {

constexpr std::string_view kSeparators = ", \t\r\n";
constexpr std::size_t kFieldDigits = 32;
constexpr std::size_t kHalfField = 16;
constexpr std::size_t kPreambleFields = 12;

constexpr double kVoltsPerCount = 0.1;
constexpr double kDegreesPerCount = 0.1;
constexpr double kRatioPerCount = 0.0001;
constexpr double kNameplatePerCount = 0.1;
constexpr int kNoNameplate = 65535;

bool IsWhole(std::string_view field) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    return field.size() == kFieldDigits &&
           field.find_first_not_of(kDigits) == std::string_view::npos;
}

std::vector<std::string_view> FieldsOf(std::string_view reply) {
    std::vector<std::string_view> fields;
    while (true) {
        reply.remove_prefix(std::min(reply.find_first_not_of(kSeparators), reply.size()));
        const std::string_view field = reply.substr(0, reply.find_first_of(kSeparators));
        if (field.empty() || field == kRecordEnd) return fields;
        fields.push_back(field);
        reply.remove_prefix(field.size());
    }
}

// How many fields a reply of tests tests has. Two tests share a field: nineteen for two.
std::size_t FieldsFor(int tests) {
    return kPreambleFields + (static_cast<std::size_t>(tests) * 19 + 1) / 2;
}

// The fields of a test, its number counted from 1: the first one, and the one behind its last. A
// field that two tests share belongs to both.
struct FieldRange {
    explicit FieldRange(int test)
        : first(FieldsFor(test - 1) - (test % 2 == 0 ? 1 : 0)), end(FieldsFor(test)) {}
    std::size_t first;
    std::size_t end;
};

// The digits of a test.
std::string BlockOf(const std::vector<std::string_view>& fields, int test) {
    const auto [first, end] = FieldRange(test);
    std::string block;
    for (std::size_t i = first; i < end; ++i) {
        const std::string_view field = fields[i];
        if (test % 2 == 0 && i == first) {
            block += field.substr(field.size() - std::min(field.size(), kHalfField));
        } else if (test % 2 != 0 && i + 1 == end) {
            block += field.substr(0, kHalfField);
        } else {
            block += field;
        }
    }
    return block;
}

void PutNameplate(std::string& lines, const RecordImage& image, double measuredRatio) {
    const auto none = [](int word) { return word == 0 || word == kNoNameplate; };
    if (none(image.nameplateH) || none(image.nameplateX)) {
        PutRecordLine(lines, kNameplateRatioKey, "N/A");
        PutRecordLine(lines, kPercentErrorKey, "N/A");
        return;
    }
    const double ratio = image.nameplateH / (image.nameplateX * kNameplatePerCount);
    const double percent = std::fabs(measuredRatio - ratio) / ratio * 100;
    PutRecordLine(lines, kNameplateRatioKey, Picture(ratio, "##0.000"));
    PutRecordLine(lines, kPercentErrorKey, Picture(percent, "##0.00"), " %");
}

void PutTest(std::string& lines, int number, std::string_view block) {
    const RecordImage image = DecodeRecordImage(block);
    const double scale = image.CurrentScale();
    const auto put = [&lines](std::string_view key, double value, const char* unit) {
        PutRecordLine(lines, key, Picture(value, "###0.000"), unit);
    };
    PutRecordLine(lines, kRecordKey, SignedText(number));
    PutPointLines(lines, image);
    put(kKneeVoltageKey, image.kneeVoltage * kVoltsPerCount, " VOLTS");
    put(kKneeCurrentKey, image.kneeCurrent * scale, " AMPS");
    put(kExcitationCurrentKey, image.excitationCurrent * scale, " AMPS");
    put(kExcitationVoltageKey, image.excitationVoltage * kVoltsPerCount, " VOLTS");
    const double measuredRatio = static_cast<double>(image.measuredRatio) * kRatioPerCount;
    PutRecordLine(lines, kMeasuredRatioKey, Picture(measuredRatio, "##0.000"));
    const double phase = image.phaseAngle * kDegreesPerCount;
    PutRecordLine(lines, kPolarityKey, PolarityOfPhase(phase));
    PutRecordLine(lines, kPhaseAngleKey, Picture(phase, "##0.0"), " DEG");
    PutNameplate(lines, image, measuredRatio);
    PutRecordLine(lines, kKneeTypeKey, KneePointTypeText(image.kneeTypeCode));
}

}  // namespace

std::string RecordHeaderLines(std::string_view entry, std::string_view testName) {
    constexpr std::size_t kWidth = 20;
    const std::size_t mark = std::min(entry.find('!'), entry.size());
    std::string lines;
    PutRecordLine(lines, kTestNumberKey, testName);
    PutRecordLine(lines, kDateKey, Middle(entry, mark + 1, 8));
    PutRecordLine(lines, kTimeKey, Middle(entry, mark + 10, 5));
    // The keys are asked in the order in which the entry has them, so that a key's name inside an
    // earlier value is passed over; behind a short value the key is closer.
    std::size_t at = mark;
    const auto after = [&](std::string_view key, std::size_t width) {
        std::size_t found = entry.find(key, at);
        if (found == std::string_view::npos) found = entry.find(key, mark);
        if (found == std::string_view::npos) return std::string_view();
        at = std::min(found + key.size() + width, entry.size());
        return Middle(entry, found + key.size(), width);
    };
    PutRecordLine(lines, kShotsKey, after("TESTS=", 2));
    // An entry has the operator before the comments.
    constexpr std::array<std::size_t, kHeaderFieldCount> kOrder = {0, 1, 2, 3, 4, 5, 7, 6};
    std::array<std::string_view, kHeaderFieldCount> fields;
    for (const std::size_t i : kOrder)
        fields.at(i) = after(std::string(kHeaderKeys.at(i)) + "=", kWidth);
    for (std::size_t i = 0; i < fields.size(); ++i)
        PutRecordLine(lines, std::string(kHeaderKeys.at(i)) + ":", fields.at(i));
    return lines;
}

ConvertedRecord ConvertRecordReply(std::string_view reply) {
    ConvertedRecord record;
    const std::vector<std::string_view> fields = FieldsOf(reply);
    if (fields.empty()) return record;
    const int said = ParseHexText(fields.front().substr(0, 2));
    record.tests = std::clamp(said, 0, kMostRecordTests);
    const std::size_t needed = FieldsFor(std::max(said, 0));
    record.fieldsMissing = fields.size() < needed;
    const auto damaged = [&fields](std::size_t first, std::size_t end) {
        const auto begin = fields.begin();
        return !std::all_of(begin + static_cast<std::ptrdiff_t>(first),
                            begin + static_cast<std::ptrdiff_t>(end), IsWhole);
    };
    // A field too many or too few has moved those behind it. One too many may be whole, and then
    // nothing shows where it is.
    bool doubtful = fields.size() > needed || damaged(0, std::min(kPreambleFields, fields.size()));
    for (int test = 1; test <= record.tests; ++test) {
        const auto [first, end] = FieldRange(test);
        if (end > fields.size()) break;
        PutTest(record.lines, test, BlockOf(fields, test));
        record.converted = test;
        const bool here = damaged(first, end);
        if (doubtful || here) record.doubtful.push_back(test);
        doubtful = doubtful || (here && record.fieldsMissing);
    }
    return record;
}

std::size_t UsualReplyBytes(int tests) {
    const std::size_t line = kFieldDigits + kLineEnd.size();
    return FieldsFor(tests) * line + kRecordEnd.size() + kLineEnd.size();
}

}  // namespace davo
