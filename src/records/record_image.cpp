// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_image.h"

#include <algorithm>
#include <array>

#include "common/numbers.h"

namespace davo {

namespace {

constexpr double kCountsPerVolt = 10;
constexpr double kStepsPerAmpere = 10000;

// Takes the fields of an image in their order.
class ImageReader {
  public:
    explicit ImageReader(std::string_view hexText) : text_(hexText) {}

    // Of so many bytes, least significant first; each is what ParseHexText makes of two digits. A
    // digit left alone is the number, and nothing is zero.
    std::int64_t Number(int bytes) {
        std::int64_t number = 0;
        for (std::int64_t weight = 1; bytes > 0; --bytes, weight *= 256) {
            const std::string_view digits = text_.substr(0, 2);
            text_.remove_prefix(digits.size());
            number += weight * ParseHexText(digits);
        }
        return number;
    }

  private:
    std::string_view text_;
};

// The fields of an image in their order, each with its number of bytes.
template <class Image, class Visit>
void ForEachField(Image& image, const Visit& visit) {
    for (auto& slot : image.slots) {
        visit(slot.current, 2);
        visit(slot.voltage, 2);
    }
    for (auto* word : {&image.kneeVoltage, &image.kneeCurrent, &image.excitationCurrent,
                       &image.excitationVoltage}) {
        visit(*word, 2);
    }
    visit(image.measuredRatio, 4);
    for (auto* word : {&image.phaseAngle, &image.nameplateH, &image.nameplateX})
        visit(*word, 2);
    visit(image.kneeTypeCode, 1);
    visit(image.currentRangeCode, 1);
}

// value's low bytes, least significant first, as digits.
void PutBytes(std::string& digits, std::int64_t value, int bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    for (int i = 0; i < bytes; ++i) {
        const auto byte = static_cast<std::size_t>((value >> (8 * i)) & 0xFF);
        digits.push_back(kDigits[byte / 16]);
        digits.push_back(kDigits[byte % 16]);
    }
}

bool IsHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
}

}  // namespace

std::vector<DataPoint> RecordImage::Points() const {
    std::vector<DataPoint> points;
    points.reserve(kPointSlots);
    for (const Slot& slot : slots) {
        if (slot.current <= 0 || slot.voltage <= 0) continue;
        points.push_back(
            {CurrentSteps(slot.current) / kStepsPerAmpere, slot.voltage / kCountsPerVolt});
    }
    return points;
}

RecordImage DecodeRecordImage(std::string_view hexText) {
    RecordImage image;
    ImageReader reader(hexText);
    ForEachField(image, [&reader](auto& field, int bytes) {
        field = static_cast<std::decay_t<decltype(field)>>(reader.Number(bytes));
    });
    return image;
}

std::string EncodeRecordImage(const RecordImage& image) {
    std::string digits;
    digits.reserve(kImageDigits);
    ForEachField(image,
                 [&digits](std::int64_t field, int bytes) { PutBytes(digits, field, bytes); });
    return digits;
}

std::string DescribeRecordDamage(std::string_view rawRecord) {
    const std::size_t start = rawRecord.find(kRecordStart);
    if (start == std::string_view::npos) return "no DATA";
    const std::size_t from = start + kRecordStart.size();
    const std::size_t stop = rawRecord.find(kRecordEnd, from);
    if (stop == std::string_view::npos) return "no DONE";

    const std::string text = RemoveBlanksAndLineEnds(rawRecord.substr(from, stop - from));
    const auto digits =
        static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsHexDigit));
    const std::size_t others = text.size() - digits;
    std::string damage;
    if (digits != kImageDigits) {
        damage = std::to_string(digits) + " of " + std::to_string(kImageDigits) + " digits";
    }
    if (others > 0) {
        if (!damage.empty()) damage += ", ";
        damage += others == 1 ? "1 character that is no digit"
                              : std::to_string(others) + " characters that are no digits";
    }
    return damage;
}

std::string PolarityOfPhase(double degrees) {
    if ((degrees >= 0 && degrees <= 90) || (degrees >= 270 && degrees <= 360)) return "IN PHASE";
    // The gaps next to 90 and 270 belong to neither verdict.
    if (degrees >= 90.1 && degrees <= 269.9) return "OUT OF PHASE";
    return "N/A";
}

std::string KneePointTypeText(int kneeTypeCode) {
    if (kneeTypeCode == 1) return "IEEE 30 DEGREE TANGENT";
    if (kneeTypeCode == 2) return "IEEE 45 DEGREE TANGENT";
    return "ASA 10%VTG -> 50%CUR";
}

}  // namespace davo
