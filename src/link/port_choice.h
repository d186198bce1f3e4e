// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <cstdint>
#include <vector>

namespace davo {

// A serial port that is plugged in now.
struct PresentPort {
    QString device;  // what is opened: "COM3", "/dev/ttyUSB0"
    QString name;    // the adapter's description
    QString maker;
    QString serialNumber;
    bool usb = false;

    bool operator==(const PresentPort&) const = default;
};

// Order of device names: by the text before the trailing number, then by that number, so that
// ttyUSB2 stands before ttyUSB10.
bool DeviceNameBefore(const QString& left, const QString& right);

// The device of the port-th (from 1) USB serial adapter in name order; empty when there are fewer.
QString NthUsbAdapter(std::vector<PresentPort> present, std::int16_t port);

}  // namespace davo
