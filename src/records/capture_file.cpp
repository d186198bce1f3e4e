// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/capture_file.h"

#include <QDir>
#include <QFileInfo>
#include <QScopeGuard>
#include <QStorageInfo>
#include <utility>

#include "common/file_system.h"
#include "common/files.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/line_cursor.h"
#include "records/record_keys.h"

namespace davo {

namespace {

[[noreturn]] void ThrowError(ErrorNumber number, const QString& path) {
    throw RunTimeError(number, QDir::toNativeSeparators(path).toStdString());
}

ErrorNumber OpeningError(const QFile& file) {
    if (!QFileInfo(file.fileName()).dir().exists()) return ErrorNumber::PathNotFound;
    if (file.error() == QFileDevice::PermissionsError) return ErrorNumber::PermissionDenied;
    // Not every system says that a file, which is there, is in use or may not be written.
    if (QFileInfo(file.fileName()).isFile()) return ErrorNumber::PermissionDenied;
    return ErrorNumber::DeviceInputOutput;
}

// Not every system names a full disk as the reason of a failed write, hence the look at the room.
ErrorNumber WritingError(const QFile& file, std::size_t wanted) {
    // -1 where it cannot be told.
    const qint64 room = QStorageInfo(QFileInfo(file.fileName()).path()).bytesAvailable();
    const bool full = file.error() == QFileDevice::ResourceError ||
                      (room >= 0 && room < static_cast<qint64>(wanted));
    return full ? ErrorNumber::DiskFull : ErrorNumber::DeviceInputOutput;
}

// A write may take a part only; the next one then takes the rest or tells the reason.
bool WriteAll(QFile& file, std::string_view block) {
    while (!block.empty()) {
        const qint64 written = file.write(block.data(), static_cast<qint64>(block.size()));
        if (written <= 0) return false;
        block.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// The three lines behind a record; what is missing there reads as "no value".
void TakeTrailer(LineCursor& lines, CapturedShot& shot) {
    const auto behind = [](std::string_view text, std::string_view key) {
        return Middle(text, key.size() + 1);
    };
    std::string_view line;
    lines.Next(line);
    shot.measuredRatio = behind(line, kMeasuredRatioKey);
    shot.nameplateRatio = lines.Next(line) ? TrimBlanks(behind(line, kNameplateRatioKey)) : "N/A";
    shot.percentError = lines.Next(line) ? TrimBlanks(behind(line, kPercentErrorKey)) : "N/A";
    shot.trailerWhole = lines.LineEnded();
    LineCursor ahead = lines;
    if (ahead.Next(line) && line.empty()) lines = ahead;
    shot.end = lines.Offset();
}

}  // namespace

void CaptureFile::Create(const QString& path) {
    blocks_.clear();
    // A link or a pipe of that name is neither followed nor waited for.
    Open(path, RemoveLinkOrPipe(path) ? QIODevice::NewOnly : QIODevice::Truncate);
}

void CaptureFile::Open(const QString& path, QIODevice::OpenModeFlag how) {
    Close();
    file_.setFileName(path);
    // Unbuffered, so that nothing of a block that failed waits for a later flush.
    if (!file_.open(QIODevice::WriteOnly | QIODevice::Unbuffered | how)) {
        ThrowError(OpeningError(file_), path);
    }
}

void CaptureFile::Append(std::string_view block) {
    if (!IsOpen()) throw RunTimeError(ErrorNumber::BadFileNameOrNumber);
    file_.unsetError();
    const auto length = static_cast<qint64>(blocks_.size());
    const auto cutBack = [this, length] { return file_.resize(length) && file_.seek(length); };
    // A part that an earlier failure could not cut off is cut off now.
    const bool whole = (file_.size() == length || cutBack()) && WriteAll(file_, block) &&
                       FlushToDisk(file_.handle());
    if (!whole) {
        const ErrorNumber number = WritingError(file_, block.size());
        cutBack();
        ThrowError(number, Path());
    }
    blocks_ += block;
}

bool CaptureFile::IsGone() const {
    return !file_.fileName().isEmpty() && !FileExists(file_.fileName());
}

void CaptureFile::MakeAgain() {
    // What may be back by now is not to be emptied.
    Open(file_.fileName(), QIODevice::NewOnly);
    std::string blocks = std::exchange(blocks_, {});
    const auto restore = qScopeGuard([&] { blocks_ = std::move(blocks); });
    try {
        Append(blocks);
    } catch (const RunTimeError&) {
        // A part of it must not pass for the file that was lost.
        file_.remove();
        throw;
    }
}

void CaptureFile::Close() {
    if (file_.isOpen()) file_.close();
}

std::vector<CapturedShot> CapturedShots(std::string_view bytes) {
    std::vector<CapturedShot> shots;
    std::string hexText;
    bool accumulating = false;
    LineCursor lines(bytes);
    for (std::string_view line; lines.Next(line);) {
        if (!accumulating) {
            if (!Contains(line, kRecordStart)) continue;
            line = Middle(line, kRecordStart.size());
            accumulating = true;
        }
        const std::size_t stop = line.find(kRecordEnd);
        hexText += RemoveBlanksAndLineEnds(line.substr(0, stop));
        if (stop == std::string_view::npos) continue;
        CapturedShot& shot = shots.emplace_back();
        shot.hexText = std::move(hexText);
        TakeTrailer(lines, shot);
        hexText.clear();
        accumulating = false;
    }
    return shots;
}

}  // namespace davo
