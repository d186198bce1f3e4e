// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/live_curve.h"

#include <charconv>
#include <cmath>
#include <utility>

#include "common/run_time_error.h"
#include "common/text.h"
#include "reports/record_facts.h"
#include "reports/record_texts.h"
#include "testing/session_text.h"

namespace davo {

namespace {

constexpr int kShowInterval = 100;  // ms

std::optional<double> Number(std::string_view text) {
    const std::size_t from = text.find_first_not_of(' ');
    if (from == std::string_view::npos) return std::nullopt;
    double value = 0;
    const auto result = std::from_chars(text.data() + from, text.data() + text.size(), value);
    if (result.ec != std::errc() || !(value > 0) || std::isinf(value)) return std::nullopt;
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
    ratioOnly_ = ratioOnly;
    lost_ = false;
    ForgetResults();
}

void LiveCurve::AddReadings(std::string_view text) {
    if (unread_.size() > kMostLiveText) {
        unread_.clear();
        textEnds_.clear();
    }
    unread_ += text;
    textEnds_.push_back(unread_.size());
    ShowSoon();
}

const std::vector<CurvePoint>& LiveCurve::Readings() {
    ReadText();
    return readings_;
}

// Each text by itself: what one of them ends with is no part of the next.
void LiveCurve::ReadText() {
    std::size_t from = 0;
    for (const std::size_t end : textEnds_) {
        for (const Reading& reading :
             CompleteReadings(std::string_view(unread_).substr(from, end - from))) {
            const auto amperes = Number(reading.current);
            const auto volts = Number(reading.voltage);
            if (amperes && volts) AddReading({*amperes, *volts});
        }
        from = end;
    }
    unread_.clear();
    textEnds_.clear();
}

void LiveCurve::AddReading(CurvePoint reading) {
    if (readings_.size() >= kMostLiveReadings) {
        for (std::size_t i = 0; 2 * i < readings_.size(); ++i)
            readings_[i] = readings_[2 * i];
        readings_.resize((readings_.size() + 1) / 2);
        rebuild_ = true;
    }
    readings_.push_back(reading);
}

void LiveCurve::ForgetResults() {
    knees_.clear();
    polarity_.clear();
    ForgetReadings();
}

void LiveCurve::ForgetReadings() {
    unread_.clear();
    textEnds_.clear();
    readings_.clear();
    saturation_ = false;
    ShowAllAgain();
}

void LiveCurve::CompleteShot(const std::string& capture) {
    const auto none = KneesOf({});
    if (!ratioOnly_) knees_.assign(none.begin(), none.end());
    try {
        const std::vector<RecordTest> tests = TestsOfCapture(capture);
        if (tests.empty()) return;
        polarity_ = tests.front().polarity;
        if (ratioOnly_) return;
        knees_.assign(tests.front().knees.begin(), tests.front().knees.end());
        if (tests.front().points.empty()) return;
        // No name: a legend would take the room of the curve, and there is one of each look.
        ChartCurve curve{{}, tests.front().points, {}, {}};
        for (const KneeFact& fact : knees_) {
            if (const auto at = fact.At())
                curve.knees.push_back({fact.rule, *at, JudgedText(fact)});
        }
        complete_ = std::move(curve);
        ForgetReadings();
        // At once: whoever reads that the shot is complete looks at its own curve.
        soon_.stop();
        Flush();
    } catch (const RunTimeError&) {
        // The window says what is wrong with the record.
    }
}

void LiveCurve::DropShot() {
    complete_.reset();
    ForgetResults();
}

void LiveCurve::LoseShot() {
    lost_ = true;
    ShowAllAgain();
}

void LiveCurve::ShowSoon() {
    if (!soon_.isActive()) soon_.start();
}

void LiveCurve::ShowAllAgain() {
    rebuild_ = true;
    ShowSoon();
}

void LiveCurve::Flush() {
    ReadText();
    const std::size_t index = earlier_.size() + (complete_ ? 1 : 0);
    if (rebuild_) {
        std::vector<ChartCurve> curves = earlier_;
        if (complete_) curves.push_back(*complete_);
        curves.push_back({{}, readings_, {}, lost_ ? CurveLook::Faint : CurveLook::Readings});
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
