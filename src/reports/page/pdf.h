// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include "reports/page/html.h"

namespace davo {

// The certificate as a PDF of vectors with its fonts in it. Needs a QGuiApplication. Throws what
// ReplaceFile throws; a file that was there is then as it was.
void WriteCertificatePdf(const Certificate& certificate, Paper paper, const QString& path);

}  // namespace davo
