// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_file_writer.h"

#include <algorithm>
#include <optional>

#include "common/files.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/capture_file.h"
#include "records/count_text.h"
#include "records/record_image.h"
#include "records/record_lines.h"

namespace davo {

namespace {

constexpr int kCurrentDecimals = 4;
constexpr int kVoltageDecimals = 1;
constexpr int kPhaseDecimals = 1;
constexpr double kDegreesPerCount = 0.1;

void PutHeader(std::string& file, const HeaderTable& header, const RecordFileContent& content) {
    PutRecordLine(file, "TEST NUMBER: ", content.testNumber);
    PutRecordLine(file, "DATE: ", header.headerFields.at(kHeaderDate));
    PutRecordLine(file, "TIME: ", header.headerFields.at(kHeaderTime));
    PutRecordLine(file, "# OF SHOTS: ", Picture(content.shotCount, "00"));
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        file += kHeaderKeys.at(static_cast<std::size_t>(i));
        PutRecordLine(file, ": ", header.Field(i));
    }
}

void PutShot(std::string& file, std::size_t number, const CapturedShot& shot) {
    const RecordImage image = DecodeRecordImage(shot.hexText);
    PutRecordLine(file, "REC NUMBER: ", std::to_string(number));
    PutPointLines(file, image);
    PutRecordLine(file, "KNEE VOLTAGE: ", ShortestText(image.kneeVoltage, kVoltageDecimals),
                  " VOLTS");
    PutRecordLine(file, "KNEE CURRENT: ",
                  ShortestText(image.CurrentSteps(image.kneeCurrent), kCurrentDecimals), " AMPS");
    PutRecordLine(
        file, "EXCITATION CUR: ",
        FixedText(RoundedToTens(image.CurrentSteps(image.excitationCurrent)), kCurrentDecimals - 1),
        " AMPS");
    PutRecordLine(file, "EXCITATION VTG: ", ShortestText(image.excitationVoltage, kVoltageDecimals),
                  " VOLTS");
    PutRecordLine(file, "MEASURED RATIO: ", shot.measuredRatio);
    // The product, a hair off the decimal value here and there, decides the polarity.
    PutRecordLine(file, "POLARITY: ", PolarityOfPhase(image.phaseAngle * kDegreesPerCount));
    PutRecordLine(file, "PHASE ANGLE: ", FixedText(image.phaseAngle, kPhaseDecimals), " DEG");
    PutRecordLine(file, "NAMEPLATE RATIO: ", shot.nameplateRatio);
    PutRecordLine(file, "PERCENT ERROR: ", shot.percentError);
    PutRecordLine(file, "KNEE POINT TYPE: ", KneePointTypeText(image.kneeTypeCode));
}

}  // namespace

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
        PutRecordLine(file, "NOTES:", "");
        PutRecordLine(file, content.testNotes, "");
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
