// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/grid_points.h"

#include <cmath>

#include "common/numbers.h"
#include "common/run_time_error.h"

namespace davo {

namespace {

constexpr const char* kPointsAboveGrid =
    "the points of a test at 10 A or above do not fit a report. The record panel and its CSV file "
    "show the test.";

double Finite(double value) {
    if (!std::isfinite(value)) throw RunTimeError(ErrorNumber::Overflow);
    return value;
}

// Walks along a curve and the grid together.
class GridWalk {
  public:
    GridWalk(std::span<const double> current, std::span<const double> voltage)
        : current_(current), voltage_(voltage), last_(current.size() - 1) {}

    std::vector<CurvePoint> Run();

  private:
    double Grid() const;
    void Add(double current, double voltage);
    void CopyPoint();
    void NextPoint();
    void NextGridCurrent();

    std::span<const double> current_;
    std::span<const double> voltage_;
    std::size_t last_;
    std::size_t i_ = 0;
    std::size_t g_ = 0;
    bool copied_ = false;  // point i_ is in the new curve
    std::vector<CurvePoint> points_;
};

double GridWalk::Grid() const {
    if (g_ >= kGridCurrents.size())
        throw RunTimeError(ErrorNumber::SubscriptOutOfRange, kPointsAboveGrid);
    return kGridCurrents.at(g_);
}

void GridWalk::Add(double current, double voltage) {
    if (points_.size() == kPointsPerTest) throw RunTimeError(ErrorNumber::SubscriptOutOfRange);
    points_.push_back(
        {RoundByPicture(current, kPointPicture), RoundByPicture(voltage, kVoltagePicture)});
}

void GridWalk::CopyPoint() {
    if (copied_) return;
    Add(current_[i_], voltage_[i_]);
    copied_ = true;
}

void GridWalk::NextPoint() {
    ++i_;
    copied_ = false;
}

void GridWalk::NextGridCurrent() {
    constexpr std::size_t kGridEnd = kGridCurrents.size() - 1;
    ++g_;
    if (i_ + 1 == last_ && g_ == kGridEnd) ++i_;
}

std::vector<CurvePoint> GridWalk::Run() {
    while (i_ < last_) {
        const double grid = Grid();
        const double from = current_[i_];
        const double to = current_[i_ + 1];
        if (grid < from) {
            NextGridCurrent();
        } else if (grid == from || grid > to) {
            CopyPoint();
            NextPoint();
        } else {
            CopyPoint();
            const double part = Finite(grid - from) / Finite(to - from);
            Add(grid, voltage_[i_] + part * Finite(voltage_[i_ + 1] - voltage_[i_]));
            NextGridCurrent();
        }
    }
    Add(current_[last_], voltage_[last_]);
    return std::move(points_);
}

}  // namespace

std::vector<CurvePoint> WithGridPoints(std::span<const double> current,
                                       std::span<const double> voltage) {
    if (current.empty() || voltage.size() != current.size()) {
        throw RunTimeError(ErrorNumber::SubscriptOutOfRange);
    }
    return GridWalk(current, voltage).Run();
}

}  // namespace davo
