// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QString>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "common/places.h"

namespace davo {

// "TESTFILE.txt" in the scratch folder.
inline constexpr const char* kCaptureFileName = "TESTFILE.txt";

// The raw file that a running session appends its shots to. Every Append is on the disk (flushed)
// when it returns. All functions throw RunTimeError: 76 no such folder, 70 permission denied, 61
// disk full, 57 any other device error.
class CaptureFile {
  public:
    // Creates path empty (an earlier file there is emptied; a link or a pipe is removed, not what a
    // link points to) and keeps it open for writing.
    void Create(const QString& path);
    bool IsOpen() const { return file_.isOpen(); }
    // Appends block whole and flushes it to the disk. When it fails, the file is cut back to the
    // length it had, so that a later try does not follow a part. Throws 52 when it is not open.
    void Append(std::string_view block);
    void Close();
    // Whether the file that was created is not there any more: it or its folder was deleted.
    bool IsGone() const;
    // Creates it once more, with every block that was appended, and keeps it open. A file that is
    // there is not touched: 70.
    void MakeAgain();
    QString Path() const { return ShownPath(file_.fileName()); }

  private:
    void Open(const QString& path, QIODevice::OpenModeFlag how);

    QFile file_;
    std::string blocks_;  // that were appended whole
};

// One shot as the capture file holds it.
struct CapturedShot {
    std::string hexText;         // between DATA and DONE, blanks and line ends removed
    std::string measuredRatio;   // line after DONE from character 17 on, as it is
    std::string nameplateRatio;  // next line from character 18 on, trimmed; "N/A" without one
    std::string percentError;    // next line from character 16 on, trimmed; "N/A" without one
    bool trailerWhole = false;   // the three lines are there, each with its line end
    std::size_t end = 0;  // offset behind the shot and an empty line after it, in bytes of the file
};

// The complete shots of a capture file's bytes, by the rules of WriteTestRecordFile: a line that
// contains "DATA" opens a shot and loses its first four characters, wherever the word is in
// it; "DONE" on that line or a later one ends the record; the three lines that follow are taken by
// their position. A record without its "DONE" is no shot.
std::vector<CapturedShot> CapturedShots(std::string_view bytes);

}  // namespace davo
