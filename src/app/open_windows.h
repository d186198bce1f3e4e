#pragma once

#include "app/child_windows.h"
#include "app/program_state.h"

namespace davo {

// The windows of the menu items. state and everything of services must outlive them.
ChildWindows OpenWindows(ProgramState& state, const ProgramServices& services);

}  // namespace davo
