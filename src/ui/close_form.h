// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

namespace davo {

// Closes form and the frame that it has in the main window's area.
void CloseForm(QWidget& form);

}  // namespace davo
