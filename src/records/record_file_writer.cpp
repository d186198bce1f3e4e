// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_file_writer.h"

#include <algorithm>
#include <optional>

#include "common/files.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/record_lines.h"

namespace davo {

namespace {

constexpr int kCurrentDecimals = 4;
constexpr int kVoltageDecimals = 1;
constexpr int kPhaseDecimals = 1;
constexpr double kDegreesPerCount = 0.1;

void PutHeader(std::string& file, const HeaderTable& header, const RecordFileContent& content) {
    PutRecordLine(file, kTestNumberKey, content.testNumber);
    PutRecordLine(file, kDateKey, header.headerFields.at(kHeaderDate));
    PutRecordLine(file, kTimeKey, header.headerFields.at(kHeaderTime));
    PutRecordLine(file, kShotsKey, Picture(content.shotCount, "00"));
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        file += kHeaderKeys.at(static_cast<std::size_t>(i));
        PutRecordLine(file, ":", header.Field(i));
    }
}

TestRecord RecordOf(std::size_t number, const CapturedShot& shot, const RecordImage& image) {
    TestRecord record;
    record.recordNumber = std::to_string(number);
    record.kneeVoltage = ShortestText(image.kneeVoltage, kVoltageDecimals) + " VOLTS";
    record.kneeCurrent =
        ShortestText(image.CurrentSteps(image.kneeCurrent), kCurrentDecimals) + " AMPS";
    record.excitationCurrent = FixedText(RoundedToTens(image.CurrentSteps(image.excitationCurrent)),
                                         kCurrentDecimals - 1) +
                               " AMPS";
    record.excitationVoltage = ShortestText(image.excitationVoltage, kVoltageDecimals) + " VOLTS";
    record.measuredRatio = shot.measuredRatio;
    // The product, a hair off the decimal value here and there, decides the polarity.
    record.polarity = PolarityOfPhase(image.phaseAngle * kDegreesPerCount);
    record.phaseAngle = FixedText(image.phaseAngle, kPhaseDecimals) + " DEG";
    record.nameplateRatio = shot.nameplateRatio;
    record.percentError = shot.percentError;
    record.kneePointType = KneePointTypeText(image.kneeTypeCode);
    return record;
}

void PutShot(std::string& file, std::size_t number, const CapturedShot& shot) {
    const RecordImage image = DecodeRecordImage(shot.hexText);
    const TestRecord record = RecordOf(number, shot, image);
    PutRecordLine(file, kRecordKey, record.recordNumber);
    PutPointLines(file, image);
    for (const auto& [key, text] : kResultLines)
        PutRecordLine(file, key, record.*text);
}

}  // namespace

TestRecord RecordOfShot(std::size_t number, const CapturedShot& shot) {
    const RecordImage image = DecodeRecordImage(shot.hexText);
    TestRecord record = RecordOf(number, shot, image);
    record.points = image.Points();
    std::reverse(record.points.begin(), record.points.end());
    record.dataPointCount = static_cast<std::int16_t>(record.points.size());
    return record;
}

std::string ConvertCapture(std::string_view capture, const HeaderTable& header,
                           const RecordFileContent& content) {
    const std::vector<CapturedShot> shots = CapturedShots(capture);
    std::string file;
    constexpr std::size_t kUsualShotBytes = 1500;
    file.reserve(shots.size() * kUsualShotBytes + content.testNotes.size() + kUsualShotBytes);
    std::size_t number = 0;
    for (const CapturedShot& shot : shots) {
        ++number;
        if (number == 1) PutHeader(file, header, content);
        PutShot(file, number, shot);
        // A shotCount of zero or below is never reached: every shot is converted.
        if (static_cast<std::int64_t>(number) == content.shotCount) break;
    }
    if (!content.testNotes.empty()) {
        PutLine(file, kNotesKey);
        PutLine(file, content.testNotes);
    }
    return file;
}

void WriteTestRecordFile(const QString& fileName, const QString& dataPath,
                         const QString& capturePath, const HeaderTable& header,
                         std::int16_t shotCount, const std::string& testNotes) {
    constexpr int kExtensionLength = 4;  // ".txt"
    const std::optional<std::string> testNumber =
        ToPage(fileName.chopped(std::min<qsizetype>(kExtensionLength, fileName.size())));
    if (!testNumber) throw RunTimeError(ErrorNumber::BadFileNameOrNumber, fileName.toStdString());
    const RecordFileContent content{*testNumber, shotCount, testNotes};
    ReplaceFile(dataPath + fileName, ConvertCapture(ReadWholeFile(capturePath), header, content));
}

}  // namespace davo
