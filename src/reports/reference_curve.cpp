// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/reference_curve.h"

#include <QRegularExpression>
#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <utility>

#include "common/files.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "reports/chart_curve.h"

namespace davo {

namespace {

// Whether the comma of a line is not what ends its first field.
bool HasDecimalComma(std::string_view line) {
    return line.find_first_of(";\t") != std::string_view::npos;
}

// The two fields of a line; the second one has whatever is behind the first.
std::array<std::string, 2> FieldsOf(std::string line) {
    std::erase(line, '"');
    if (HasDecimalComma(line)) std::ranges::replace(line, ',', '.');
    const std::size_t end = std::min(line.find_first_of(";\t,"), line.size());
    return {line.substr(0, end), std::string(Middle(line, end + 1))};
}

// The units of the two fields that the lines in front of the first number name.
std::array<QString, 2> UnitsOf(std::string_view text) {
    static const QRegularExpression named(QStringLiteral("(?<![A-Za-z])[mk]?[AV](?![A-Za-z])"));
    std::array<QString, 2> units;
    for (const std::string& line : SplitLines(text)) {
        const std::array<std::string, 2> fields = FieldsOf(line);
        if (WholeNumericValue(fields[0])) break;
        for (std::size_t i = 0; i < units.size(); ++i) {
            const QRegularExpressionMatch unit = named.match(FromPage(fields.at(i)));
            if (unit.hasMatch()) units.at(i) = unit.captured();
        }
    }
    return units;
}

// What a field says in amperes or volts; not a number where it has none.
double ValueOf(const std::string& field, const QString& unit) {
    const double scale = unit.startsWith(u'm') ? 1e-3 : unit.startsWith(u'k') ? 1e3 : 1;
    return WholeNumericValue(field).value_or(NAN) * scale;
}

bool AreAmperesAndVolts(const QString& one, const QString& other) {
    return one.endsWith(QLatin1Char('A')) && other.endsWith(QLatin1Char('V'));
}

}  // namespace

bool NamesUnits(std::string_view bytes) {
    const auto units = UnitsOf(bytes);
    return AreAmperesAndVolts(units[0], units[1]) || AreAmperesAndVolts(units[1], units[0]);
}

std::vector<CurvePoint> ParseReferenceCurve(std::string_view bytes, std::string_view typed) {
    if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
    const auto units = UnitsOf(std::string(typed) + '\n' + std::string(bytes));
    std::vector<CurvePoint> points;
    std::size_t number = 0;
    std::set<char> signs;  // of the lines that may have a decimal comma
    for (const std::string& line : SplitLines(bytes)) {
        ++number;
        const std::array<std::string, 2> fields = FieldsOf(line);
        CurvePoint point{ValueOf(fields[0], units[0]), ValueOf(fields[1], units[1])};
        // In the heading there is no number, and in an empty line nothing.
        if (points.empty() && std::isnan(point.current) && std::isnan(point.voltage)) continue;
        if (TrimBlanks(fields[0] + fields[1]).empty()) continue;
        if (HasDecimalComma(line)) signs.insert(line.begin(), line.end());
        // Nobody can tell which of them is that of the thousands.
        const bool isMixed = signs.contains('.') && signs.contains(',');
        const char* const why = isMixed ? ": points and commas in the numbers" : "";
        if (isMixed || !std::isfinite(point.current) || !std::isfinite(point.voltage))
            throw RunTimeError(ErrorNumber::TypeMismatch, "line " + std::to_string(number) + why);
        if (AreAmperesAndVolts(units[1], units[0])) std::swap(point.current, point.voltage);
        points.push_back(point);
    }
    if (std::ranges::none_of(points, CanBeDrawn))
        throw RunTimeError(ErrorNumber::InputPastEnd, "no line with two numbers above zero");
    return points;
}

std::string ReferenceCurveText(const std::vector<CurvePoint>& points) {
    std::vector<std::string> lines{"A;V"};
    for (const CurvePoint& point : points)
        lines.push_back(GeneralNumber(point.current) + ";" + GeneralNumber(point.voltage));
    return JoinLines(lines);
}

}  // namespace davo
