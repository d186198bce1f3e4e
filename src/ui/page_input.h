// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <cstddef>
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

// box shows how many characters its text has, "12 of 20", at its right end: while it is being
// edited, and for as long as there are more than most. Blanks at the ends do not count.
void CountCharacters(QLineEdit* box, std::size_t most);

}  // namespace davo
