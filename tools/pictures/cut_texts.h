// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QWidget>

namespace davo::test {

// What of a shown window cannot be read whole, a line for each: labels, buttons, column headers
// whose text is wider or higher than their box, what is cut off by the edge of what it is in, and
// the window itself when its screen is too small for it. What scrolls is not cut off, nor is a text
// that its tool tip has whole.
QStringList CutTexts(const QWidget& window);

}  // namespace davo::test
