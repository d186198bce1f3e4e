// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace davo {

// The steps of the functions in files.h that each platform does in its own way. Each returns what
// the system said; no error when all is done.

// What an error that one of these returned means, whatever the platform calls it.
std::error_condition MeaningOf(const std::error_code& error);

// The same in the system's words.
QString WordsOf(const std::error_code& error);

// Makes the folder and the ones above it that are missing.
std::error_code MakeFolders(const QString& path);

std::error_code RemoveFile(const QString& path);

// Appends the names in folder, hidden ones included, in the order of the system.
std::error_code ListNames(const QString& folder, std::vector<QString>& names);

// Appends the whole content of path to bytes.
std::error_code ReadBytes(const QString& path, std::string& bytes);

// Makes path with bytes, flushed to the disk, for the same users as the file like, if there is one,
// as far as that may be set. Where anything has that name already, be it a link to nowhere, the
// error is std::errc::file_exists, and nothing is opened.
std::error_code WriteNew(const QString& path, std::string_view bytes, const QString& like);

// Makes path in the same way as a copy of the file source with its time of change and, on Windows,
// its attributes.
std::error_code CopyNew(const QString& source, const QString& path);

// Removes what WriteNew or CopyNew left at path or found there, but no folder; of a link the link.
std::error_code RemoveLeftOver(const QString& path);

// Renames from to to, over a file that is there, and flushes the rename to the disk. On Windows a
// file that is read-only is not replaced.
std::error_code MoveOver(const QString& from, const QString& to);

// Waits until everything written to an open file is on the disk. descriptor is the C library's
// number of the file; false when the system could not do it.
bool FlushToDisk(int descriptor);

}  // namespace davo
