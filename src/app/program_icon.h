// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>

class QLabel;
class QWidget;

namespace davo {

// The program's picture in every size that a desktop shows it in, 16 to 256 pixels.
QIcon ProgramIcon();

// A label of it, size pixels wide.
QLabel* MakePicture(QWidget* parent, int size);

}  // namespace davo
