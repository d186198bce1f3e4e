// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <cstdint>
#include <string>
#include <vector>

#include "common/settings.h"
#include "link/link.h"
#include "link/port_devices.h"

namespace davo {

// What is to be seen of the link at a glance.
struct LinkGlance {
    std::int16_t comPort = kNoPortChosen;
    bool portOpen = false;
    bool openFailed = false;
    QString device;        // that the number means; empty when there is none
    QString deviceWords;   // DeviceWords of it
    bool present = false;  // it is there to be opened
    std::string instrumentModel;

    bool operator==(const LinkGlance&) const = default;
};

LinkGlance GlanceAtLink(const Settings& settings, const LinkState& link,
                        const PortDevices& devices);

// "COM1".
QString PortCaption(std::int16_t port);

// The port that is opened as device; nullptr when it is not plugged in.
const PresentPort* FindPort(const std::vector<PresentPort>& present, const QString& device);

// An adapter's name, maker and serial number, as far as they are known, and the device; of one that
// is not plugged in only the device. Empty for no device.
QString DeviceWords(const QString& device, const std::vector<PresentPort>& present);

// "COM1 ready", "COM1 opened when needed" (in good order), "COM1 not plugged in", "COM1 not open",
// "No COM port chosen".
QString PortState(const LinkGlance& glance);

// What the number means, and, of a port that is not open, why.
QString DeviceState(const LinkGlance& glance);

// Why device (empty: there is none) could not be opened, and what to do. openError: see LinkState.
QString WhyNotOpen(const PortDevices& devices, const QString& device, const std::string& openError);

// Whether the operator has to do something before the port can be opened.
bool NeedsHelp(const LinkGlance& glance);

// The model on one line and cut to what a model's name needs: noise on the line makes long ones.
QString ModelText(const std::string& instrumentModel);

// What keeps the instrument of that model from testing; empty when nothing does.
QString WhyNoTest(const std::string& instrumentModel);

// ModelText; a word for it while it was not read.
QString ModelWords(const std::string& instrumentModel);

}  // namespace davo
