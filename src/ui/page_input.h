// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>

class QLineEdit;

namespace davo {

// What the operator reads when he enters a character that is not in Windows-1252.
QString NotInPageMessage();

// box takes a text only when fits says so. Other input is refused as a whole and message is shown
// beside the box.
void KeepTo(QLineEdit* box, std::function<bool(const QString& text)> fits, const QString& message);

// box takes characters of Windows-1252 only, else NotInPageMessage.
void KeepToPage(QLineEdit* box);

}  // namespace davo
