// SPDX-License-Identifier: GPL-3.0-or-later
#include "link/port_choice.h"

#include <QStringList>
#include <algorithm>
#include <utility>

namespace davo {

namespace {

// A name without its trailing number, and that number.
std::pair<QString, qulonglong> SplitNumber(const QString& name) {
    qsizetype digits = 0;
    while (digits < name.size() && name.at(name.size() - 1 - digits).isDigit())
        ++digits;
    return {name.chopped(digits), name.right(digits).toULongLong()};
}

// Between a name, a maker and a serial number.
constexpr QLatin1Char kBetween('|');

constexpr QLatin1String kApplication("DAVO");
constexpr QLatin1String kSection("PORTDEVICES");

QString ValueName(std::int16_t port) {
    return QStringLiteral("COM%1").arg(port);
}

}  // namespace

bool DeviceNameBefore(const QString& left, const QString& right) {
    return SplitNumber(left) < SplitNumber(right);
}

QString NthUsbAdapter(std::vector<PresentPort> present, std::int16_t port) {
    std::erase_if(present, [](const PresentPort& one) { return !one.usb; });
    std::ranges::sort(present, DeviceNameBefore, &PresentPort::device);
    if (port < 1 || static_cast<std::size_t>(port) > present.size()) return {};
    return present[static_cast<std::size_t>(port) - 1].device;
}

QString SerialNumberOfInstance(const QString& instance) {
    const QStringList parts = instance.split(QLatin1Char('\\'));
    if (parts.size() < 3) return {};
    QString serial = parts[2];
    // Here it is behind the maker and the product, and ends with the letter of the chip's port.
    if (parts[0] == QLatin1String("FTDIBUS")) {
        serial = parts[1].section(QLatin1Char('+'), 2);
        if (serial.endsWith(QLatin1Char('A'))) serial.chop(1);
    }
    return serial.contains(QLatin1Char('&')) ? QString() : serial;
}

QString RememberedAdapter(const QString& device, const std::vector<PresentPort>& present) {
    const auto found = std::ranges::find(present, device, &PresentPort::device);
    if (found == present.end() || found->serialNumber.isEmpty()) return device;
    return QStringList{device, found->maker, found->serialNumber}.join(kBetween);
}

QString FindRemembered(const QString& remembered, const std::vector<PresentPort>& present) {
    QString device = remembered.section(kBetween, 0, 0);
    if (!remembered.contains(kBetween)) return device;
    QStringList itself;
    bool named = false;
    for (const PresentPort& port : present) {
        if (RememberedAdapter(port.device, {port}).section(kBetween, 1) ==
            remembered.section(kBetween, 1))
            itself << port.device;
        named |= port.device == device;
    }
    if (itself.contains(device)) return device;
    if (itself.empty() && !named) return device;
    return itself.size() == 1 ? itself.front() : QString();
}

QString KeptForPort(const SettingsStore& store, std::int16_t port) {
    return store.Read(kApplication, kSection, ValueName(port));
}

void KeepForPort(SettingsStore& store, std::int16_t port, const QString& text) {
    store.Write(kApplication, kSection, ValueName(port), text);
}

}  // namespace davo
