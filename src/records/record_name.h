// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace davo {

// Why name (without ".txt") cannot be that of a new record file, in words; empty when it can. A
// record must be readable on every machine that it is copied to, so what one platform refuses is
// refused everywhere.
QString RecordNameTrouble(const QString& name);

}  // namespace davo
