// SPDX-License-Identifier: GPL-3.0-or-later
#include <QGuiApplication>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <span>

#include "batch/batch_run.h"
#include "batch/command_line.h"

namespace {

// A certificate needs fonts, and those an application that could have windows.
std::unique_ptr<QCoreApplication> MakeApplication(int& argc, char** argv) {
    for (const char* const argument : std::span(argv, static_cast<std::size_t>(argc))) {
        if (std::strcmp(argument, "--pdf") != 0) continue;
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return std::make_unique<QGuiApplication>(argc, argv);
    }
    return std::make_unique<QCoreApplication>(argc, argv);
}

}  // namespace

int main(int argc, char** argv) {
    // Standard error has what the program says and nothing else.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const auto application = MakeApplication(argc, argv);
    std::optional<davo::CommandLineEnd> end;
    const davo::BatchOptions options = davo::ParseCommandLine(QCoreApplication::arguments(), end);
    if (!end) return davo::RunBatch(options);
    std::fputs(end->text.toLocal8Bit().constData(), end->status == 0 ? stdout : stderr);
    return end->status;
}
