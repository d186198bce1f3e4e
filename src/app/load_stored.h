// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "app/program_state.h"
#include "app/status_line.h"

namespace davo {

// Reads what the program has stored into state: settings and the header of the PC. Makes the
// scratch folder and puts the report template where reports look for it. What goes wrong is
// returned, and the program goes on with what can be read.
std::vector<Notice> LoadStored(ProgramState& state, const ProgramServices& services);

}  // namespace davo
