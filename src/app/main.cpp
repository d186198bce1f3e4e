// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QSysInfo>

#include "app/program.h"

int main(int argc, char** argv) {
    // Qt 6.4 follows the dark mode of Windows only when it is told to.
    constexpr const char* kPlatform = "QT_QPA_PLATFORM";
    if (QSysInfo::productType() == QLatin1String("windows") &&
        !qEnvironmentVariableIsSet(kPlatform))
        qputenv(kPlatform, "windows:darkmode=2");
    QApplication application(argc, argv);
    return davo::RunProgram(application);
}
