// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/reference_curve.h"

#include <QRegularExpression>
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>

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

// Takes the units that a line of the heading names.
void TakeUnits(const std::array<std::string, 2>& fields, std::array<QString, 2>& units) {
    for (std::size_t i = 0; i < units.size(); ++i) {
        const QString unit = UnitOf(fields.at(i));
        if (!unit.isEmpty()) units.at(i) = unit;
    }
}

}  // namespace

bool NamesUnits(std::string_view bytes) {
    std::array<QString, 2> units;
    for (const std::string& line : SplitLines(bytes)) {
        const std::array<std::string, 2> fields = FieldsOf(line);
        if (WholeNumericValue(fields[0])) break;
        TakeUnits(fields, units);
    }
    return (units[0].endsWith(u'A') && units[1].endsWith(u'V')) ||
           (units[0].endsWith(u'V') && units[1].endsWith(u'A'));
}

std::vector<CurvePoint> ParseReferenceCurve(std::string_view bytes, std::string_view typed) {
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
    std::array<QString, 2> units;
    TakeUnits(FieldsOf(std::string(typed)), units);
    std::vector<CurvePoint> points;
    std::size_t number = 0;
    for (const std::string& line : SplitLines(bytes)) {
        ++number;
        if (TrimBlanks(line).empty()) continue;
        const std::array<std::string, 2> fields = FieldsOf(line);
        const std::optional<double> first = WholeNumericValue(fields[0]);
        const std::optional<double> second = WholeNumericValue(fields[1]);
        const double left = first.value_or(0) * ScaleOf(units[0]);
        const double right = second.value_or(0) * ScaleOf(units[1]);
        if (first && second && std::isfinite(left) && std::isfinite(right)) {
            const bool isTurned = units[0].endsWith(u'V') && units[1].endsWith(u'A');
            points.push_back(isTurned ? CurvePoint{right, left} : CurvePoint{left, right});
        } else if (points.empty() && !first && !second) {
            TakeUnits(fields, units);
        } else {
            throw RunTimeError(ErrorNumber::TypeMismatch, "line " + std::to_string(number));
        }
    }
    if (points.empty()) throw RunTimeError(ErrorNumber::InputPastEnd, "no point in the file");
    return points;
}

}  // namespace davo
