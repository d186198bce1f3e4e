// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/places.h"

class QWidget;

namespace davo {

// Keeps window's place, size and whether it is maximized in "davo-window.ini" of the configuration
// folder. What cannot be written is forgotten.
void SaveWindowGeometry(const QWidget& window, const Places& places);

// Puts window where it was. False, and nothing changes, when nothing is kept or what is kept is
// on no screen that is there now.
bool RestoreWindowGeometry(QWidget& window, const Places& places);

}  // namespace davo
