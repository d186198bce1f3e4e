// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace davo {

// Waits until everything written to an open file is on the disk. descriptor is the C library's
// number of the file; false when the system could not do it.
bool FlushToDisk(int descriptor);

}  // namespace davo
