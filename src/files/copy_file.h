// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace davo {

// Copies the file source, content and time of change, to target, over one that is there. The copy
// is written beside its place and renamed when it is whole: whatever happens, target is the earlier
// file, the whole new one or none. On Windows the attributes go with it, and a target that is
// read-only is not replaced. Why it could not, in the system's words; empty when it is copied.
QString CopyFileOver(const QString& source, const QString& target);

}  // namespace davo
