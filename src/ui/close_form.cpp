// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/close_form.h"

#include <QMdiSubWindow>

namespace davo {

void CloseForm(QWidget& form) {
    auto* frame = qobject_cast<QMdiSubWindow*>(form.parentWidget());
    (frame != nullptr ? static_cast<QWidget*>(frame) : &form)->close();
}

}  // namespace davo
