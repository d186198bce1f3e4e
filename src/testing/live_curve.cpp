#include "testing/live_curve.h"

#include <charconv>
#include <utility>

#include "common/run_time_error.h"
#include "common/text.h"
#include "curves/record_tests.h"

namespace davo {

namespace {

constexpr int kShowInterval = 100;  // ms

std::optional<double> Number(std::string_view text) {
    const std::size_t from = text.find_first_not_of(' ');
    if (from == std::string_view::npos) return std::nullopt;
    double value = 0;
    const auto result = std::from_chars(text.data() + from, text.data() + text.size(), value);
    if (result.ec != std::errc() || !(value > 0)) return std::nullopt;
    return value;
}

}  // namespace

LiveCurve::LiveCurve(QWidget* parent) : chart_(new CurveChart(parent)) {
    chart_->setObjectName(QStringLiteral("chtLive"));
    chart_->SetInteractive(false);
    chart_->setFocusPolicy(Qt::NoFocus);
    // The window must not grow for it.
    chart_->setMinimumSize(1, 1);
    chart_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    chart_->hide();
    soon_.setSingleShot(true);
    soon_.setTimerType(Qt::PreciseTimer);
    soon_.setInterval(kShowInterval);
    QObject::connect(&soon_, &QTimer::timeout, chart_, [this] { Flush(); });
}

void LiveCurve::StartShot(bool ratioOnly) {
    if (complete_) {
        complete_->look = CurveLook::Faint;
        complete_->knees.clear();
        earlier_.push_back(*std::exchange(complete_, std::nullopt));
    }
    readings_.clear();
    ratioOnly_ = ratioOnly;
    ShowAllAgain();
}

void LiveCurve::AddReading(std::string_view current, std::string_view voltage) {
    const auto amperes = Number(current);
    const auto volts = Number(voltage);
    if (!amperes || !volts) return;
    if (readings_.size() >= kMostLiveReadings) {
        std::vector<CurvePoint> thinned;
        for (std::size_t i = 0; i < readings_.size(); i += 2)
            thinned.push_back(readings_[i]);
        readings_ = std::move(thinned);
        rebuild_ = true;
    }
    readings_.push_back({*amperes, *volts});
    ShowSoon();
}

void LiveCurve::CompleteShot(const std::string& capture) {
    if (ratioOnly_) return;
    try {
        const std::vector<RecordTest> tests = TestsOfCapture(capture);
        if (tests.empty() || tests.front().points.empty()) return;
        ChartCurve curve{
            QStringLiteral("Shot %1").arg(earlier_.size() + 1), tests.front().points, {}, {}};
        for (const KneeFact& fact : tests.front().knees) {
            if (const auto at = fact.At()) curve.knees.push_back({fact.rule, *at});
        }
        complete_ = std::move(curve);
        readings_.clear();
        ShowAllAgain();
    } catch (const RunTimeError&) {
        // The window says what is wrong with the record.
    }
}

void LiveCurve::DropShot() {
    complete_.reset();
    readings_.clear();
    ShowAllAgain();
}

bool LiveCurve::Wanted() const {
    return !ratioOnly_ && (!readings_.empty() || complete_ || !earlier_.empty());
}

void LiveCurve::ShowSoon() {
    if (!soon_.isActive()) soon_.start();
}

void LiveCurve::ShowAllAgain() {
    rebuild_ = true;
    ShowSoon();
}

void LiveCurve::Flush() {
    const std::size_t index = earlier_.size() + (complete_ ? 1 : 0);
    if (rebuild_) {
        std::vector<ChartCurve> curves = earlier_;
        if (complete_) curves.push_back(*complete_);
        curves.push_back({QStringLiteral("Readings"), readings_, {}, CurveLook::Readings});
        if (readings_.empty()) curves.pop_back();
        chart_->SetCurves(std::move(curves));
        rebuild_ = readings_.empty();
    } else {
        for (std::size_t i = shown_; i < readings_.size(); ++i)
            chart_->AppendPoint(index, readings_[i]);
    }
    shown_ = readings_.size();
}

}  // namespace davo
