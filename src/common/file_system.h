// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <string>
#include <string_view>
#include <system_error>

namespace davo {

// The steps of the functions in files.h that each platform does in its own way. Each returns what
// the system said; no error when all is done.

// What an error that one of these returned means, whatever the platform calls it.
std::error_condition MeaningOf(const std::error_code& error);

// Makes the folder and the ones above it that are missing.
std::error_code MakeFolders(const QString& path);

std::error_code RemoveFile(const QString& path);

// Appends the whole content of path to bytes.
std::error_code ReadBytes(const QString& path, std::string& bytes);

// Makes path, or empties it, writes bytes and flushes them to the disk.
std::error_code WriteFlushed(const QString& path, std::string_view bytes);

// Renames from to to, over a file that is there, and flushes the rename to the disk.
std::error_code MoveOver(const QString& from, const QString& to);

}  // namespace davo
