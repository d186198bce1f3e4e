// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <vector>

#include "link/port_choice.h"

namespace davo {

// The serial ports that the kernel lists in classFolder ("/sys/class/tty"), in name order. Reads
// what the kernel says about them and opens none: QSerialPortInfo would open the built-in ones to
// try them, and one of them may be the machine's console.
std::vector<PresentPort> ListPorts(const QString& classFolder);

}  // namespace davo
