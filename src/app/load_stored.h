// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "app/program_state.h"
#include "app/status_line.h"
#include "records/unsaved_sessions.h"

namespace davo {

// Reads what the program has stored into state: settings and the header of the PC. Makes the
// scratch folder and puts the report template where reports look for it. What goes wrong is
// returned, and the program goes on with what can be read.
std::vector<Notice> LoadStored(ProgramState& state, const ProgramServices& services);

// The sessions in folder that were never saved, the last one set aside. Those that cannot be read
// take the place of such ones in troubles: a file may have been put right since then.
std::vector<UnsavedSession> UnsavedSessionsIn(const QString& folder, std::vector<Notice>& troubles);

// What the status line and the start page say of state, without troubles; listedRecords is the
// number of records in the directory.
ShellFacts FactsOf(const ProgramState& state, const PortDevices& devices, int listedRecords);

}  // namespace davo
