// SPDX-License-Identifier: GPL-3.0-or-later
#include <QGuiApplication>
#include <cstdio>
#include <memory>

#include "batch/batch_run.h"
#include "batch/command_line.h"

int main(int argc, char** argv) {
    // Standard error has what the program says and nothing else.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    const davo::BatchOptions options = davo::ParseCommandLine(QCoreApplication::arguments());
    int onlyName = 1;
    if (options.pdf) {
        // A certificate needs fonts, and those an application that could have windows, on a system
        // whose fonts need a display by a plugin that has none. Options such as -platform are not
        // for it.
        application.reset();
        qputenv("QT_QPA_PLATFORM", DAVO_FONT_PLATFORM);
        application = std::make_unique<QGuiApplication>(onlyName, argv);
    }
    return davo::RunBatch(options);
}
