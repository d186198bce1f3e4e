// SPDX-License-Identifier: GPL-3.0-or-later
// A maker's curve as anybody may have saved it: it is refused with the number of its line, or every
// line behind the headings is a point whose values are numbers, and the curve is the same however
// its columns are written.
#include "reports/reference_curve.h"

#include <cmath>

#include "analysis/comparison.h"
#include "common/files.h"
#include "common/numbers.h"
#include "common/text.h"
#include "fuzz/fuzzing.h"

namespace {

using namespace davo;
using fuzz::Require;
using Points = std::vector<CurvePoint>;

std::vector<std::string> FilledLines(std::string_view bytes) {
    std::vector<std::string> lines = SplitLines(bytes);
    // A spreadsheet writes an empty row as separators, perhaps with quotes.
    std::erase_if(lines, [](std::string line) {
        std::erase_if(line, [](char sign) {
            return sign == ';' || sign == ',' || sign == '\t' || sign == '"';
        });
        return TrimBlanks(line).empty();
    });
    return lines;
}

// What the refusal of a line says; the line is one of the file's.
void CheckRefusal(const std::string& text, std::size_t lines) {
    constexpr std::string_view kLine = ": line ";
    const std::size_t at = text.find(kLine);
    if (at == std::string::npos) {
        Require(text.ends_with(": no line with two numbers above zero"), text);
        return;
    }
    const double number = NumericValue(text.substr(at + kLine.size()));
    Require(number >= 1 && number <= static_cast<double>(lines), text);
}

std::string Written(const Points& points, const std::string& heading, char between, bool comma) {
    std::string text = heading;
    for (const CurvePoint& point : points) {
        std::string current = GeneralNumber(point.current);
        std::string voltage = GeneralNumber(point.voltage);
        if (comma) {
            std::replace(current.begin(), current.end(), '.', ',');
            std::replace(voltage.begin(), voltage.end(), '.', ',');
        }
        text += current + between + voltage + "\r\n";
    }
    return text;
}

Points Turned(Points points) {
    for (CurvePoint& point : points)
        std::swap(point.current, point.voltage);
    return points;
}

// Text has 15 digits, so that the first time of writing may round.
void CheckWrittenAgain(const Points& points) {
    const std::string text = Written(points, "A,V\r\n", ',', false);
    const Points again = ParseReferenceCurve(text);
    Require(again.size() == points.size(), "each point is read again");
    for (std::size_t i = 0; i < points.size(); ++i) {
        const auto isNear = [](double one, double other) {
            return std::abs(one - other) <= 1e-14 * std::abs(one) + 1e-300;
        };
        Require(isNear(points[i].current, again[i].current), "a current is read again");
        Require(isNear(points[i].voltage, again[i].voltage), "a voltage is read again");
    }
    Require(Written(again, "A,V\r\n", ',', false) == text, "the text is the same again");
    for (const char between : {';', '\t'}) {
        for (const bool comma : {false, true})
            Require(ParseReferenceCurve(Written(points, "", between, comma)) == again,
                    "a curve is the same with other signs");
    }
    Require(ParseReferenceCurve(Written(Turned(points), "V;A\n", ';', true)) == again,
            "a curve is the same with its columns turned");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const bool withKnee = input.Below(16) == 0;
    const auto rule = static_cast<KneeRule>(input.Below(3));
    const std::string bytes = input.Rest();
    const std::vector<std::string> lines = FilledLines(bytes);
    Points points;
    const bool isRead = fuzz::Runs({13, 62}, [&] {
        try {
            points = ParseReferenceCurve(bytes);
        } catch (const RunTimeError& error) {
            CheckRefusal(error.what(), SplitLines(bytes).size());
            throw;
        }
    });
    if (!isRead) return 0;
    Require(!points.empty() && points.size() <= lines.size(), "a line has one point");
    for (const CurvePoint& point : points)
        Require(std::isfinite(point.current) && std::isfinite(point.voltage), "values are numbers");
    std::string behindHeadings;
    for (std::size_t i = lines.size() - points.size(); i < lines.size(); ++i)
        behindHeadings += lines[i] + '\n';
    if (points.size() < lines.size())
        Require(ParseReferenceCurve(behindHeadings).size() == points.size(), "no line is lost");
    CheckWrittenAgain(points);
    if (withKnee) fuzz::Runs({6}, [&] { CurveToCompare(rule, points); });
    return 0;
}
