// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <utility>

#include "link/serial_port.h"

namespace davo::instrument {

// One device, whatever it is called, as COM1 of a serial port.
class GivenDevice : public PortDevices {
  public:
    explicit GivenDevice(QString device) : device_(std::move(device)) {}
    QString DeviceOf(std::int16_t /*port*/) const override { return device_; }
    std::vector<PresentPort> Present() const override { return {}; }
    bool IsPresent(const QString& /*device*/) const override { return true; }
    void Assign(std::int16_t /*port*/, const QString& /*device*/) override {}
    bool NeedsAssignment() const override { return false; }

  private:
    QString device_;
};

// A device opened as the program opens its port.
class GivenPort {
  public:
    // Throws what SetPortOpen throws.
    explicit GivenPort(const QString& device) : device_(device), port_(MakeSerialPort(device_)) {
        port_->SetCommPort(1);
        port_->SetSettings("19200,N,8,1");
        port_->SetPortOpen(true);
    }
    SerialPort* operator->() { return port_.get(); }

  private:
    GivenDevice device_;
    std::unique_ptr<SerialPort> port_;
};

}  // namespace davo::instrument
