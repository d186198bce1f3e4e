// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/port_labels.h"

#include <QStringList>
#include <algorithm>

#include "common/text.h"

namespace davo {

LinkGlance GlanceAtLink(const Settings& settings, const LinkState& link,
                        const PortDevices& devices) {
    LinkGlance glance;
    glance.comPort = settings.comPort;
    glance.portOpen = link.portOpen;
    glance.openFailed = link.openFailed;
    glance.instrumentModel = link.instrumentModel;
    if (settings.comPort == kNoPortChosen) return glance;
    const auto present = devices.Present();
    glance.device = devices.DeviceOf(settings.comPort);
    glance.deviceWords = DeviceWords(glance.device, present);
    glance.present = devices.IsPresent(glance.device);
    return glance;
}

QString PortCaption(std::int16_t port) {
    return QStringLiteral("COM%1").arg(port);
}

const PresentPort* FindPort(const std::vector<PresentPort>& present, const QString& device) {
    const auto found = std::ranges::find(present, device, &PresentPort::device);
    return found == present.end() ? nullptr : &*found;
}

QString DeviceWords(const QString& device, const std::vector<PresentPort>& present) {
    QStringList words{device};
    if (const PresentPort* port = FindPort(present, device); port != nullptr) {
        words = {port->name, port->maker};
        if (!port->serialNumber.isEmpty())
            words << QStringLiteral("serial number %1").arg(port->serialNumber);
        words << device;
    }
    words.removeAll(QString());
    return words.join(QStringLiteral(", "));
}

QString PortState(const LinkGlance& glance) {
    if (glance.comPort == kNoPortChosen) return QStringLiteral("No COM port chosen");
    const QString port = PortCaption(glance.comPort);
    if (glance.portOpen) return port + QStringLiteral(" ready");
    // The test window closes the port when it is left; the next test opens it again.
    if (!NeedsHelp(glance)) return port + QStringLiteral(" opened when needed");
    return port +
           (glance.present ? QStringLiteral(" not open") : QStringLiteral(" not plugged in"));
}

QString DeviceState(const LinkGlance& glance) {
    if (glance.comPort == kNoPortChosen) return {};
    if (glance.portOpen) return glance.deviceWords;
    if (glance.device.isEmpty()) return QStringLiteral("No device is plugged in");
    if (!glance.present) return QStringLiteral("%1 is not plugged in").arg(glance.device);
    if (!glance.openFailed) return glance.deviceWords;
    return QStringLiteral("%1 could not be opened").arg(glance.deviceWords);
}

QString WhyNotOpen(const PortDevices& devices, const QString& device,
                   const std::string& openError) {
    if (device.isEmpty()) {
        return QStringLiteral(
            "No adapter is plugged in. Plug in the DAVO's adapter: it is listed at once.");
    }
    if (!devices.IsPresent(device)) {
        return QStringLiteral("%1 is not plugged in. Plug it in, or choose another row.")
            .arg(device);
    }
    // The system's own words are behind those of the program.
    QString why = QString::fromStdString(openError).section(QStringLiteral(": "), -1);
    if (why.endsWith(QLatin1Char('.'))) why.chop(1);
    return QStringLiteral("%1 does not open: %2. Another program uses it, or you may not open it.")
        .arg(device, why);
}

bool NeedsHelp(const LinkGlance& glance) {
    if (glance.portOpen) return false;
    return glance.openFailed || !glance.present;
}

QString ModelText(const std::string& instrumentModel) {
    constexpr qsizetype kMostCharacters = 24;
    QString text = FromPage(instrumentModel);
    for (QChar& c : text) {
        if (!c.isPrint() && !c.isSpace()) c = QLatin1Char('?');
    }
    text = text.simplified();
    if (text.size() <= kMostCharacters) return text;
    return text.left(kMostCharacters - 1).trimmed() + QChar(0x2026);
}

QString WhyNoTest(const std::string& instrumentModel) {
    if (!Contains(instrumentModel, "DAVO"))
        return QStringLiteral("Cannot read option, please try again.");
    if (!Contains(instrumentModel, "DAVO-E"))
        return QStringLiteral("This option is not available on your DAVO.");
    return {};
}

QString ModelWords(const std::string& instrumentModel) {
    return instrumentModel.empty() ? QStringLiteral("Instrument not asked yet")
                                   : ModelText(instrumentModel);
}

}  // namespace davo
