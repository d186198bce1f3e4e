// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/nameplate_file.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <sstream>
#include <vector>

#include "common/files.h"
#include "common/run_time_error.h"
#include "common/text.h"

namespace davo {

namespace {

// The heading, then a line for each serial number; none where there is no file.
std::vector<std::string> NameplateLines(const QString& folder) {
    const QString path = folder + QLatin1String(kNameplateFileName);
    std::string heading = "serial";
    for (const std::string_view field : kNameplateFields)
        heading.append("\t").append(field);
    if (!FileExists(path)) return {heading};
    std::vector<std::string> lines = ReadLines(path);
    for (std::size_t i = 0; i < std::max<std::size_t>(lines.size(), 1); ++i) {
        const bool is =
            i < lines.size() && (i > 0 || lines[i] == heading) &&
            std::count(lines[i].begin(), lines[i].end(), '\t') == std::ssize(kNameplateFields);
        if (is) continue;
        throw RunTimeError(ErrorNumber::TypeMismatch,
                           std::string(kNameplateFileName) + ", line " + std::to_string(i + 1));
    }
    return lines;
}

auto LineOf(std::vector<std::string>& lines, std::string_view serial) {
    return std::find_if(lines.begin() + 1, lines.end(), [&](const std::string& line) {
        return IsSameSerial(std::string_view(line).substr(0, line.find('\t')), serial);
    });
}

}  // namespace

bool IsSameSerial(std::string_view one, std::string_view other) {
    const QString key = FromPage(one).simplified().toCaseFolded();
    return !key.isEmpty() && key == FromPage(other).simplified().toCaseFolded();
}

NameplateTexts ReadNameplate(const QString& folder, std::string_view serial) {
    NameplateTexts texts;
    std::vector<std::string> lines = NameplateLines(folder);
    const auto line = LineOf(lines, serial);
    std::istringstream fields(line == lines.end() ? std::string() : *line);
    fields.ignore(std::numeric_limits<std::streamsize>::max(), '\t');
    for (std::string& text : texts)
        std::getline(fields, text, '\t');
    return texts;
}

void KeepNameplate(const QString& folder, std::string_view serial, const NameplateTexts& texts) {
    std::vector<std::string> lines = NameplateLines(folder);
    if (const auto before = LineOf(lines, serial); before != lines.end()) lines.erase(before);
    std::string line = ToPage(FromPage(serial).simplified()).value_or("");
    for (const std::string& text : texts)
        line.append("\t").append(text);
    const auto isTyped = [](const std::string& text) { return !text.empty(); };
    if (std::ranges::any_of(texts, isTyped)) lines.push_back(line);
    ReplaceFile(folder + QLatin1String(kNameplateFileName), JoinLines(lines));
}

}  // namespace davo
