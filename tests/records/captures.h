// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QString>
#include <cmath>
#include <string>

#include "records/record_image.h"

namespace davo::test {

// An image with points in the first slots: current count 100 * k, voltage count 1000 * k for
// slot k from 1.
inline RecordImage ImageWithPoints(int points) {
    RecordImage image;
    for (int i = 0; i < points; ++i)
        image.slots[i] = {100 * (i + 1), 1000 * (i + 1)};
    image.kneeVoltage = 1523;
    image.kneeCurrent = 124;
    image.excitationCurrent = 1235;
    image.excitationVoltage = 2000;
    image.measuredRatio = 2412000;
    image.phaseAngle = 15;
    image.nameplateH = 1200;
    image.nameplateX = 50;
    image.kneeTypeCode = 1;
    return image;
}

// A core that saturates at about 400 V.
inline RecordImage SaturatedImage() {
    RecordImage image = ImageWithPoints(0);
    // The highest point first.
    for (int i = 0; i < 22; ++i) {
        const double volts = 20.0 * (22 - i);
        const double amperes = 0.0008 * std::pow(volts, 0.7) + 0.1 * std::pow(volts / 400, 20);
        image.slots[i] = {static_cast<int>(std::lround(amperes * 10000)),
                          static_cast<int>(std::lround(volts * 10))};
    }
    return image;
}

// A shot as the test window appends it.
inline std::string CaptureBlock(const std::string& hexText, const std::string& ratio = "241.2",
                                const std::string& nameplate = "240 (1200:5)",
                                const std::string& percent = "0.50%") {
    return "DATA" + hexText + "\r\nDONE\r\nMEASURED RATIO: " + ratio +
           "\r\nNAMEPLATE RATIO: " + nameplate + "\r\nPERCENT ERROR: " + percent + "\r\n\r\n";
}

inline std::string CaptureBlock(const RecordImage& image) {
    return CaptureBlock(EncodeRecordImage(image));
}

inline void PutFile(const QString& path, const std::string& bytes) {
    // A file that is emptied and written again is flushed by some file systems, which takes time.
    QFile::remove(path);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) qFatal("test file not writable");
    file.write(bytes.data(), static_cast<qint64>(bytes.size()));
}

inline std::string FileBytes(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return "(not readable)";
    return file.readAll().toStdString();
}

}  // namespace davo::test
