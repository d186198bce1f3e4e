// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <cstdint>
#include <memory>
#include <vector>

#include "common/settings.h"
#include "link/port_choice.h"

namespace davo {

// Which device each of COM1 to COM4 means.
class PortDevices {
  public:
    virtual ~PortDevices() = default;

    // The device of COM<port>; empty when there is none: the one that the user gave that number.
    // Without one, on Windows the port of that name; elsewhere the port-th USB serial adapter in
    // name order, never a built-in port that the user did not choose.
    virtual QString DeviceOf(std::int16_t port) const = 0;

    // What is plugged in now, in name order.
    virtual std::vector<PresentPort> Present() const = 0;

    // Whether device is there to be opened, listed as plugged in or not. Nothing is opened.
    virtual bool IsPresent(const QString& device) const = 0;

    // Gives the number to a device (empty takes it back); Windows finds an adapter with a serial
    // number under another name, too. Throws what the store throws; Assigned then says whether the
    // number has the device until the program ends.
    virtual void Assign(std::int16_t port, const QString& device) = 0;

    // The device that was given the number, plugged in or not, in words that Assign takes again
    // (on Windows RememberedAdapter's); empty when none was.
    virtual QString Assigned(std::int16_t /*port*/) const { return {}; }

    // Whether a number means nothing by name: this platform has no COM names.
    virtual bool NeedsAssignment() const = 0;
};

// The platform's devices; what Assign gives is kept in store under application "DAVO", section
// "PORTDEVICES", value "COM1" to "COM4". store must outlive it.
std::unique_ptr<PortDevices> MakePortDevices(SettingsStore& store);

}  // namespace davo
