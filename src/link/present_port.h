// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

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

}  // namespace davo
