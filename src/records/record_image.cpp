#include "records/record_image.h"

#include <algorithm>

#include "common/text.h"
#include "link/hex_text.h"

namespace davo {

namespace {

// Byte offsets into the image.
constexpr std::size_t kKneeVoltageAt = 128;
constexpr std::size_t kKneeCurrentAt = 130;
constexpr std::size_t kExcitationCurrentAt = 132;
constexpr std::size_t kExcitationVoltageAt = 134;
constexpr std::size_t kMeasuredRatioAt = 136;
constexpr std::size_t kPhaseAngleAt = 140;
constexpr std::size_t kNameplateHAt = 142;
constexpr std::size_t kNameplateXAt = 144;
constexpr std::size_t kKneeTypeAt = 146;
constexpr std::size_t kCurrentRangeAt = 147;
constexpr std::size_t kSlotBytes = 4;

constexpr double kVoltsPerCount = 0.1;

int ByteAt(std::string_view hexText, std::size_t offset) {
    return ParseHexText(Middle(hexText, 2 * offset, 2));
}

int WordAt(std::string_view hexText, std::size_t offset) {
    return ByteAt(hexText, offset) + 256 * ByteAt(hexText, offset + 1);
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
    const double scale = CurrentScale();
    std::vector<DataPoint> points;
    points.reserve(kPointSlots);
    for (const Slot& slot : slots) {
        const DataPoint point{slot.current * scale, slot.voltage * kVoltsPerCount};
        if (point.current > 0 && point.voltage > 0) points.push_back(point);
    }
    return points;
}

RecordImage DecodeRecordImage(std::string_view hexText) {
    RecordImage image;
    std::size_t offset = 0;
    for (RecordImage::Slot& slot : image.slots) {
        slot.current = WordAt(hexText, offset);
        slot.voltage = WordAt(hexText, offset + 2);
        offset += kSlotBytes;
    }
    image.kneeVoltage = WordAt(hexText, kKneeVoltageAt);
    image.kneeCurrent = WordAt(hexText, kKneeCurrentAt);
    image.excitationCurrent = WordAt(hexText, kExcitationCurrentAt);
    image.excitationVoltage = WordAt(hexText, kExcitationVoltageAt);
    image.measuredRatio = WordAt(hexText, kMeasuredRatioAt) +
                          std::int64_t{65536} * WordAt(hexText, kMeasuredRatioAt + 2);
    image.phaseAngle = WordAt(hexText, kPhaseAngleAt);
    image.nameplateH = WordAt(hexText, kNameplateHAt);
    image.nameplateX = WordAt(hexText, kNameplateXAt);
    image.kneeTypeCode = ByteAt(hexText, kKneeTypeAt);
    image.currentRangeCode = ByteAt(hexText, kCurrentRangeAt);
    return image;
}

std::string EncodeRecordImage(const RecordImage& image) {
    std::string digits;
    digits.reserve(kImageDigits);
    for (const RecordImage::Slot& slot : image.slots) {
        PutBytes(digits, slot.current, 2);
        PutBytes(digits, slot.voltage, 2);
    }
    PutBytes(digits, image.kneeVoltage, 2);
    PutBytes(digits, image.kneeCurrent, 2);
    PutBytes(digits, image.excitationCurrent, 2);
    PutBytes(digits, image.excitationVoltage, 2);
    PutBytes(digits, image.measuredRatio, 4);
    PutBytes(digits, image.phaseAngle, 2);
    PutBytes(digits, image.nameplateH, 2);
    PutBytes(digits, image.nameplateX, 2);
    PutBytes(digits, image.kneeTypeCode, 1);
    PutBytes(digits, image.currentRangeCode, 1);
    return digits;
}

std::string DescribeRecordDamage(std::string_view rawRecord) {
    constexpr std::string_view kStart = "DATA";
    constexpr std::string_view kStop = "DONE";
    const std::size_t start = rawRecord.find(kStart);
    if (start == std::string_view::npos) return "no DATA";
    const std::size_t from = start + kStart.size();
    const std::size_t stop = rawRecord.find(kStop, from);
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
