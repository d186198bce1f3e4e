// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QApplication;

namespace davo {

// The whole run: makes the services and the state, loads and shows the main window, and returns
// the process's exit code when it has closed.
int RunProgram(QApplication& application);

}  // namespace davo
