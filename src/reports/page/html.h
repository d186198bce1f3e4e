// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "reports/page/layout.h"

namespace davo {

// The certificate as one file of HTML in UTF-8, with the chart in it and without a script: light or
// dark on the screen, with the pages of the PDF on paper. The same certificate gives the same
// bytes.
std::string CertificateAsHtml(const Certificate& certificate, Paper paper);

}  // namespace davo
