// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/kneepoint.h"

#include "analysis/curve_point.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/settings.h"

namespace davo {

namespace {

constexpr std::string_view kRelativeChangePicture = "####0.000";
constexpr std::string_view kRatioPicture = "####0.00";
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
    Search(KneeRule rule, std::span<const double> current, std::span<const double> voltage,
           SearchPath* path)
        : rule_(rule), values_(ValuesOf(rule)), current_(current), voltage_(voltage), path_(path) {}

    Kneepoint Run();

  private:
    double Current(int i) const { return current_[static_cast<std::size_t>(i)]; }
    double Voltage(int i) const { return voltage_[static_cast<std::size_t>(i)]; }
    double MiddleCurrent() const { return (Current(lower_) + Current(upper_)) / 2; }
    double MiddleVoltage() const { return (Voltage(lower_) + Voltage(upper_)) / 2; }

    void StepDown();
    void TakeNextPair();
    void ComputeRatio();
    void TakeBelow();
    void TakeExact();
    void Interpolate();

    KneeRule rule_;
    RuleValues values_;
    std::span<const double> current_;
    std::span<const double> voltage_;

    SearchPath* path_;

    int upper_ = 0;
    int lower_ = 0;
    int from_ = 0;  // the upper point that the differences are taken from
    double ratio_ = 0;
    double aboveRatio_ = 0;
    double belowRatio_ = 0;
    bool firstBelow_ = true;
    SearchEnd end_ = SearchEnd::NoPair;
    Kneepoint result_;
};

void Search::StepDown() {
    --upper_;
    lower_ = upper_ - values_.step;
}

void Search::TakeNextPair() {
    StepDown();
    from_ = upper_;
}

void Search::ComputeRatio() {
    const double relI = RelativeChange(Current(lower_), Current(from_));
    const double relV = RelativeChange(Voltage(lower_), Voltage(from_));
    // Two points of (nearly) the same voltage tell nothing: the pair above speaks for them.
    if (relV != 0) ratio_ = RoundByPicture(relI / relV, kRatioPicture);
    if (!path_) return;
    path_->pairs.push_back(
        {static_cast<std::size_t>(lower_), static_cast<std::size_t>(from_), ratio_});
}

void Search::TakeBelow() {
    if (upper_ == 2 && firstBelow_) {
        result_ = NoKneepoint();
        end_ = SearchEnd::FirstPoints;
    } else if (aboveRatio_ != 0) {
        belowRatio_ = ratio_;
        end_ = SearchEnd::Crossed;
    } else {
        firstBelow_ = false;
        TakeNextPair();
    }
}

void Search::TakeExact() {
    end_ = SearchEnd::Exact;
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

void Search::Interpolate() {
    const double f = (values_.threshold - belowRatio_) / (aboveRatio_ - belowRatio_);
    double voltage = MiddleVoltage() + f * (Voltage(from_) - Voltage(lower_));
    double current = MiddleCurrent() + f * (Current(from_) - Current(lower_));
    if (rule_ == KneeRule::Asa1050) {
        voltage = Voltage(lower_) + f * (Voltage(upper_ - 1) - Voltage(lower_));
        current = Current(lower_) + f * (Current(upper_ - 1) - Current(lower_));
    }
    result_ = {CutToOneDecimal(Picture(voltage, kFinePicture)), Picture(current, kFinePicture)};
}

Kneepoint Search::Run() {
    upper_ = static_cast<int>(current_.size());
    TakeNextPair();
    while (end_ == SearchEnd::NoPair && lower_ >= 0) {
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
            aboveRatio_ = ratio_;
            TakeNextPair();
        }
    }
    if (end_ == SearchEnd::Crossed) Interpolate();
    if (path_) {
        path_->end = end_;
        path_->metAbove = aboveRatio_ != 0;
        path_->metBelow = !firstBelow_;
    }
    return result_;
}

}  // namespace

double KneeThreshold(KneeRule rule) {
    return ValuesOf(rule).threshold;
}

double RelativeChange(double from, double to) {
    return RoundByPicture((to - from) / from, kRelativeChangePicture);
}

std::optional<KneeRule> KneeRuleOf(std::string_view label) {
    if (label == kKneeAsa) return KneeRule::Asa1050;
    if (label == kKneeIeee45) return KneeRule::Ieee45;
    if (label == kKneeIeee30) return KneeRule::Ieee30;
    return std::nullopt;
}

Kneepoint ComputeKneepoint(KneeRule rule, std::span<const double> current,
                           std::span<const double> voltage, SearchPath* path) {
    if (current.empty() || voltage.size() != current.size()) {
        throw RunTimeError(ErrorNumber::SubscriptOutOfRange);
    }
    if (path) *path = {};
    return Search(rule, current, voltage, path).Run();
}

std::string CutToOneDecimal(std::string_view text) {
    const std::size_t point = text.find('.');
    return std::string(text.substr(0, point == std::string_view::npos ? 1 : point + 2));
}

}  // namespace davo
