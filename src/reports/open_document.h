#pragma once

#include <QString>

namespace davo {

// Opens the finished workbook at path with the program that this user's desktop has for its kind,
// and leaves it to the user. Returns at once; false when there is no such program or it does not
// start: then show NoProgramText.
bool ShowReportInExcel(const QString& path);

inline constexpr const char* kNoProgramText =
    "The report is finished, but this computer has no program that shows it. It is stored as ";

// kNoProgramText with the path as the user writes it.
QString NoProgramText(const QString& path);

}  // namespace davo
