// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/record_reply.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "common/hex_text.h"
#include "common/numbers.h"
#include "common/record_marks.h"
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
constexpr int kPreambleFields = 12;
constexpr int kFieldsOfTest = 9;

constexpr double kVoltsPerCount = 0.1;
constexpr double kDegreesPerCount = 0.1;
constexpr double kRatioPerCount = 0.0001;
constexpr double kNameplatePerCount = 0.1;
constexpr int kNoNameplate = 65535;

class ReplyFields {
  public:
    explicit ReplyFields(std::string_view reply) : rest_(reply) {}

    // Nothing at the end of the reply.
    std::optional<std::string_view> Next() {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(kSeparators), rest_.size()));
        const std::string_view field = rest_.substr(0, rest_.find_first_of(kSeparators));
        if (field.empty() || field == kRecordEnd) return std::nullopt;
        rest_.remove_prefix(field.size());
        return field;
    }

  private:
    std::string_view rest_;
};

// The digits of the tests, one after the other.
class TestBlocks {
  public:
    explicit TestBlocks(ReplyFields& fields) : fields_(fields) {}

    // The next test's; nothing when a field of it is missing.
    std::optional<std::string> Next() {
        std::string block = std::move(carry_);
        carry_.clear();
        for (int i = 0; i < kFieldsOfTest; ++i) {
            const auto field = fields_.Next();
            if (!field) return std::nullopt;
            block += *field;
        }
        odd_ = !odd_;
        if (!odd_) return block;
        const auto shared = fields_.Next();
        if (!shared) return std::nullopt;
        block += shared->substr(0, kHalfField);
        carry_ = shared->substr(shared->size() - std::min(shared->size(), kHalfField));
        return block;
    }

  private:
    ReplyFields& fields_;
    std::string carry_;
    bool odd_ = false;  // whether the test before was an odd one
};

// Whether a block has its digits and nothing else; those behind the image are filling.
bool IsWhole(std::string_view block) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    constexpr std::size_t kMost = kFieldsOfTest * kFieldDigits + kHalfField;
    return block.size() >= kImageDigits && block.size() <= kMost &&
           block.find_first_not_of(kDigits) >= kImageDigits;
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

// The values of an entry's keys, asked in the order in which the entry has them, so that a key's
// name inside an earlier value is passed over.
class EntryValues {
  public:
    explicit EntryValues(std::string_view entry) : entry_(entry) {}

    std::string_view After(std::string_view key, std::size_t width) {
        std::size_t found = entry_.find(key, at_);
        // A short value before it: the key stands closer.
        if (found == std::string_view::npos) found = entry_.find(key);
        if (found == std::string_view::npos) return {};
        at_ = std::min(found + key.size() + width, entry_.size());
        return Middle(entry_, found + key.size(), width);
    }

  private:
    std::string_view entry_;
    std::size_t at_ = 0;
};

}  // namespace

std::string RecordHeaderLines(std::string_view entry, std::string_view testName) {
    constexpr std::size_t kWidth = 20;
    const std::size_t mark = std::min(entry.find('!'), entry.size());
    std::string lines;
    PutRecordLine(lines, kTestNumberKey, testName);
    PutRecordLine(lines, kDateKey, Middle(entry, mark + 1, 8));
    PutRecordLine(lines, kTimeKey, Middle(entry, mark + 10, 5));
    EntryValues values(entry.substr(mark));
    PutRecordLine(lines, kShotsKey, values.After("TESTS=", 2));
    // An entry has the operator before the comments.
    constexpr std::array<std::size_t, kHeaderFieldCount> kOrder = {0, 1, 2, 3, 4, 5, 7, 6};
    std::array<std::string_view, kHeaderFieldCount> fields;
    for (const std::size_t i : kOrder)
        fields.at(i) = values.After(std::string(kHeaderKeys.at(i)) + "=", kWidth);
    for (std::size_t i = 0; i < fields.size(); ++i)
        PutRecordLine(lines, std::string(kHeaderKeys.at(i)) + ":", fields.at(i));
    return lines;
}

ConvertedRecord ConvertRecordReply(std::string_view reply) {
    ConvertedRecord record;
    ReplyFields fields(reply);
    for (int i = 0; i < kPreambleFields; ++i) {
        const auto field = fields.Next();
        if (!field) return record;
        if (i == 0)
            record.tests = std::clamp(ParseHexText(field->substr(0, 2)), 0, kMostRecordTests);
    }
    TestBlocks blocks(fields);
    for (int test = 1; test <= record.tests; ++test) {
        const auto block = blocks.Next();
        if (!block) break;
        PutTest(record.lines, test, *block);
        record.converted = test;
        if (!IsWhole(*block)) record.doubtful.push_back(test);
    }
    return record;
}

std::size_t UsualReplyBytes(int tests) {
    // Two tests share a field: nineteen for two.
    const int fields = kPreambleFields + (19 * tests + 1) / 2;
    const std::size_t line = kFieldDigits + kLineEnd.size();
    return static_cast<std::size_t>(fields) * line + kRecordEnd.size() + kLineEnd.size();
}

}  // namespace davo
