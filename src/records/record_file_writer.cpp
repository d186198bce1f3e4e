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

namespace davo {

namespace {

constexpr int kCurrentDecimals = 4;
constexpr int kVoltageDecimals = 1;
constexpr int kPhaseDecimals = 1;
constexpr double kDegreesPerCount = 0.1;

void PutLine(std::string& file, std::string_view key, std::string_view value,
             std::string_view unit = {}) {
    file += key;
    file += value;
    file += unit;
    file += kLineEnd;
}

void PutHeader(std::string& file, const HeaderTable& header, const RecordFileContent& content) {
    PutLine(file, "TEST NUMBER: ", content.testNumber);
    PutLine(file, "DATE: ", header.headerFields.at(kHeaderDate));
    PutLine(file, "TIME: ", header.headerFields.at(kHeaderTime));
    PutLine(file, "# OF SHOTS: ", Picture(content.shotCount, "00"));
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        file += kHeaderKeys.at(static_cast<std::size_t>(i));
        PutLine(file, ": ", header.Field(i));
    }
}

// The last point comes first, so the lines are made from the last one of the file up.
void PutPoints(std::string& file, const RecordImage& image) {
    BackwardText lines;
    int points = 0;
    for (const auto& [current, voltage] : image.slots) {
        if (current <= 0 || voltage <= 0) continue;
        ++points;
        lines.Put(kLineEnd);
        lines.PutFixed(voltage, kVoltageDecimals);
        lines.Put("VOLTAGE: ");
        lines.PutFixed(image.CurrentSteps(current), kCurrentDecimals);
        lines.Put("CURRENT: ");
    }
    file += lines.Text();
    PutLine(file, "NUMBER OF DATA POINTS: ", std::to_string(points));
}

void PutShot(std::string& file, std::size_t number, const CapturedShot& shot) {
    const RecordImage image = DecodeRecordImage(shot.hexText);
    PutLine(file, "REC NUMBER: ", std::to_string(number));
    PutPoints(file, image);
    PutLine(file, "KNEE VOLTAGE: ", ShortestText(image.kneeVoltage, kVoltageDecimals), " VOLTS");
    PutLine(file,
            "KNEE CURRENT: ", ShortestText(image.CurrentSteps(image.kneeCurrent), kCurrentDecimals),
            " AMPS");
    PutLine(
        file, "EXCITATION CUR: ",
        FixedText(RoundedToTens(image.CurrentSteps(image.excitationCurrent)), kCurrentDecimals - 1),
        " AMPS");
    PutLine(file, "EXCITATION VTG: ", ShortestText(image.excitationVoltage, kVoltageDecimals),
            " VOLTS");
    PutLine(file, "MEASURED RATIO: ", shot.measuredRatio);
    // The product, a hair off the decimal value here and there, decides the polarity.
    PutLine(file, "POLARITY: ", PolarityOfPhase(image.phaseAngle * kDegreesPerCount));
    PutLine(file, "PHASE ANGLE: ", FixedText(image.phaseAngle, kPhaseDecimals), " DEG");
    PutLine(file, "NAMEPLATE RATIO: ", shot.nameplateRatio);
    PutLine(file, "PERCENT ERROR: ", shot.percentError);
    PutLine(file, "KNEE POINT TYPE: ", KneePointTypeText(image.kneeTypeCode));
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
        PutLine(file, "NOTES:", "");
        PutLine(file, content.testNotes, "");
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
