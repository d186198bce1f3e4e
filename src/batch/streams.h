// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QString>
#include <string>
#include <string_view>

namespace davo {

// Standard output for rows. It is written in whole rows, many at a time, so that those of several
// runs that append to one file do not mix.
class RowOutput {
  public:
    RowOutput();

    // The reader is gone, as "head" once it has its lines.
    struct ReaderGone {};

    // Each throws RunTimeError 61 when the disk is full, 57 for what else the system says, and
    // ReaderGone.
    void Put(std::string_view rows);
    void Flush();

  private:
    std::string waiting_;
};

// What a run says on standard error: a line for each trouble and, on a terminal, how far it is.
class StandardError {
  public:
    // isQuiet: no progress on a terminal either, where rows are shown on it.
    explicit StandardError(bool isQuiet);
    ~StandardError() { Clear(); }
    Q_DISABLE_COPY_MOVE(StandardError)

    // Control characters, as a file's name may have them, are "?".
    void Say(const QString& text);
    // In the place of the last progress, ten times a second at most.
    void ShowProgress(int records, const QString& path);

  private:
    void Clear();

    const bool showsProgress_;
    bool isShown_ = false;
    QElapsedTimer since_;
};

// Whether standard output is a terminal.
bool OutputIsTerminal();

}  // namespace davo
