#include "reports/open_document.h"

#include "common/places.h"

namespace davo {

QString NoProgramText(const QString& path) {
    return QLatin1String(kNoProgramText) + ShownPath(path);
}

}  // namespace davo
