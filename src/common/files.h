// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <string>
#include <string_view>
#include <vector>

namespace davo {

// Unless it says so, every function here throws RunTimeError with the number of what the system
// said: 53 no such file, 76 no such folder, 70 permission denied, 61 disk full, 52 a name that
// cannot be, 57 any other device error.

bool FileExists(const QString& path);
bool FolderExists(const QString& path);

// Makes the folder and the ones above it that are missing.
void CreateFolder(const QString& path);

// The names of all files and folders in a folder, in no order.
std::vector<QString> NamesInFolder(const QString& path);

// Deletes a file; one that is not there is error 53.
void DeleteFile(const QString& path);

// Removes a link (not what it points to) or a pipe that has the name of a file which others than
// the functions here are about to make: they would follow the one and wait for the other. True when
// there was one.
bool RemoveLinkOrPipe(const QString& path);

// The whole content of a file as bytes.
std::string ReadWholeFile(const QString& path);

// The lines of bytes without their line ends: CR LF or a bare LF; a last line without one counts.
std::vector<std::string> SplitLines(std::string_view bytes);

std::vector<std::string> ReadLines(const QString& path);

// lines joined, each ended by CR LF.
std::string JoinLines(const std::vector<std::string>& lines);

// Replaces path by bytes: written beside it, flushed to the disk, renamed over it. A kill or an
// error at any instant leaves the old file or the new one, never a part.
void ReplaceFile(const QString& path, std::string_view bytes);

// Puts a copy of the file source, content and time of change, in the place of target in the same
// way. On Windows the attributes go with it, and a target that is read-only is not replaced. Throws
// nothing: the result is why it could not, in the system's words; empty when it is copied.
QString CopyFileOver(const QString& source, const QString& target);

}  // namespace davo
