// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <cstdint>
#include <vector>

#include "common/settings.h"

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
// ttyUSB2 is before ttyUSB10.
bool DeviceNameBefore(const QString& left, const QString& right);

// The device of the port-th (from 1) USB serial adapter in name order; empty when there are fewer.
QString NthUsbAdapter(std::vector<PresentPort> present, std::int16_t port);

// The serial number in the name that Windows gives a USB device's instance; empty when the adapter
// has none, and Windows made one up of the socket that it is in.
QString SerialNumberOfInstance(const QString& instance);

// How the adapter at device is remembered: by that name and, when it has a serial number, by maker
// and serial number. Empty for no device.
QString RememberedAdapter(const QString& device, const std::vector<PresentPort>& present);

// The device of a remembered adapter. One with a serial number is found under another name, too; it
// is empty while another adapter has its name, or when several have its maker and serial number.
QString FindRemembered(const QString& remembered, const std::vector<PresentPort>& present);

// What is kept for COM<port> in store: application "DAVO", section "PORTDEVICES", value "COM1" to
// "COM4". Empty when nothing is.
QString KeptForPort(const SettingsStore& store, std::int16_t port);
void KeepForPort(SettingsStore& store, std::int16_t port, const QString& text);

}  // namespace davo
