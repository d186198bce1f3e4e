// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/kneepoint.h"

#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/settings.h"

namespace davo {

namespace {

constexpr std::string_view kRelativeChangePicture = "####0.000";
constexpr std::string_view kRatioPicture = "####0.00";
constexpr std::string_view kVoltagePicture = "###0.0";
constexpr std::string_view kFinePicture = "###0.000";  // current, and voltage before it is cut

struct RuleValues {
    int step;          // 1: neighbouring points, 2: every other point
    double threshold;  // of the slope ratio
};

constexpr RuleValues ValuesOf(KneeRule rule) {
    switch (rule) {
        case KneeRule::Asa1050:
            return {2, 5.0};
        case KneeRule::Ieee45:
            return {1, 1.0};
        case KneeRule::Ieee30:
            return {1, 1.81};
    }
    return {};
}

// The search through the pairs of one curve, from the top downward.
class Search {
  public:
    Search(KneeRule rule, std::span<const double> current, std::span<const double> voltage)
        : rule_(rule), values_(ValuesOf(rule)), current_(current), voltage_(voltage) {}

    Kneepoint Run();

  private:
    double Current(int i) const { return current_[static_cast<std::size_t>(i)]; }
    double Voltage(int i) const { return voltage_[static_cast<std::size_t>(i)]; }
    double MiddleCurrent() const { return (Current(lower_) + Current(upper_)) / 2; }
    double MiddleVoltage() const { return (Voltage(lower_) + Voltage(upper_)) / 2; }

    void StepDown();
    void TakeUpperPoint();
    void ComputeRatio();
    void TakeBelow();
    void TakeExact();
    void TakeAbove();
    void Interpolate();

    KneeRule rule_;
    RuleValues values_;
    std::span<const double> current_;
    std::span<const double> voltage_;

    int upper_ = 0;
    int lower_ = 0;
    double upperCurrent_ = 0;
    double upperVoltage_ = 0;
    double dI_ = 0;
    double dV_ = 0;
    double ratio_ = 0;
    double aboveRatio_ = 0;
    double belowRatio_ = 0;
    bool firstBelow_ = true;
    bool done_ = false;
    bool crossed_ = false;
    Kneepoint result_;
};

void Search::StepDown() {
    --upper_;
    lower_ = upper_ - values_.step;
}

void Search::TakeUpperPoint() {
    upperCurrent_ = Current(upper_);
    upperVoltage_ = Voltage(upper_);
}

void Search::ComputeRatio() {
    dI_ = upperCurrent_ - Current(lower_);
    dV_ = upperVoltage_ - Voltage(lower_);
    const double relI = RoundByPicture(dI_ / Current(lower_), kRelativeChangePicture);
    const double relV = RoundByPicture(dV_ / Voltage(lower_), kRelativeChangePicture);
    // Two points of (nearly) the same voltage tell nothing: the pair above speaks for them.
    if (relV != 0) ratio_ = RoundByPicture(relI / relV, kRatioPicture);
}

void Search::TakeBelow() {
    if (upper_ == 2 && firstBelow_) {
        result_ = {"N/A", "N/A"};
        done_ = true;
    } else if (aboveRatio_ == 0 && firstBelow_) {
        firstBelow_ = false;
    } else {
        belowRatio_ = ratio_;
        crossed_ = aboveRatio_ != 0;
        done_ = crossed_;
    }
    if (done_) return;
    StepDown();
    TakeUpperPoint();
}

void Search::TakeExact() {
    done_ = true;
    switch (rule_) {
        case KneeRule::Asa1050:
            result_ = {Picture(Voltage(lower_), kVoltagePicture),
                       Picture(Current(lower_), kFinePicture)};
            break;
        case KneeRule::Ieee45:
            result_ = {Picture(MiddleVoltage(), kVoltagePicture),
                       Picture(MiddleCurrent(), kFinePicture)};
            break;
        case KneeRule::Ieee30:
            break;  // an exact hit has no kneepoint under this rule
    }
}

void Search::TakeAbove() {
    aboveRatio_ = ratio_;
    StepDown();
    TakeUpperPoint();
}

void Search::Interpolate() {
    const double f = (values_.threshold - belowRatio_) / (aboveRatio_ - belowRatio_);
    double voltage = MiddleVoltage() + f * dV_;
    double current = MiddleCurrent() + f * dI_;
    if (rule_ == KneeRule::Asa1050) {
        voltage = Voltage(lower_) + f * (Voltage(upper_ - 1) - Voltage(lower_));
        current = Current(lower_) + f * (Current(upper_ - 1) - Current(lower_));
    }
    result_ = {CutToOneDecimal(Picture(voltage, kFinePicture)), Picture(current, kFinePicture)};
}

Kneepoint Search::Run() {
    upper_ = static_cast<int>(current_.size()) - 1;
    lower_ = upper_ - values_.step;
    TakeUpperPoint();
    while (!done_ && lower_ >= 0) {
        if (Voltage(lower_) == 0 || Current(lower_) == 0) {
            StepDown();  // the upper point stays the one in use
            continue;
        }
        ComputeRatio();
        if (ratio_ < values_.threshold) {
            TakeBelow();
        } else if (ratio_ == values_.threshold) {
            TakeExact();
        } else {
            TakeAbove();
        }
    }
    if (crossed_) Interpolate();
    return result_;
}

}  // namespace

std::optional<KneeRule> KneeRuleOf(std::string_view label) {
    if (label == kKneeAsa) return KneeRule::Asa1050;
    if (label == kKneeIeee45) return KneeRule::Ieee45;
    if (label == kKneeIeee30) return KneeRule::Ieee30;
    return std::nullopt;
}

Kneepoint ComputeKneepoint(KneeRule rule, std::span<const double> current,
                           std::span<const double> voltage) {
    if (current.empty() || voltage.size() != current.size()) {
        throw RunTimeError(ErrorNumber::SubscriptOutOfRange);
    }
    return Search(rule, current, voltage).Run();
}

std::string CutToOneDecimal(std::string_view text) {
    const std::size_t point = text.find('.');
    return std::string(text.substr(0, point == std::string_view::npos ? 1 : point + 2));
}

}  // namespace davo
