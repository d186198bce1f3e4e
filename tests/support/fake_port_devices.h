// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "link/port_choice.h"
#include "link/port_devices.h"

namespace davo::test {

inline PresentPort UsbAdapter(const char* device, const char* name, const char* maker,
                              const char* serialNumber) {
    return {QString::fromLatin1(device), QString::fromLatin1(name), QString::fromLatin1(maker),
            QString::fromLatin1(serialNumber), true};
}

inline PresentPort BuiltInPort(const char* device) {
    return {QString::fromLatin1(device), {}, {}, {}, false};
}

// What is plugged in is what the test says. A number is the assigned device, else the port of that
// name or, as on a platform without COM names, the n-th USB adapter.
class FakePortDevices : public PortDevices {
  public:
    QString DeviceOf(std::int16_t port) const override {
        const QString given = Assigned(port);
        if (!given.isEmpty()) return given;
        return needsAssignment ? NthUsbAdapter(present, port) : QStringLiteral("COM%1").arg(port);
    }
    std::vector<PresentPort> Present() const override { return present; }
    bool IsPresent(const QString& device) const override {
        return std::any_of(present.begin(), present.end(),
                           [&](const PresentPort& port) { return port.device == device; });
    }
    void Assign(std::int16_t port, const QString& device) override {
        assigned[port] = device;
        assignments.emplace_back(port, device);
    }
    QString Assigned(std::int16_t port) const override {
        const auto found = assigned.find(port);
        return found == assigned.end() ? QString() : found->second;
    }
    bool NeedsAssignment() const override { return needsAssignment; }

    bool needsAssignment = true;
    std::vector<PresentPort> present;
    std::map<std::int16_t, QString> assigned;
    std::vector<std::pair<std::int16_t, QString>> assignments;  // every Assign, in order
};

// Every port number is the one device.
class OneDevice : public PortDevices {
  public:
    explicit OneDevice(QString path) : device(std::move(path)) {}
    QString DeviceOf(std::int16_t) const override { return device; }
    std::vector<PresentPort> Present() const override { return {}; }
    bool IsPresent(const QString&) const override { return true; }
    void Assign(std::int16_t, const QString&) override {}
    bool NeedsAssignment() const override { return true; }

    QString device;
};

}  // namespace davo::test
