// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QApplication;

namespace davo {

// The name that a window without a title of its own shows, the icon, and the style: on every system
// the one whose outlines can be seen in the user's light, dark or contrasting colours.
void DressApplication();

// The whole run: makes the services and the state, loads and shows the main window, and returns
// the process's exit code when it has closed.
int RunProgram(QApplication& application);

}  // namespace davo
