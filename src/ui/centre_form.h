// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

namespace davo {

// Puts window in the middle of the screen that other is on, else of the primary screen: Top =
// (screen height - window height) / 2, Left = (screen width - window width) / 2. A window that is
// to be shown yet takes the size of its contents first, unless it was given one.
void CentreForm(QWidget& window, const QWidget* other);

}  // namespace davo
