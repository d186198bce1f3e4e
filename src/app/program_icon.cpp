// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/program_icon.h"

#include <QLabel>

// Outside the namespace, because it names a function that the resource compiler makes there.
static void LoadResource() {
    Q_INIT_RESOURCE(davo_icon);
}

namespace davo {

QIcon ProgramIcon() {
    LoadResource();
    QIcon icon;
    for (const int size : {16, 20, 24, 32, 40, 48, 64, 80, 128, 256}) {
        icon.addFile(QStringLiteral(":/davo/icon/davo-%1.png").arg(size), QSize(size, size));
    }
    return icon;
}

QLabel* MakePicture(QWidget* parent, int size) {
    auto* picture = new QLabel(parent);
    picture->setPixmap(ProgramIcon().pixmap(QSize(size, size), parent->devicePixelRatioF()));
    return picture;
}

}  // namespace davo
