// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QString>
#include <string_view>

namespace davo {

// The run is ended, by a signal or because its reader is gone, as "head" once it has its lines.
struct RunEnded {};

// Writes text to standard output, which has no buffer, in one go, so that rows of several runs that
// append to one file do not mix. Throws RunTimeError 61 when the disk is full, 57 for what else the
// system says, and RunEnded.
void WriteOutput(std::string_view text);

// What a run says on standard error: a line for each trouble and, on a terminal, how far it is.
class StandardError {
  public:
    // hasRows: there is no progress on a terminal that shows rows.
    explicit StandardError(bool hasRows);
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

}  // namespace davo
