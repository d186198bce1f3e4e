// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>

#include "app/program.h"

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    return davo::RunProgram(application);
}
