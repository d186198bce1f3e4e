// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace davo {

// From now on a crash of the program leaves a trace in folder, which ends with a separator and is
// made when it is missing: on Linux the text "davo-crash.txt" with the calls that led to it, on
// Windows the dump "davo-crash.dmp". The program then ends as it would without. Nothing is sent
// anywhere. To be called once.
void LeaveCrashTraces(const QString& folder);

// The trace that a crash left in folder since this was last asked. It has its time in its name from
// now on; where it cannot be renamed it keeps its name. Empty when there is none.
QString TakeCrashTrace(const QString& folder);

}  // namespace davo
