// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

class QLineEdit;

namespace davo {

// box shows how many characters its text has, "12 of 20", at its right end: while it is being
// edited, and for as long as there are more than most. Blanks at the ends do not count.
void CountCharacters(QLineEdit* box, std::size_t most);

}  // namespace davo
