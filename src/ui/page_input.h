// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QLineEdit;

namespace davo {

// What the operator reads when he enters a character that is not in Windows-1252.
QString NotInPageMessage();

// box takes characters of Windows-1252 only. Input with another one is refused as a whole and
// NotInPageMessage is shown beside the box.
void KeepToPage(QLineEdit* box);

}  // namespace davo
