// SPDX-License-Identifier: GPL-3.0-or-later
// Converting the capture file of a session of 100 shots into its record file, against reading and
// writing the same numbers of bytes, in the same run; without and with the flush to the disk.

#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "common/files.h"
#include "records/capture_file.h"
#include "records/record_file.h"
#include "records/record_file_writer.h"

namespace davo {
namespace {

constexpr int kShots = 100;

std::string SessionOf100Shots() {
    std::string capture;
    for (int shot = 0; shot < kShots; ++shot) {
        RecordImage image;
        for (int slot = 0; slot < kPointSlots; ++slot) {
            image.slots[slot] = {37 + 61 * slot * (1 + shot % 7), 211 + 97 * slot + shot};
        }
        image.kneeVoltage = 1523 + shot;
        image.kneeCurrent = 124 + shot;
        image.excitationCurrent = 1235 + shot;
        image.excitationVoltage = 2001 + shot;
        image.phaseAngle = 15 + shot;
        image.kneeTypeCode = 1;
        capture += "DATA" + EncodeRecordImage(image) +
                   "\r\nDONE\r\nMEASURED RATIO: 241.2\r\nNAMEPLATE RATIO: 240 (1200:5)\r\n"
                   "PERCENT ERROR: 0.50%\r\n\r\n";
    }
    return capture;
}

void WriteBare(const QString& path, const std::string& bytes) {
    QFile::remove(path);
    QFile file(path);
    const auto size = static_cast<qint64>(bytes.size());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes.data(), size) != size) std::abort();
}

double MicrosecondsOf(const std::function<void()>& act) {
    const auto start = std::chrono::steady_clock::now();
    act();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
        .count();
}

double MedianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Both take turns, so that whatever else the machine does meets both alike.
void Compare(const char* name, int rounds, const std::function<void()>& act,
             const std::function<void()>& bare) {
    std::vector<double> acts;
    std::vector<double> bares;
    for (int round = 0; round < rounds; ++round) {
        acts.push_back(MicrosecondsOf(act));
        bares.push_back(MicrosecondsOf(bare));
    }
    std::printf("%-38s %9.1f us, bare %9.1f us, ratio %.2f\n", name, MedianOf(acts),
                MedianOf(bares), MedianOf(acts) / MedianOf(bares));
}

void Run(const QString& folder) {
    const QString capturePath = folder + QLatin1String(kCaptureFileName);
    const QString recordPath = folder + QStringLiteral("T1.txt");
    const QString barePath = folder + QStringLiteral("bare");
    WriteBare(capturePath, SessionOf100Shots());
    const HeaderTable header;
    const auto convert = [&] {
        return ConvertCapture(ReadWholeFile(capturePath), header, {"T1", kShots, "notes"});
    };
    const std::string record = convert();
    if (ParseTestRecordFile(record).records.size() != kShots) std::abort();
    std::printf("%d shots: %zu bytes into %zu bytes\n", kShots, ReadWholeFile(capturePath).size(),
                record.size());

    const auto readBare = [&] {
        if (ReadWholeFile(capturePath).empty()) std::abort();
    };
    Compare(
        "read, convert, write", 1001, [&] { WriteBare(recordPath, convert()); },
        [&] {
            readBare();
            WriteBare(barePath, record);
        });
    Compare(
        "read, convert, replace with the flush", 51,
        [&] {
            WriteTestRecordFile(QStringLiteral("T1.txt"), folder, capturePath, header, kShots,
                                "notes");
        },
        [&] {
            readBare();
            ReplaceFile(barePath, record);
        });
    std::printf("conversion alone %.1f us\n", [&] {
        constexpr int kRounds = 501;
        std::vector<double> times;
        times.reserve(kRounds);
        const std::string capture = ReadWholeFile(capturePath);
        for (int round = 0; round < kRounds; ++round) {
            times.push_back(MicrosecondsOf([&] {
                if (ConvertCapture(capture, header, {"T1", kShots, ""}).empty()) std::abort();
            }));
        }
        return MedianOf(times);
    }());
}

}  // namespace
}  // namespace davo

int main() {
    const QTemporaryDir folder;
    davo::Run(folder.path() + QLatin1Char('/'));
    return 0;
}
