// SPDX-License-Identifier: GPL-3.0-or-later
#include <initguid.h>
#include <windows.h>
// After it, and in this order.
#include <setupapi.h>

#include <devguid.h>

#include <QCollator>
#include <QStringList>
#include <algorithm>
#include <array>

#include "link/port_devices.h"

namespace davo {

namespace {

constexpr DWORD kLongestText = 512;  // characters

QString FromWide(const wchar_t* text) {
    return QString::fromWCharArray(text);
}

// The names that drivers have given their ports.
QStringList PortNames() {
    QStringList names;
    HKEY key = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"HARDWARE\\DEVICEMAP\\SERIALCOMM", 0, KEY_READ,
                        &key) != ERROR_SUCCESS) {
        return names;
    }
    for (DWORD i = 0;; ++i) {
        std::array<wchar_t, kLongestText> value{};
        std::array<wchar_t, kLongestText> name{};
        DWORD valueSize = kLongestText;
        DWORD nameSize = sizeof name - sizeof(wchar_t);
        DWORD type = 0;
        const LSTATUS result = ::RegEnumValueW(key, i, value.data(), &valueSize, nullptr, &type,
                                               reinterpret_cast<BYTE*>(name.data()), &nameSize);
        // A value that is too long is passed over; any other error would come again without end.
        if (result == ERROR_MORE_DATA) continue;
        if (result != ERROR_SUCCESS) break;
        if (type == REG_SZ) names.push_back(FromWide(name.data()));
    }
    ::RegCloseKey(key);
    return names;
}

class DeviceSet {
  public:
    DeviceSet()
        : set_(::SetupDiGetClassDevsW(&GUID_DEVCLASS_PORTS, nullptr, nullptr, DIGCF_PRESENT)) {}
    Q_DISABLE_COPY_MOVE(DeviceSet)
    ~DeviceSet() {
        if (set_ != INVALID_HANDLE_VALUE) ::SetupDiDestroyDeviceInfoList(set_);
    }

    // The devices' ports with what their drivers say of them.
    std::vector<PresentPort> Ports() {
        std::vector<PresentPort> ports;
        SP_DEVINFO_DATA device{};
        device.cbSize = sizeof device;
        for (DWORD i = 0; ::SetupDiEnumDeviceInfo(set_, i, &device) != 0; ++i) {
            PresentPort port;
            port.device = PortName(device);
            port.name = Property(device, SPDRP_FRIENDLYNAME);
            port.maker = Property(device, SPDRP_MFG);
            std::array<wchar_t, kLongestText> id{};
            ::SetupDiGetDeviceInstanceIdW(set_, &device, id.data(), kLongestText, nullptr);
            const QString path = FromWide(id.data());
            port.usb = path.contains(QLatin1String("USB"), Qt::CaseInsensitive) ||
                       path.contains(QLatin1String("VID_"), Qt::CaseInsensitive);
            if (port.usb) port.serialNumber = SerialNumberOfInstance(path);
            if (!port.device.isEmpty()) ports.push_back(port);
        }
        return ports;
    }

  private:
    QString PortName(SP_DEVINFO_DATA& device) {
        HKEY key = ::SetupDiOpenDevRegKey(set_, &device, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_READ);
        if (key == INVALID_HANDLE_VALUE) return {};
        std::array<wchar_t, kLongestText> name{};
        DWORD size = sizeof name - sizeof(wchar_t);
        const LSTATUS result = ::RegQueryValueExW(key, L"PortName", nullptr, nullptr,
                                                  reinterpret_cast<BYTE*>(name.data()), &size);
        ::RegCloseKey(key);
        return result == ERROR_SUCCESS ? FromWide(name.data()) : QString();
    }

    QString Property(SP_DEVINFO_DATA& device, DWORD property) {
        std::array<wchar_t, kLongestText> text{};
        const BOOL found = ::SetupDiGetDeviceRegistryPropertyW(
            set_, &device, property, nullptr, reinterpret_cast<BYTE*>(text.data()),
            sizeof text - sizeof(wchar_t), nullptr);
        return found != 0 ? FromWide(text.data()) : QString();
    }

    HDEVINFO set_;
};

class WindowsPortDevices : public PortDevices {
  public:
    explicit WindowsPortDevices(SettingsStore& store) : store_(store) {}

    QString DeviceOf(std::int16_t port) const override {
        if (port <= 0) return {};
        const QString assigned = KeptForPort(store_, port);
        return assigned.isEmpty() ? QStringLiteral("COM%1").arg(port)
                                  : FindRemembered(assigned, Present());
    }

    std::vector<PresentPort> Present() const override {
        const std::vector<PresentPort> described = DeviceSet().Ports();
        std::vector<PresentPort> ports;
        for (const QString& name : PortNames()) {
            const auto found =
                std::find_if(described.begin(), described.end(),
                             [&](const PresentPort& port) { return port.device == name; });
            PresentPort port;
            if (found != described.end()) port = *found;
            port.device = name;
            ports.push_back(port);
        }
        QCollator order;
        order.setNumericMode(true);
        std::sort(ports.begin(), ports.end(), [&](const PresentPort& a, const PresentPort& b) {
            return order.compare(a.device, b.device) < 0;
        });
        return ports;
    }

    bool IsPresent(const QString& device) const override { return PortNames().contains(device); }

    void Assign(std::int16_t port, const QString& device) override {
        KeepForPort(store_, port, RememberedAdapter(device, Present()));
    }

    QString Assigned(std::int16_t port) const override { return KeptForPort(store_, port); }

    bool NeedsAssignment() const override { return false; }

  private:
    SettingsStore& store_;
};

}  // namespace

std::unique_ptr<PortDevices> MakePortDevices(SettingsStore& store) {
    return std::make_unique<WindowsPortDevices>(store);
}

}  // namespace davo
