// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/streams.h"

#include <unistd.h>

#include <QRegularExpression>
#include <cerrno>
#include <cstdio>

#include "common/run_time_error.h"

namespace davo {

namespace {

constexpr int kLineWidth = 79;

void WriteError(const char* before, QString text, const char* behind) {
    text.replace(QRegularExpression(QStringLiteral("\\p{Cc}")), QStringLiteral("?"));
    std::fprintf(stderr, "%s%s%s", before, text.toLocal8Bit().constData(), behind);
    std::fflush(stderr);
}

}  // namespace

void WriteOutput(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size()) return;
    if (errno == EPIPE) throw RunEnded{};
    throw RunTimeError(errno == ENOSPC ? ErrorNumber::DiskFull : ErrorNumber::DeviceInputOutput,
                       "standard output");
}

StandardError::StandardError(bool hasRows)
    : showsProgress_(::isatty(STDERR_FILENO) != 0 && !(hasRows && ::isatty(STDOUT_FILENO) != 0)) {}

void StandardError::Say(const QString& text) {
    Clear();
    WriteError("davo-report: ", text, "\n");
}

void StandardError::ShowProgress(int records, const QString& path) {
    constexpr qint64 kPause = 100;  // milliseconds
    if (!showsProgress_ || (since_.isValid() && since_.elapsed() < kPause)) return;
    const QString before = QStringLiteral("Record %1: ").arg(records);
    // The end of a long path is what changes.
    const QString text = before + path.right(kLineWidth - before.size());
    WriteError("\r", text.leftJustified(kLineWidth), "");
    isShown_ = true;
    since_.start();
}

void StandardError::Clear() {
    if (isShown_) WriteError("\r", QString(kLineWidth, QLatin1Char(' ')), "\r");
    isShown_ = false;
}

}  // namespace davo
