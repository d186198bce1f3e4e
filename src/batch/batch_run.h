// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "batch/command_line.h"

namespace davo {

// Does what options say, and says each trouble on standard error. Returns the exit status: 0 when
// all was made, 1 when something was not, 2 for a wrong command line.
int RunBatch(const BatchOptions& options);

}  // namespace davo
