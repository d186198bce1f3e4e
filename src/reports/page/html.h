// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <string>

#include "reports/page/certificate.h"
#include "reports/page/paper.h"

namespace davo {

inline constexpr const char* kCertificateTitle = "Test Certificate";

// The certificate as HTML that a browser and Qt's rich text understand: what is above the chart,
// with letterhead for its picture, and what is below. Numbers of a column are filled up with blanks
// until their points are below each other.
QString AboveChart(const Certificate& certificate, const QString& letterhead);
QString BelowChart(const Certificate& certificate);

// A table of so many rows is on one page.
inline constexpr int kUnbroken = 12;

// A file of the certificate's parts that are the same in each.
QByteArray PageResource(const char* name);

// The inks of a page as the variables of InkRules, and "--paper": those of a dark screen, too.
QString Inks();

// The certificate as one file of HTML in UTF-8, with the chart in it and without a script: light or
// dark on the screen, with the pages of the PDF on paper. The same certificate gives the same
// bytes.
std::string CertificateAsHtml(const Certificate& certificate, Paper paper);

}  // namespace davo
