// SPDX-License-Identifier: GPL-3.0-or-later
#include <QFileInfo>

#include "link/port_devices.h"
#include "link/port_list_linux.h"

namespace davo {

namespace {

class LinuxPortDevices : public PortDevices {
  public:
    explicit LinuxPortDevices(SettingsStore& store) : store_(store) {}

    QString DeviceOf(std::int16_t port) const override {
        const QString assigned = Assigned(port);
        return assigned.isEmpty() ? NthUsbAdapter(Present(), port) : assigned;
    }

    std::vector<PresentPort> Present() const override {
        return ListPorts(QStringLiteral("/sys/class/tty"));
    }

    // A link to a port, and a pseudo terminal, are not listed.
    bool IsPresent(const QString& device) const override { return QFileInfo::exists(device); }

    void Assign(std::int16_t port, const QString& device) override {
        KeepForPort(store_, port, device);
    }

    QString Assigned(std::int16_t port) const override { return KeptForPort(store_, port); }

    bool NeedsAssignment() const override { return true; }

  private:
    SettingsStore& store_;
};

}  // namespace

std::unique_ptr<PortDevices> MakePortDevices(SettingsStore& store) {
    return std::make_unique<LinuxPortDevices>(store);
}

}  // namespace davo
