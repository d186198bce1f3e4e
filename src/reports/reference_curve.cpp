// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/reference_curve.h"

#include <QRegularExpression>
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

#include "common/files.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"

namespace davo {

namespace {

// The two fields of a line; the second one has whatever is behind the first.
std::array<std::string, 2> FieldsOf(const std::string& line) {
    std::size_t end = line.find_first_of(";\t");
    const bool hasCommas = end != std::string::npos;
    if (!hasCommas) end = std::min(line.find(','), line.size());
    std::array<std::string, 2> fields = {line.substr(0, end),
                                         line.substr(std::min(end + 1, line.size()))};
    for (std::string& field : fields) {
        std::erase(field, '"');
        std::erase(field, '\t');
        if (hasCommas) std::ranges::replace(field, ',', '.');
    }
    return fields;
}

QString UnitOf(const std::string& heading) {
    static const QRegularExpression unit(QStringLiteral("(?<![A-Za-z])(mA|A|mV|V|kV)(?![A-Za-z])"));
    return unit.match(FromPage(heading)).captured(1);
}

double ScaleOf(const QString& unit) {
    if (unit.startsWith(QLatin1Char('m'))) return 1e-3;
    return unit.startsWith(QLatin1Char('k')) ? 1e3 : 1;
}

// Takes the units that the lines in front of the first number name.
void TakeUnits(std::string_view text, std::array<QString, 2>& units) {
    for (const std::string& line : SplitLines(text)) {
        const std::array<std::string, 2> fields = FieldsOf(line);
        if (WholeNumericValue(fields[0])) return;
        for (std::size_t i = 0; i < units.size(); ++i) {
            const QString unit = UnitOf(fields.at(i));
            if (!unit.isEmpty()) units.at(i) = unit;
        }
    }
}

bool AreAmperesAndVolts(const QString& one, const QString& other) {
    return one.endsWith(QLatin1Char('A')) && other.endsWith(QLatin1Char('V'));
}

}  // namespace

bool NamesUnits(std::string_view bytes) {
    std::array<QString, 2> units;
    TakeUnits(bytes, units);
    return AreAmperesAndVolts(units[0], units[1]) || AreAmperesAndVolts(units[1], units[0]);
}

std::vector<CurvePoint> ParseReferenceCurve(std::string_view bytes, std::string_view typed) {
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
    std::array<QString, 2> units;
    TakeUnits(typed, units);
    TakeUnits(bytes, units);
    std::vector<CurvePoint> points;
    std::size_t number = 0;
    bool hasPoint = false;
    bool hasComma = false;
    for (const std::string& line : SplitLines(bytes)) {
        const std::string place = "line " + std::to_string(++number);
        const std::array<std::string, 2> fields = FieldsOf(line);
        if (TrimBlanks(fields[0] + fields[1]).empty()) continue;
        const std::optional<double> first = WholeNumericValue(fields[0]);
        const std::optional<double> second = WholeNumericValue(fields[1]);
        if (points.empty() && !first && !second) continue;  // the heading
        const bool isParted = line.find_first_of(";\t") != std::string::npos;
        hasPoint |= isParted && Contains(line, ".");
        hasComma |= isParted && Contains(line, ",");
        // Nobody can tell which of them is that of the thousands.
        if (hasPoint && hasComma)
            throw RunTimeError(ErrorNumber::TypeMismatch,
                               place + ": " + "points and commas in the numbers");
        CurvePoint point{first.value_or(NAN) * ScaleOf(units[0]),
                         second.value_or(NAN) * ScaleOf(units[1])};
        if (!std::isfinite(point.current) || !std::isfinite(point.voltage))
            throw RunTimeError(ErrorNumber::TypeMismatch, place);
        if (AreAmperesAndVolts(units[1], units[0])) std::swap(point.current, point.voltage);
        points.push_back(point);
    }
    if (points.empty())
        throw RunTimeError(ErrorNumber::InputPastEnd, "no line with two numbers in the file");
    const auto isAboveZero = [](const CurvePoint& point) {
        return point.current > 0 && point.voltage > 0;
    };
    if (std::ranges::none_of(points, isAboveZero))
        throw RunTimeError(ErrorNumber::InputPastEnd, "no point above zero in the file");
    return points;
}

std::string ReferenceCurveText(const std::vector<CurvePoint>& points) {
    std::vector<std::string> lines{"A;V"};
    for (const CurvePoint& point : points)
        lines.push_back(GeneralNumber(point.current) + ";" + GeneralNumber(point.voltage));
    return JoinLines(lines);
}

}  // namespace davo
