// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>

#include "app/program_state.h"

class QMdiArea;

namespace davo {

class frmCControl;

// Opens the window of a menu item in area and calls closed once, when the window has closed. An
// error is thrown when it does not open; closed is not called then.
using OpenChild = std::function<void(QMdiArea& area, std::function<void()> closed)>;

// The windows that the main window opens without knowing them. One that is not set is not part of
// this version of the program.
struct ChildForms {
    OpenChild testList;         // Recall Test
    OpenChild memoryDirectory;  // Download Test Record
    OpenChild headerSetup;      // Setup Test Header Information
    OpenChild recordHeaders;    // Test Record Header Information
    OpenChild fileUtilities;    // File Utilities and Overlay 2 Tests: see listCaller
};

// The windows of the menu items. state and everything of services must outlive them.
ChildForms OpenForms(ProgramState& state, const ProgramServices& services);

// The test window, loaded, with the header window and the reports that it offers. Throws what its
// Form_Load throws.
std::unique_ptr<frmCControl> LoadTestWindow(ProgramState& state, const ProgramServices& services);

}  // namespace davo
