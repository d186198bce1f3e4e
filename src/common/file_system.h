#pragma once

#include <QString>
#include <string_view>
#include <system_error>

namespace davo {

// The steps of ReplaceFile that each platform does in its own way. Both return what the system
// said; no error when all is done and on the disk.

// Makes path, or empties it, writes bytes and flushes them to the disk.
std::error_code WriteFlushed(const QString& path, std::string_view bytes);

// Renames from to to, over a file that is there, and flushes the rename to the disk.
std::error_code MoveOver(const QString& from, const QString& to);

}  // namespace davo
