// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/open_document.h"

#include "common/places.h"

namespace davo {

bool ShowReportInExcel(const QString& path) {
    return ShowDocument(path);
}

QString NoProgramText(const QString& path) {
    return QLatin1String(kNoProgramText) + ShownPath(path);
}

}  // namespace davo
