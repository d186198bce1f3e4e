// SPDX-License-Identifier: GPL-3.0-or-later
// The insertion of grid points against the same rules written pair by pair: the part of the grid
// that is inside a pair is found by binary search.

#include <algorithm>
#include <map>
#include <sstream>

#include "analysis/grid_points.h"
#include "common/run_time_error.h"
#include "tests/analysis/curve_source.h"
#include "tests/support/number_reference.h"
#include "tests/support/random_rounds.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using test::RandomCurve;

constexpr std::array kGrid = {0.01, 0.02, 0.04, 0.08, 0.1, 0.2, 0.4, 0.8, 1.0, 2.0, 4.0, 8.0, 10.0};

struct Fault {
    int number;
};

double Checked(double value) {
    if (!std::isfinite(value)) throw Fault{6};
    return value;
}

class Reference {
  public:
    explicit Reference(const RandomCurve& curve) : c_(curve) {}

    std::string Text() {
        const std::size_t pairs = c_.current.size() - 1;
        for (std::size_t pair = 0; pair < pairs; ++pair) {
            if (usedUp_) {
                PairBeyondTheGrid(pair);
            } else {
                TakePair(pair, pair + 1 == pairs);
            }
        }
        Put(c_.current.back(), c_.voltage.back());
        return std::to_string(count_) + ": " + out_.str();
    }

  private:
    void Put(double current, double voltage) {
        if (++count_ > 101) throw Fault{9};
        out_ << test::ReferencePicture(Checked(current), 1, 4) << ":"
             << test::ReferencePicture(Checked(voltage), 1, 1) << " ";
    }

    void TakePair(std::size_t pair, bool isLast) {
        const double low = c_.current[pair];
        const double high = c_.current[pair + 1];
        next_ = std::lower_bound(next_, kGrid.end(), low);
        if (next_ == kGrid.end() && isLast) return;
        if (next_ == kGrid.end()) return BeginBeyond(pair);
        Put(low, c_.voltage[pair]);
        if (*next_ == low) return;
        for (; next_ != kGrid.end() && *next_ <= high; ++next_) {
            const double part = Checked(*next_ - low) / Checked(high - low);
            const double rise = Checked(c_.voltage[pair + 1] - c_.voltage[pair]);
            Put(*next_, c_.voltage[pair] + part * rise);
        }
        if (next_ == kGrid.end() && !isLast) AfterTheLastGridCurrent(low, high);
    }

    // The grid ended before the pair's lower point, and the zero behind it is looked at.
    void BeginBeyond(std::size_t pair) {
        usedUp_ = true;
        PairBeyondTheGrid(pair);
    }

    void PairBeyondTheGrid(std::size_t pair) {
        const double low = c_.current[pair];
        if (low > 0) throw Fault{9};
        Put(low, c_.voltage[pair]);
        if (low < 0 && c_.current[pair + 1] >= 0) throw Fault{9};
    }

    // Ten amperes are in this pair; the zero behind the grid is looked at with the same pair.
    void AfterTheLastGridCurrent(double low, double high) {
        usedUp_ = true;
        if (low > 0 || (low < 0 && high >= 0)) throw Fault{9};
    }

    const RandomCurve& c_;
    std::array<double, 13>::const_iterator next_ = kGrid.begin();
    bool usedUp_ = false;
    int count_ = 0;
    std::ostringstream out_;
};

std::string ReferenceText(const RandomCurve& curve) {
    if (curve.current.empty()) return "error 9";
    try {
        return Reference(curve).Text();
    } catch (const Fault& fault) {
        return "error " + std::to_string(fault.number);
    }
}

std::string FoundText(const RandomCurve& curve) {
    try {
        const std::vector<CurvePoint> points = WithGridPoints(curve.current, curve.voltage);
        std::ostringstream out;
        out << points.size() << ": ";
        for (const CurvePoint& point : points) {
            out << test::ReferencePicture(point.current, 1, 4) << ":"
                << test::ReferencePicture(point.voltage, 1, 1) << " ";
        }
        return out.str();
    } catch (const RunTimeError& error) {
        return "error " + std::to_string(static_cast<int>(error.Number()));
    }
}

TEST(GridPointsRandom, AgreeWithTheReference) {
    const int curves = test::RandomRounds(120000);
    test::CurveSource source(test::RandomSeed(20240502));
    std::map<std::string, int> kinds;
    for (int n = 0; n < curves; ++n) {
        const RandomCurve curve = source.Next();
        const std::string found = FoundText(curve);
        ASSERT_EQ(found, ReferenceText(curve)) << "curve " << n;
        const int more = std::atoi(found.c_str()) - static_cast<int>(curve.current.size());
        const char* kind = more > 0 ? "more points" : more < 0 ? "fewer points" : "as many";
        ++kinds[found.starts_with("error") ? found : kind];
    }
    for (const auto& [kind, count] : kinds)
        std::cout << kind << ": " << count << "\n";
    for (const char* kind : {"more points", "fewer points", "as many", "error 6", "error 9"}) {
        EXPECT_GT(kinds[kind], test::RandomRounds(100)) << kind;
    }
}

}  // namespace
}  // namespace davo
