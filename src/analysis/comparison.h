// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "analysis/curve_point.h"
#include "analysis/kneepoint.h"
#include "analysis/limits.h"
#include "analysis/smooth_knee.h"

namespace davo {

// A curve that is compared, with its kneepoint by a smooth curve: a number, a range or neither.
struct ComparedCurve {
    std::vector<CurvePoint> points;  // in any order; those that are not above zero do not count
    std::optional<SmoothKnee> knee;
    std::optional<KneeRange> range;
};

// The curve of points with its smooth kneepoint by a rule. Takes some milliseconds.
ComparedCurve CurveToCompare(KneeRule rule, const std::vector<CurvePoint>& points);

// Where the kneepoint is for certain: the number give or take its uncertainty, or the range.
std::optional<KneeRange> KneeRangeOf(const ComparedCurve& curve);

// How far a value of the measured curve is from the reference's, at one place of both.
struct Deviation {
    double at = 0;  // amperes where voltages are compared, volts where currents are
    double ln = 0;  // ln(measured / reference)
    // As much of it as is open: half a step of each reading, 0.1 V or 0.1 mA, and the bend that a
    // smooth curve can have between two points; never below zero.
    double open = 0;

    double Percent() const;         // (measured - reference) / reference
    double CertainPercent() const;  // as much of it as is not open, without its sign
};

// One of the two values over the whole common range of the other. Between its points a curve is a
// straight line of ln V over ln I, so that no place between these deviates more.
struct ComparedValue {
    std::vector<Deviation> places;  // wherever a curve has a point, and at the knee; rising
    // The place that is farthest from the reference, in percent, by what is certain of it; nothing
    // where the curves are not compared.
    std::optional<Deviation> all;
    // The same below and above the reference's kneepoint; nothing where it has none or none is
    // there.
    std::optional<Deviation> below;
    std::optional<Deviation> above;
};

inline constexpr std::size_t kCommonPoints = 3;  // the fewest, of each of two curves

// The voltages of the smooth kneepoints of two curves.
struct KneeDifference {
    double percent = 0;           // of the reference's
    double uncertainPercent = 0;  // of both together; 19 of 20 are nearer
};

struct CurveComparison {
    // The end of a sentence where the curves are not compared: fewer than three points of different
    // currents are in the common range, or this is shorter than a quarter of a decade.
    std::string whyNot;
    ComparedValue voltage;               // at equal current; empty unless they are compared
    ComparedValue current;               // at equal voltage; empty where no voltages are common
    std::optional<KneeDifference> knee;  // where both curves have one, also if not compared
};

// Compares a measured curve with a reference (VoltageLine and CurrentLine say how points that are
// not in order are taken).
CurveComparison CompareCurves(const ComparedCurve& measured, const ComparedCurve& reference);

// The judgement of the voltage at equal current over the whole common range, by what is
// certain; None where the curves are not compared.
Verdict VerdictOf(const CurveComparison& comparison, std::optional<double> limitPercent);

// One sentence: the worst place with its number, the limit and what the readings leave open of it,
// or why the curves are not compared. Where nothing is certain it is the farthest place. of is
// behind what is compared, as " of 600:5".
std::string SentenceOf(const CurveComparison& comparison, std::optional<double> limitPercent,
                       const std::string& of = {}, const std::string& reference = "the reference");

// One sentence: how far the kneepoints are apart, or why that is not known. It has no verdict.
std::string KneeSentenceOf(const std::optional<KneeDifference>& knee);

}  // namespace davo
