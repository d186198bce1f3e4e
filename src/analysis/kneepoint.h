// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace davo {

// The rules by which the kneepoint of an excitation curve is found.
enum class KneeRule { Asa1050, Ieee45, Ieee30 };

// In the order in which a report computes them.
inline constexpr std::array kKneeRules = {KneeRule::Asa1050, KneeRule::Ieee45, KneeRule::Ieee30};

// The rule of a label such as "ASA 10/50 Marker"; nothing for an unknown one.
std::optional<KneeRule> KneeRuleOf(std::string_view label);

// Volts and amperes as texts. "0" for both: no kneepoint was found; "N/A" for both: the curve
// begins to bend at its very first points.
struct Kneepoint {
    std::string voltage = "0";
    std::string current = "0";
    bool operator==(const Kneepoint&) const = default;
};

// The kneepoint of a curve, searched from its last point downward; current in amperes and voltage
// in volts, point 0 the lowest, both of the same length. Every pair of points has the slope ratio
// (relative change of current) / (relative change of voltage), rounded as text; where it falls
// below the rule's threshold the curve has its knee. The search is told in docs/kneepoints.md.
// Throws RunTimeError 9 (Subscript out of range) for a curve without points and 6 (Overflow) when
// a difference, a quotient or the result is not finite.
Kneepoint ComputeKneepoint(KneeRule rule, std::span<const double> current,
                           std::span<const double> voltage);

// A decimal text cut, not rounded, behind its first decimal; a text without a point is cut behind
// its first character.
std::string CutToOneDecimal(std::string_view text);

}  // namespace davo
