// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "app/child_forms.h"
#include "app/program_state.h"

namespace davo {

class frmCControl;

// The windows of the menu items. state and everything of services must outlive them.
ChildForms OpenForms(ProgramState& state, const ProgramServices& services);

// The test window, loaded, with the header window and the reports that it offers. Throws what its
// Form_Load throws.
std::unique_ptr<frmCControl> LoadTestWindow(ProgramState& state, const ProgramServices& services);

}  // namespace davo
