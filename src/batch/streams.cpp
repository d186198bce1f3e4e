// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/streams.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "common/run_time_error.h"

namespace davo {

namespace {

constexpr std::size_t kBlock = 65536;
constexpr int kLineWidth = 79;

bool IsTerminal(std::FILE* stream) {
    return ::isatty(::fileno(stream)) != 0;
}

void WriteError(const QString& text) {
    std::fputs(text.toLocal8Bit().constData(), stderr);
    std::fflush(stderr);
}

QString WithoutControls(QString text) {
    for (QChar& c : text) {
        if (c.category() == QChar::Other_Control) c = QLatin1Char('?');
    }
    return text;
}

}  // namespace

RowOutput::RowOutput() {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
}

void RowOutput::Put(std::string_view rows) {
    waiting_ += rows;
    if (waiting_.size() >= kBlock) Flush();
}

void RowOutput::Flush() {
    const bool isWritten =
        std::fwrite(waiting_.data(), 1, waiting_.size(), stdout) == waiting_.size();
    const int error = errno;
    waiting_.clear();
    if (isWritten) return;
    if (error == EPIPE) throw ReaderGone{};
    throw RunTimeError(error == ENOSPC ? ErrorNumber::DiskFull : ErrorNumber::DeviceInputOutput,
                       "standard output");
}

StandardError::StandardError(bool isQuiet) : showsProgress_(!isQuiet && IsTerminal(stderr)) {}

void StandardError::Say(const QString& text) {
    Clear();
    WriteError(QStringLiteral("davo-report: ") + WithoutControls(text) + QLatin1Char('\n'));
}

void StandardError::ShowProgress(int records, const QString& path) {
    constexpr qint64 kPause = 100;  // milliseconds
    if (!showsProgress_ || (since_.isValid() && since_.elapsed() < kPause)) return;
    const QString before = QStringLiteral("Record %1: ").arg(records);
    // The end of a long path is what changes.
    const QString text = before + WithoutControls(path.right(kLineWidth - before.size()));
    WriteError(QLatin1Char('\r') + text.leftJustified(kLineWidth));
    isShown_ = true;
    since_.start();
}

void StandardError::Clear() {
    if (!isShown_) return;
    WriteError(QLatin1Char('\r') + QString(kLineWidth, QLatin1Char(' ')) + QLatin1Char('\r'));
    isShown_ = false;
}

bool OutputIsTerminal() {
    return IsTerminal(stdout);
}

}  // namespace davo
