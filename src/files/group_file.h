// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace davo {

// Everything here reads record files as comma-delimited fields (FieldReader): a comma
// ends a line like a line end does.

inline constexpr const char* kGroupFileName = "2Graphs.GRP";

// The tests of a record file as the operator chooses them: "TEST NUMBER:" and what is behind
// "REC NUMBER: ", one for each line that holds "REC NUMBER:".
std::vector<std::string> TestEntries(std::string_view recordFile);

// A test that was chosen for a graph.
struct OverlayTest {
    QString file;       // of the data folder
    double number = 0;  // of the record in it
};

// "T0012 - TEST NUMBER:3".
QString OverlayTestText(const QString& record, const QString& testEntry);

// The test of file that such an entry names; nothing when it names none.
std::optional<OverlayTest> OverlayTestOf(const QString& file, const QString& testEntry);

// The part of a group file that one test gives: the file's first twelve lines, then the record of
// that number up to the next one or the end; the header alone when there is no such record. Lines
// end with CR LF. Throws RunTimeError 62 when the file has no twelve lines.
std::string GroupPart(std::string_view recordFile, double number);

// Writes "2Graphs.GRP" of dataPath from both tests' record files there. Throws what GroupPart,
// ReadWholeFile and ReplaceFile throw; an earlier group file is then as it was.
void WriteGroupFile(const QString& dataPath, const OverlayTest& first, const OverlayTest& second);

}  // namespace davo
