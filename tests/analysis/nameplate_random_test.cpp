// SPDX-License-Identifier: GPL-3.0-or-later
// Nameplates and curves at random, judged once more by a program that knows the formulas only.

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iomanip>

#include "analysis/nameplate.h"
#include "tests/analysis/true_curves.h"
#include "tests/support/program_output.h"
#include "tests/support/random_rounds.h"
#include "tests/support/random_seed.h"
#include "tests/support/temporary_folder.h"

namespace davo {
namespace {

class NameplateSource {
  public:
    explicit NameplateSource(std::uint64_t seed) : random_(seed) {}

    bool OneOf(int count) { return std::uniform_int_distribution(1, count)(random_) == 1; }
    double Between(double low, double high) {
        return std::uniform_real_distribution(low, high)(random_);
    }
    // A record, in any order, with readings that are none.
    std::vector<CurvePoint> Points() {
        const int family = std::uniform_int_distribution(0, 9)(random_);
        const test::TrueCurve core =
            test::RandomTrueCurve(test::kFamilies.at(static_cast<std::size_t>(family)), random_);
        std::vector<CurvePoint> points;
        const int count = std::uniform_int_distribution(2, 32)(random_);
        for (const CurvePoint& point : test::TakeRecord(core, {count, 0, 20}, random_)) {
            if (points.empty() ||
                (point.current > points.back().current && point.voltage > points.back().voltage))
                points.push_back(point);
        }
        if (OneOf(50)) points.clear();
        if (OneOf(4)) points.push_back({0, 10});
        if (OneOf(4)) std::shuffle(points.begin(), points.end(), random_);
        return points;
    }
    // Near a number, at it, far away, none at all, or nothing.
    std::optional<double> Near(double number) {
        if (OneOf(6)) return std::nullopt;
        if (OneOf(20)) return OneOf(2) ? 0 : -number;
        if (OneOf(4)) return number * std::exp(Between(-3, 3));
        return number * (OneOf(4) ? 1 : Between(0.97, 1.03));
    }

  private:
    std::mt19937_64 random_;
};

Nameplate NameplateOf(NameplateSource& source, const ComparedCurve& curve) {
    const CurvePoint place =
        curve.points.empty() ? CurvePoint{0.1, 100} : curve.points[curve.points.size() * 2 / 3];
    const std::optional<KneeRange> knee = KneeRangeOf(curve);
    Nameplate plate;
    plate.kind = static_cast<AccuracyClass>(source.Between(0, 3.999));
    plate.secondary = source.OneOf(20) ? 0 : source.OneOf(2) ? 1 : 5;
    plate.rct = source.Near(1);
    plate.kneeVoltage = source.Near(!knee             ? place.voltage
                                    : source.OneOf(2) ? knee->low
                                                      : knee->high);
    plate.kneeCurrent = source.Near(place.current);
    plate.turnsRatio = source.Near(240);
    plate.ratioLimitPercent = source.OneOf(2) ? 0.25 : source.Between(-0.1, 3);
    plate.alf = source.Near(20);
    plate.burdenVa = source.Near(source.Between(1, 100));
    plate.connectedOhm = source.Near(0.6);
    plate.cVoltage = source.Near(400);
    return plate;
}

// As a line of JSON.
void PutCase(std::ostream& file, const Nameplate& plate, const ComparedCurve& curve,
             std::optional<double> ratio) {
    const auto list = [&file](const std::vector<std::optional<double>>& values) {
        file << '[';
        for (std::size_t k = 0; k < values.size(); ++k) {
            file << (k == 0 ? "" : ",");
            if (values[k]) file << *values[k];
            if (!values[k]) file << "null";
        }
        file << ']';
    };
    file << "{\"kind\":" << static_cast<int>(plate.kind) << ",\"plate\":";
    list({plate.secondary, plate.rct, plate.kneeVoltage, plate.kneeCurrent, plate.turnsRatio,
          plate.ratioLimitPercent, plate.alf, plate.burdenVa, plate.connectedOhm, plate.cVoltage,
          ratio});
    file << ",\"knee\":";
    const std::optional<KneeRange> knee = KneeRangeOf(curve);
    list({knee ? std::optional(knee->low) : std::nullopt,
          knee ? std::optional(knee->high) : std::nullopt});
    file << ",\"points\":[";
    for (std::size_t k = 0; k < curve.points.size(); ++k) {
        file << (k == 0 ? "" : ",");
        list({curve.points[k].current, curve.points[k].voltage});
    }
    file << "],\"findings\":[";
    const std::vector<Finding> findings = JudgeNameplate(plate, curve, ratio);
    for (std::size_t k = 0; k < findings.size(); ++k) {
        file << (k == 0 ? "[" : ",[") << static_cast<int>(findings[k].verdict) << ",\""
             << findings[k].sentence << "\"]";
    }
    file << "]}\n";
}

TEST(NameplateRandom, AgreesWithAnotherProgram) {
    const int rounds = test::RandomRounds(30000);
    NameplateSource source(test::RandomSeed(20261132));
    const test::TemporaryFolder folder;
    const QString name = folder.Path("cases.json");
    {
        std::ofstream file(name.toStdString());
        file << std::setprecision(17);
        for (int n = 0; n < rounds; ++n) {
            ComparedCurve curve{source.Points(), {}, {}};
            // Finding it takes most of the time.
            if (source.OneOf(30)) curve = CurveToCompare(KneeRule::Asa1050, curve.points);
            const double volts = source.Between(50, 800);
            if (!curve.range && !curve.knee && source.OneOf(2))
                curve.range = KneeRange{volts, volts * source.Between(1, 1.2)};
            if (!curve.range && !curve.knee && source.OneOf(2))
                curve.knee = SmoothKnee{{0.1, volts}, volts * source.Between(0.001, 0.1)};
            const Nameplate plate = NameplateOf(source, curve);
            const double limit = 1 + plate.ratioLimitPercent / 100 * source.Between(0.99, 1.01);
            PutCase(file, plate, curve,
                    source.OneOf(2) ? plate.turnsRatio.value_or(1) * limit : source.Near(240));
        }
    }
    std::cout << test::OutputOf(
                     QStringLiteral(DAVO_PYTHON),
                     {QStringLiteral(DAVO_TESTS_FOLDER "/analysis/judge_nameplates.py"), name})
                     .toStdString();
}

}  // namespace
}  // namespace davo
