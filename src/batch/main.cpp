// SPDX-License-Identifier: GPL-3.0-or-later
#include <QCoreApplication>
#include <cstdio>
#include <optional>

#include "batch/batch_run.h"
#include "batch/command_line.h"

int main(int argc, char** argv) {
    // Standard error has what the program says and nothing else.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QCoreApplication application(argc, argv);
    std::optional<davo::CommandLineEnd> end;
    const davo::BatchOptions options = davo::ParseCommandLine(QCoreApplication::arguments(), end);
    if (!end) return davo::RunBatch(options);
    std::fputs(end->text.toLocal8Bit().constData(), end->status == 0 ? stdout : stderr);
    return end->status;
}
