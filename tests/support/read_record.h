// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include "common/files.h"
#include "records/record_file.h"

namespace davo::test {

// ParseTestRecordFile of a file; throws the errors of ReadWholeFile too.
inline TestRecordFile ReadTestRecordFile(const QString& path) {
    return ParseTestRecordFile(ReadWholeFile(path));
}

}  // namespace davo::test
