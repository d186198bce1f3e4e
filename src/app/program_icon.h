// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>

namespace davo {

// The program's picture in every size that a desktop shows it in, 16 to 256 pixels.
QIcon ProgramIcon();

}  // namespace davo
