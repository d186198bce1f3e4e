// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/child_forms.h"
#include "app/program_state.h"

namespace davo {

// The windows of the menu items. state and everything of services must outlive them.
ChildForms OpenForms(ProgramState& state, const ProgramServices& services);

}  // namespace davo
