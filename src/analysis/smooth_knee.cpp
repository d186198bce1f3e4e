// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/smooth_knee.h"

#include <algorithm>
#include <cmath>

namespace davo {

namespace {

const double kMoreVoltage = std::log(1.1);
const double kMoreCurrent = std::log(1.5);
constexpr double kCertainty = 2;          // standard deviations
constexpr double kMostNumber = 1e9;       // of volts and amperes; no curve has more
constexpr double kMostUncertainty = 0.1;  // of the voltage; a number that is worse is none
constexpr double kLeastBend =
    1e-3;  // change of slope over one ln I, that no uncertainty is endless

// A rule on a curve.
class RuleOnCurve {
  public:
    RuleOnCurve(KneeRule rule, const SmoothCurve& curve)
        : isAsa_(rule == KneeRule::Asa1050),
          limit_(isAsa_ ? kMoreVoltage / kMoreCurrent : 1 / KneeThreshold(rule)),
          curve_(curve) {}

    SmoothVerdict Verdict() const;

  private:
    // ln I of the highest place that the rule can look at.
    double Last() const { return curve_.Last() - (isAsa_ ? kMoreCurrent : 0); }
    // By how much the curve is bent more than the limit at ln I; below zero where it is less.
    double Excess(double lnI) const;
    std::optional<double> Crossing() const;
    // Fills knee or range.
    void PutKnee(SmoothVerdict& verdict, double lnI) const;
    // Standard deviation of ln V at the place: it moves along the curve as the bend moves.
    double Deviation(double lnI) const;

    bool isAsa_;
    double limit_;  // slope
    const SmoothCurve& curve_;
};

double RuleOnCurve::Excess(double lnI) const {
    if (!isAsa_) return limit_ - curve_.Slope(lnI);
    return kMoreVoltage - (curve_.LnVoltage(lnI + kMoreCurrent) - curve_.LnVoltage(lnI));
}

std::optional<double> RuleOnCurve::Crossing() const {
    constexpr int kSteps = 200;
    const double step = (Last() - curve_.First()) / kSteps;
    if (step <= 0) return std::nullopt;
    double above = Excess(Last());
    for (int k = kSteps; k-- > 0;) {
        double low = curve_.First() + k * step;
        const double below = Excess(low);
        if (above <= 0 || below > 0) {
            above = below;
            continue;
        }
        double high = low + step;
        constexpr int kHalvings = 20;
        for (int n = 0; n < kHalvings; ++n) {
            const double middle = (low + high) / 2;
            (Excess(middle) > 0 ? high : low) = middle;
        }
        return high;
    }
    return std::nullopt;
}

double RuleOnCurve::Deviation(double lnI) const {
    const double slope = curve_.Slope(lnI);
    if (isAsa_) {
        const double bend = std::max(slope - curve_.Slope(lnI + kMoreCurrent), kLeastBend);
        return curve_.Deviation(
            {{lnI, false, 1 - slope / bend}, {lnI + kMoreCurrent, false, slope / bend}});
    }
    constexpr double kNear = 0.05;
    const double bend =
        std::max((curve_.Slope(lnI - kNear) - curve_.Slope(lnI + kNear)) / (2 * kNear), kLeastBend);
    return curve_.Deviation({{lnI, false, 1}, {lnI, true, slope / bend}});
}

void RuleOnCurve::PutKnee(SmoothVerdict& verdict, double lnI) const {
    const double voltage = std::exp(curve_.LnVoltage(lnI));
    const double current = std::exp(lnI);
    const double open = std::expm1(kCertainty * Deviation(lnI));
    const double lowest = std::exp(curve_.LowestLnVoltage());
    const double highest = std::exp(curve_.HighestLnVoltage());
    // Between two points that are far from each other a curve can rise above both.
    constexpr double kAbove = 1.05;
    const bool isThere =
        voltage < kAbove * highest && highest < kMostNumber && current < kMostNumber;
    if (!isThere || !std::isfinite(open)) return;
    if (open <= kMostUncertainty) {
        verdict.knee = {{current, voltage}, std::max(open * voltage, 0.1)};
        return;
    }
    verdict.range = {std::max(voltage / (1 + open), lowest),
                     std::min(voltage * (1 + open), highest)};
}

SmoothVerdict RuleOnCurve::Verdict() const {
    SmoothVerdict verdict;
    if (!curve_.Exists()) return verdict;
    verdict.isBent = curve_.IsSurelyFlatter(limit_, curve_.First()) ||
                     (Last() > curve_.First() && Excess(Last()) > 0);
    verdict.reach = std::exp(Last());
    const std::optional<double> lnI = Crossing();
    if (!lnI) return verdict;
    const bool isSure =
        curve_.IsSurelySteeper(limit_, *lnI) && curve_.IsSurelyFlatter(limit_, *lnI);
    if (isSure) PutKnee(verdict, *lnI);
    if (isSure && !verdict.knee && !verdict.range) verdict.reach = 0;
    verdict.isOpen = !isSure;
    return verdict;
}

}  // namespace

SmoothVerdict SmoothKneepoint(KneeRule rule, const SmoothCurve& curve) {
    return RuleOnCurve(rule, curve).Verdict();
}

}  // namespace davo
