// SPDX-License-Identifier: GPL-3.0-or-later
#include "link/port_list_linux.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace davo {

namespace {

QString ReadAttribute(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(file.readAll()).trimmed();
}

// The folder of the USB device that a terminal belongs to; empty when it is none.
QString UsbDeviceFolder(const QString& deviceFolder) {
    for (QDir folder(deviceFolder); !folder.isRoot();) {
        if (folder.exists(QStringLiteral("idVendor"))) return folder.absolutePath();
        if (!folder.cdUp()) break;
    }
    return {};
}

}  // namespace

std::vector<PresentPort> ListPorts(const QString& classFolder) {
    std::vector<PresentPort> ports;
    const QDir terminals(classFolder);
    for (const QString& name : terminals.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString folder = terminals.filePath(name);
        // Consoles and pseudo terminals have no device behind them.
        const QString device = QFileInfo(folder + QStringLiteral("/device")).canonicalFilePath();
        if (device.isEmpty()) continue;
        // The driver of the built-in ports lists more than there are; type 0 is none.
        if (ReadAttribute(folder + QStringLiteral("/type")) == QLatin1String("0")) continue;
        PresentPort port;
        port.device = QStringLiteral("/dev/") + name;
        const QString usb = UsbDeviceFolder(device);
        port.usb = !usb.isEmpty() || name.startsWith(QLatin1String("ttyUSB")) ||
                   name.startsWith(QLatin1String("ttyACM"));
        if (!usb.isEmpty()) {
            port.name = ReadAttribute(usb + QStringLiteral("/product"));
            port.maker = ReadAttribute(usb + QStringLiteral("/manufacturer"));
            port.serialNumber = ReadAttribute(usb + QStringLiteral("/serial"));
        }
        ports.push_back(port);
    }
    std::ranges::sort(ports, DeviceNameBefore, &PresentPort::device);
    return ports;
}

}  // namespace davo
