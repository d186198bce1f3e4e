// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/knee_doubt.h"
#include "curves/curve_chart.h"

class QWidget;

namespace davo {

// How many readings of a shot are kept; beyond that every other one is left out.
inline constexpr std::size_t kMostLiveReadings = 20000;

// So much text is kept until it is read, ten thousand times what the line delivers meanwhile.
inline constexpr std::size_t kMostLiveText = 2'000'000;

// The curve of the shot under way beside the prompt, the session's earlier shots faint behind it.
// What arrives is only kept; the chart is brought up to date ten times a second at most.
class LiveCurve {
  public:
    // The chart belongs to parent. It takes no focus and asks for no room.
    explicit LiveCurve(QWidget* parent);

    // A shot begins. The one that was complete is an earlier one from now on.
    void StartShot(bool ratioOnly);
    // Its saturation test has begun.
    void BeginSaturation() { saturation_ = true; }
    // Text of the saturation test with complete readings in it. It is kept as it is and read when
    // the chart is brought up to date; a reading that is no number above zero is left out. Of a
    // flood only the end is kept.
    void AddReadings(std::string_view text);
    // The shot's own points and kneepoints replace the readings; capture is its block of the
    // capture file. Of a record that cannot be read the readings stay.
    void CompleteShot(const std::string& capture);
    // The shot under way or just complete does not count.
    void DropShot();
    // The shot under way does not go on; its readings stay, faint, until the next one begins.
    void LoseShot();

    // Whether there is something to show, had the window room for it.
    bool Wanted() const { return !ratioOnly_ && (saturation_ || complete_ || !earlier_.empty()); }

    // Those of the shot that is complete, "N/A" where its record cannot be read; none without a
    // saturation test.
    const std::vector<KneeFact>& Knees() const { return knees_; }
    // What its record says, "IN PHASE"; empty where it cannot be read.
    const std::string& Polarity() const { return polarity_; }
    CurveChart* Chart() const { return chart_; }
    const std::vector<CurvePoint>& Readings();

  private:
    void ReadText();
    void AddReading(CurvePoint reading);
    void ForgetResults();
    void ForgetReadings();
    void ShowSoon();
    void ShowAllAgain();
    void Flush();

    CurveChart* chart_;
    QTimer soon_;
    std::vector<ChartCurve> earlier_;
    std::optional<ChartCurve> complete_;
    std::vector<KneeFact> knees_;
    std::string polarity_;
    std::string unread_;                 // texts of AddReadings
    std::vector<std::size_t> textEnds_;  // in unread_
    std::vector<CurvePoint> readings_;
    std::size_t shown_ = 0;  // of readings_
    bool rebuild_ = true;
    bool ratioOnly_ = true;  // until the first shot
    bool saturation_ = false;
    bool lost_ = false;
};

}  // namespace davo
