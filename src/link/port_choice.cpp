// SPDX-License-Identifier: GPL-3.0-or-later
#include "link/port_choice.h"

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

}  // namespace davo
