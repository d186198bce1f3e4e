// SPDX-License-Identifier: GPL-3.0-or-later
// Comparisons over random curves: the laws that hold for all of them, and the interpolation of the
// GNU Scientific Library, which knows nothing of ours.

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "analysis/comparison.h"
#include "analysis/nameplate.h"
#include "analysis/taps.h"
#include "tests/analysis/curve_source.h"
#include "tests/analysis/true_curves.h"
#include "tests/support/random_rounds.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

#if DAVO_HAS_GSL
#include <gsl/gsl_interp.h>
#endif

namespace davo {
namespace {

using Points = std::vector<CurvePoint>;

constexpr double kExact = 1e-9;

Points RecordOfAnyCore(std::mt19937_64& random, int fewest = 4) {
    std::uniform_int_distribution<std::size_t> family(0, test::kFamilies.size() - 1);
    std::uniform_int_distribution<int> count(fewest, 32);
    std::uniform_real_distribution<double> noise(0, 0.005);
    const test::TrueCurve curve = test::RandomTrueCurve(test::kFamilies.at(family(random)), random);
    return test::TakeRecord(curve, {count(random), noise(random), 20}, random);
}

// Records, and curves that no core has: falling, flat, with zeros and repeated currents.
class AnyPoints {
  public:
    explicit AnyPoints(std::uint64_t seed) : random_(seed), wild_(seed) {}

    Points Next() {
        if (std::uniform_int_distribution(0, 2)(random_) != 0) return RecordOfAnyCore(random_);
        const test::RandomCurve curve = wild_.Next();
        Points points;
        for (std::size_t k = 0; k < curve.current.size(); ++k) {
            // What is no reading of an instrument has no law to 1e-9.
            const bool isReading = std::abs(curve.current[k]) < 1e6 &&
                                   std::abs(curve.voltage[k]) < 1e6 &&
                                   (curve.current[k] <= 0 || curve.current[k] > 1e-6) &&
                                   (curve.voltage[k] <= 0 || curve.voltage[k] > 1e-6);
            if (isReading) points.push_back({curve.current[k], curve.voltage[k]});
        }
        return points;
    }
    double Factor() { return std::exp(std::uniform_real_distribution(-3.0, 3.0)(random_)); }

  private:
    std::mt19937_64 random_;
    test::CurveSource wild_;
};

CurveComparison ComparePlain(const Points& measured, const Points& reference) {
    return CompareCurves({measured, {}, {}}, {reference, {}, {}});
}

Points Times(Points points, double voltage, double current) {
    for (CurvePoint& point : points) {
        point.voltage *= voltage;
        point.current *= current;
    }
    return points;
}

// The farthest that any deviation is from what it should be.
double Farthest(const std::vector<Deviation>& places, double ln) {
    double farthest = 0;
    for (const Deviation& place : places)
        farthest = std::max(farthest, std::abs(place.ln - ln));
    return farthest;
}

TEST(ComparisonRandom, ACurveWithItselfIsZeroAndFactorsComeOut) {
    const int rounds = test::RandomRounds(20000);
    AnyPoints any(test::RandomSeed(20261122));
    int compared = 0;
    int currents = 0;
    for (int n = 0; n < rounds; ++n) {
        const Points points = any.Next();
        const double a = any.Factor();
        const CurveComparison self = ComparePlain(points, points);
        const CurveComparison higher = ComparePlain(Times(points, a, 1), points);
        ASSERT_EQ(higher.whyNot, self.whyNot) << n;
        if (!self.whyNot.empty()) continue;
        ++compared;
        EXPECT_EQ(Farthest(self.voltage.places, 0), 0) << n;
        EXPECT_EQ(VerdictOf(self, 0), Verdict::Within) << n;
        EXPECT_LE(Farthest(higher.voltage.places, std::log(a)), kExact) << n;
        EXPECT_NEAR(higher.voltage.all.value_or(Deviation()).Percent(), 100 * (a - 1),
                    100 * a * kExact);
        if (!self.current.all) continue;
        ++currents;
        EXPECT_EQ(Farthest(self.current.places, 0), 0) << n;
        const CurveComparison wider = ComparePlain(Times(points, 1, a), points);
        if (!wider.whyNot.empty()) continue;  // the common range is shorter
        const ComparedValue& current = wider.current;
        EXPECT_LE(Farthest(current.places, std::log(a)), kExact) << n;
        EXPECT_GE(current.places.size(), 3U) << n;
        ASSERT_FALSE(testing::Test::HasFailure()) << n;
    }
    EXPECT_GT(compared, rounds / 2);
    EXPECT_GT(currents, rounds / 2);
}

TEST(ComparisonRandom, ExchangedCurvesMirror) {
    const int rounds = test::RandomRounds(20000);
    AnyPoints any(test::RandomSeed(20261123));
    int compared = 0;
    const auto mirrors = [](const std::vector<Deviation>& places,
                            const std::vector<Deviation>& back) {
        ASSERT_EQ(places.size(), back.size());
        for (std::size_t k = 0; k < places.size(); ++k) {
            EXPECT_EQ(places[k].at, back[k].at);
            EXPECT_EQ(places[k].ln, -back[k].ln);
        }
    };
    for (int n = 0; n < rounds; ++n) {
        const Points a = any.Next();
        const Points b = any.Next();
        const CurveComparison there = ComparePlain(a, b);
        const CurveComparison back = ComparePlain(b, a);
        ASSERT_EQ(there.whyNot, back.whyNot);
        if (!there.whyNot.empty()) continue;
        ++compared;
        mirrors(there.voltage.places, back.voltage.places);
        mirrors(there.current.places, back.current.places);
        ASSERT_FALSE(testing::Test::HasFailure()) << n;
    }
    EXPECT_GT(compared, rounds / 4);
}

// A capital letter, two words at least, and a full stop.
bool IsSentence(const std::string& text) {
    const std::size_t word = text.find_first_of("abcdefghijklmnopqrstuvwxyz0123456789%", 1);
    return word != std::string::npos && text.front() >= 'A' && text.front() <= 'Z' &&
           text.find(' ', word + 1) != std::string::npos && text.back() == '.';
}

// What a damaged record may hold: nothing throws, and nothing is said that is no sentence.
TEST(ComparisonRandom, AnythingHasASentence) {
    const int rounds = test::RandomRounds(20000);
    test::CurveSource wild(test::RandomSeed(20261130));
    const auto next = [&wild] {
        const test::RandomCurve curve = wild.Next();
        Points points;
        for (std::size_t k = 0; k < curve.current.size(); ++k)
            points.push_back({curve.current[k], curve.voltage[k]});
        return points;
    };
    Nameplate p;
    p.kind = AccuracyClass::P10;
    p.rct = 1;
    p.burdenVa = 10;
    Nameplate px;
    px.kneeVoltage = 2;
    for (int n = 0; n < rounds; ++n) {
        const ComparedCurve a{next(), SmoothKnee{{0.1, 1}, 0.1}, {}};
        const ComparedCurve b{next(), {}, KneeRange{1, 2}};
        const CurveComparison comparison = CompareCurves(a, b);
        std::vector<std::string> sentences = {
            SentenceOf(comparison, 5), SentenceOf(comparison, std::nullopt),
            KneeSentenceOf(comparison.knee), TapFinding("600:5", a.points, b).sentence};
        for (const Nameplate& nameplate : {p, px})
            for (const Finding& finding : JudgeNameplate(nameplate, a, 1e300))
                sentences.push_back(finding.sentence);
        for (const std::string& sentence : sentences)
            EXPECT_TRUE(IsSentence(sentence)) << sentence;
        ASSERT_FALSE(testing::Test::HasFailure()) << n;
    }
}

// The currents of a curve, each once.
std::set<double> CurrentsOf(const Points& points) {
    std::set<double> currents;
    for (const CurvePoint& point : points)
        if (point.current > 0 && point.voltage > 0) currents.insert(point.current);
    return currents;
}

// No sentence has a number for less than three common points or a quarter of a decade: it says why.
TEST(ComparisonRandom, TooLittleInCommonHasNoNumber) {
    const int rounds = test::RandomRounds(20000);
    AnyPoints any(test::RandomSeed(20261134));
    std::mt19937_64 random(test::RandomSeed(20261135));
    std::uniform_int_distribution<int> few(1, 12);
    std::uniform_real_distribution<double> decades(0.1, 0.4);
    std::map<std::string, int> found;  // by the first word of why not
    const auto shortCurve = [&](double low) {
        Points points;
        const double step = decades(random) / few(random);
        for (int k = few(random); k >= 0; --k)
            points.push_back({low * std::pow(10, k * step), 100.0 + k});
        return points;
    };
    for (int n = 0; n < rounds; ++n) {
        const Points a = n % 4 == 0 ? shortCurve(0.1) : any.Next();
        const std::set<double> ofA = CurrentsOf(a);
        // Some begin a little below the end of the other.
        const Points b = n % 2 == 0 && !ofA.empty()
                             ? shortCurve(*ofA.rbegin() * std::pow(10, -decades(random)))
                             : any.Next();
        const std::set<double> ofB = CurrentsOf(b);
        double from = HUGE_VAL;
        double to = 0;
        if (!ofA.empty() && !ofB.empty()) {
            from = std::max(*ofA.begin(), *ofB.begin());
            to = std::min(*ofA.rbegin(), *ofB.rbegin());
        }
        const auto countOf = [&](const std::set<double>& currents) {
            return std::count_if(currents.begin(), currents.end(),
                                 [&](double current) { return current >= from && current <= to; });
        };
        const bool hasPoints = std::min(countOf(ofA), countOf(ofB)) >= 3;
        const bool isCompared = hasPoints && std::log10(to / from) >= 0.25 - 1e-9;
        const CurveComparison comparison = ComparePlain(a, b);
        ++found[comparison.whyNot.substr(0, 3)];
        const std::string sentence = SentenceOf(comparison, 5);
        const std::string none = "The curves are not compared: ";
        EXPECT_THAT(sentence,
                    testing::StartsWith(isCompared  ? "At "
                                        : hasPoints ? none + "their common currents, "
                                                    : none + "one has fewer than three points"));
        EXPECT_EQ(sentence.find('%') != std::string::npos, isCompared) << sentence;
        EXPECT_EQ(VerdictOf(comparison, 5) != Verdict::None, isCompared);
        EXPECT_EQ(!comparison.voltage.places.empty(), isCompared);
        EXPECT_TRUE(isCompared || !comparison.current.all);
        ASSERT_FALSE(testing::Test::HasFailure()) << n;
    }
    for (const char* word : {"", "one", "the"})
        EXPECT_GT(found[word], rounds / 20);
}

TEST(ComparisonRandom, ATapAndBackIsTheSameCurve) {
    const int rounds = test::RandomRounds(20000);
    AnyPoints any(test::RandomSeed(20261124));
    for (int n = 0; n < rounds; ++n) {
        const SmoothKnee knee{{any.Factor(), any.Factor()}, 0.1};
        const KneeRange range{any.Factor(), any.Factor()};
        const ComparedCurve curve{any.Next(), knee, range};
        const double from = 100 * any.Factor();
        const double to = 100 * any.Factor();
        const ComparedCurve tap = ScaledToTurns(curve, from, to);
        const ComparedCurve back = ScaledToTurns(tap, to, from);
        for (std::size_t k = 0; k < curve.points.size(); ++k) {
            const CurvePoint& point = curve.points[k];
            EXPECT_NEAR(back.points[k].voltage, point.voltage, kExact * std::abs(point.voltage));
            EXPECT_NEAR(back.points[k].current, point.current, kExact * std::abs(point.current));
            // The power of a point is that of every tap.
            EXPECT_NEAR(tap.points[k].voltage * tap.points[k].current,
                        point.voltage * point.current,
                        kExact * std::abs(point.voltage * point.current));
        }
        const SmoothKnee same = back.knee.value_or(SmoothKnee());
        EXPECT_NEAR(same.at.voltage / knee.at.voltage, 1, kExact);
        EXPECT_NEAR(same.at.current / knee.at.current, 1, kExact);
        EXPECT_NEAR(same.uncertainty / knee.uncertainty, 1, kExact);
        EXPECT_NEAR(back.range.value_or(KneeRange()).low / range.low, 1, kExact);
        EXPECT_NEAR(back.range.value_or(KneeRange()).high / range.high, 1, kExact);
        ASSERT_FALSE(testing::Test::HasFailure()) << n;
    }
}

// A record of 32 points against few points of the same core, as a maker's curve has them. Percent.
TEST(ComparisonRandom, FewPointsOfTheSameCoreAreNoDifference) {
    const int rounds = test::RandomRounds(20000);
    std::mt19937_64 random(test::RandomSeed(20261128));
    std::uniform_int_distribution<std::size_t> family(0, test::kFamilies.size() - 1);
    for (const int few : {8, 12, 20}) {
        int compared = 0;
        int wrong = 0;   // of sound ones, by a limit of 5 %
        int missed = 0;  // of those that are 7 % lower
        int plain = 0;   // sound ones that the straight lines alone would call wrong
        for (int n = 0; n < rounds / 10; ++n) {
            const test::TrueCurve core =
                test::RandomTrueCurve(test::kFamilies.at(family(random)), random);
            const Points record = test::TakeRecord(core, {32, 0.002, 20}, random);
            const Points makers = test::TakeRecord(core, {few, 0, 20}, random);
            const CurveComparison sound = ComparePlain(record, makers);
            if (!sound.whyNot.empty()) continue;
            ++compared;
            wrong += VerdictOf(sound, 5) == Verdict::Beyond ? 1 : 0;
            missed += VerdictOf(ComparePlain(Times(record, 0.93, 1), makers), 5) == Verdict::Beyond
                          ? 0
                          : 1;
            const std::vector<Deviation>& places = sound.voltage.places;
            plain += std::any_of(places.begin(), places.end(),
                                 [](const Deviation& at) { return std::abs(at.Percent()) > 5; })
                         ? 1
                         : 0;
        }
        std::cout << few << " points: of " << compared << " wrong " << wrong << ", missed "
                  << missed << ", by straight lines alone wrong " << plain << std::endl;
        EXPECT_GT(compared, rounds / 20);
        EXPECT_LE(wrong, compared / 100);
        EXPECT_LE(missed, compared / 50);
        if (few == 8) {
            EXPECT_GT(plain, compared / 3);
        }
    }
}

// A curve as anybody writes it down: places anywhere, in any order, one of them twice, and scatter.
Points UnevenPoints(const test::TrueCurve& core, int count, std::mt19937_64& random) {
    std::uniform_real_distribution<double> place(std::max(core.bend - 3.7, std::log(0.002)),
                                                 core.bend + 3);
    std::normal_distribution<double> scatter(0, 0.003);
    Points points;
    for (int k = 0; k < count; ++k) {
        const double current = std::round(1e4 * std::exp(place(random))) / 1e4;
        const double volts = std::exp(core.voltageAt(std::log(current)) + scatter(random));
        points.push_back({current, std::round(10 * volts) / 10});
    }
    points.push_back(points.front());
    return points;
}

TEST(ComparisonRandom, UnevenPointsOfTheSameCoreAreNoDifference) {
    const int rounds = test::RandomRounds(20000) / 4;
    std::mt19937_64 random(test::RandomSeed(20261131));
    std::uniform_int_distribution<std::size_t> family(0, test::kFamilies.size() - 1);
    for (const int few : {5, 8, 12}) {
        int compared = 0;
        int wrong = 0;
        int missed = 0;
        for (int n = 0; n < rounds; ++n) {
            const test::TrueCurve core =
                test::RandomTrueCurve(test::kFamilies.at(family(random)), random);
            const Points record = test::TakeRecord(core, {32, 0.002, 20}, random);
            const Points uneven = UnevenPoints(core, few, random);
            const CurveComparison sound = ComparePlain(record, uneven);
            if (!sound.whyNot.empty()) continue;
            ++compared;
            wrong += VerdictOf(sound, 5) == Verdict::Beyond ? 1 : 0;
            missed += VerdictOf(ComparePlain(Times(record, 0.93, 1), uneven), 5) == Verdict::Beyond
                          ? 0
                          : 1;
        }
        std::cout << few << " uneven points: of " << compared << " wrong " << wrong << ", missed "
                  << missed << std::endl;
        EXPECT_GT(compared, rounds * 9 / 10);
        EXPECT_LE(wrong, compared * (few == 5 ? 4 : 2) / 100);
        EXPECT_LE(missed, compared * (few == 5 ? 2 : 1) / 100);
    }
}

// The curve of so many of the turns.
test::TrueCurve TapOf(const test::TrueCurve& core, double part) {
    const double ln = std::log(part);
    test::TrueCurve tap = core;
    tap.voltageAt = [=](double lnI) { return core.voltageAt(lnI + ln) + ln; };
    tap.slopeAt = [=](double lnI) { return core.slopeAt(lnI + ln); };
    tap.bend = core.bend - ln;
    return tap;
}

// What is said of taps of random cores with noise: of those that follow, of those whose current was
// not scaled, and of those whose current is 12 % off.
struct TapsTold {
    int told = 0;
    int wrong = 0;
    int unscaled = 0;
    int found = 0;
};

TapsTold TellTaps(int rounds, std::pair<int, int> counts, std::pair<double, double> past,
                  std::mt19937_64& random) {
    std::uniform_int_distribution<std::size_t> family(0, test::kFamilies.size() - 1);
    std::uniform_int_distribution<int> count(counts.first, counts.second);
    std::uniform_real_distribution<double> turns(0.2, 0.9);
    std::uniform_real_distribution<double> end(past.first, past.second);
    TapsTold taps;
    for (int n = 0; n < rounds; ++n) {
        const test::TrueCurve core =
            test::RandomTrueCurve(test::kFamilies.at(family(random)), random);
        const double part = turns(random);
        const Points full = test::TakeRecord(core, {count(random), 0.003, end(random)}, random);
        const Points measured =
            test::TakeRecord(TapOf(core, part), {count(random), 0.003, end(random)}, random);
        const ComparedCurve expected = ScaledToTurns({full, {}, {}}, 1, part);
        const Verdict verdict = TapFinding("600:5", measured, expected).verdict;
        if (verdict == Verdict::None) continue;
        ++taps.told;
        taps.wrong += verdict == Verdict::Beyond ? 1 : 0;
        const auto isFound = [&](double current) {
            return TapFinding("600:5", Times(measured, 1, current), expected).verdict ==
                           Verdict::Beyond
                       ? 1
                       : 0;
        };
        taps.unscaled += isFound(part);
        taps.found += isFound(1.12);
    }
    std::cout << "of " << taps.told << " wrong " << taps.wrong << ", not scaled and found "
              << taps.unscaled << ", 12 % off and found " << taps.found << std::endl;
    return taps;
}

TEST(ComparisonRandom, ATapThatDoesNotFollowIsFound) {
    std::mt19937_64 random(test::RandomSeed(20261129));
    const int rounds = test::RandomRounds(5000);
    const TapsTold many = TellTaps(rounds, {10, 32}, {15, 20}, random);
    EXPECT_GT(many.told, rounds * 9 / 10);
    EXPECT_LE(many.wrong, many.told / 100);
    EXPECT_GE(many.unscaled, many.told - many.told / 100);
    EXPECT_GE(many.found, many.told * 9 / 10);
    const TapsTold few = TellTaps(2 * rounds, {4, 8}, {3, 20}, random);
    EXPECT_GT(few.told, rounds);
    EXPECT_LE(few.wrong, few.told * 3 / 100);
    EXPECT_GE(few.unscaled, few.told * 9 / 10);
}

#if DAVO_HAS_GSL
// A curve as the library takes it: strictly rising, in logarithms.
struct GslCurve {
    std::vector<double> lnI;
    std::vector<double> lnV;
    gsl_interp* interp = nullptr;

    GslCurve(const Points& rising, const gsl_interp_type* type, bool isInverse) {
        for (const CurvePoint& point : rising) {
            lnI.push_back(std::log(isInverse ? point.voltage : point.current));
            lnV.push_back(std::log(isInverse ? point.current : point.voltage));
        }
        interp = gsl_interp_alloc(type, lnI.size());
        gsl_interp_init(interp, lnI.data(), lnV.data(), lnI.size());
    }
    ~GslCurve() { gsl_interp_free(interp); }
    GslCurve(const GslCurve&) = delete;
    GslCurve& operator=(const GslCurve&) = delete;

    double At(double x) const {
        const double within = std::clamp(x, lnI.front(), lnI.back());
        return gsl_interp_eval(interp, lnI.data(), lnV.data(), within, nullptr);
    }
};

Points RisingRecord(std::mt19937_64& random, int fewest) {
    Points rising;
    while (static_cast<int>(rising.size()) < fewest) {
        rising.clear();
        for (const CurvePoint& point : RecordOfAnyCore(random, fewest)) {
            if (rising.empty() ||
                (point.current > rising.back().current && point.voltage > rising.back().voltage))
                rising.push_back(point);
        }
    }
    return rising;
}

// Every place of a comparison against the library's straight lines, and the worst against 200 more.
void ExpectAsStraightLines(const ComparedValue& value, const GslCurve& a, const GslCurve& b) {
    for (const Deviation& place : value.places) {
        const double x = std::log(place.at);
        EXPECT_NEAR(place.ln, a.At(x) - b.At(x), kExact);
    }
    const auto [lowest, highest] = std::minmax_element(
        value.places.begin(), value.places.end(),
        [](const Deviation& one, const Deviation& other) { return one.ln < other.ln; });
    const double from = std::log(value.places.front().at);
    const double to = std::log(value.places.back().at);
    for (int k = 0; k <= 200; ++k) {
        const double x = from + (to - from) * k / 200;
        const double ln = a.At(x) - b.At(x);
        EXPECT_GE(ln, lowest->ln - kExact);
        EXPECT_LE(ln, highest->ln + kExact);
    }
}

TEST(ComparisonRandom, AgreesWithTheStraightLinesOfAnotherLibrary) {
    const int rounds = test::RandomRounds(20000);
    std::mt19937_64 random(test::RandomSeed(20261126));
    int compared = 0;
    for (int n = 0; n < rounds; ++n) {
        const Points a = RisingRecord(random, 4);
        const Points b = RisingRecord(random, 4);
        const CurveComparison comparison = ComparePlain(a, b);
        if (!comparison.whyNot.empty()) continue;
        ++compared;
        ExpectAsStraightLines(comparison.voltage, {a, gsl_interp_linear, false},
                              {b, gsl_interp_linear, false});
        if (comparison.current.all) {
            ExpectAsStraightLines(comparison.current, {a, gsl_interp_linear, true},
                                  {b, gsl_interp_linear, true});
        }
        ASSERT_FALSE(testing::Test::HasFailure()) << n;
    }
    EXPECT_GT(compared, rounds / 4);
}

// A spline that does not overshoot (M. Steffen, Astronomy and Astrophysics 239 (1990), 443-450)
// rises above the straight lines at the bend; of two curves of 20 points or more the difference is
// little of it.
TEST(ComparisonRandom, ASplineDiffersByLittle) {
    const int rounds = test::RandomRounds(20000);
    std::mt19937_64 random(test::RandomSeed(20261127));
    std::vector<double> apart;
    for (int n = 0; n < rounds; ++n) {
        const Points a = RisingRecord(random, 20);
        const Points b = RisingRecord(random, 20);
        const CurveComparison comparison = ComparePlain(a, b);
        if (!comparison.whyNot.empty()) continue;
        const GslCurve splineA(a, gsl_interp_steffen, false);
        const GslCurve splineB(b, gsl_interp_steffen, false);
        for (const Deviation& place : comparison.voltage.places) {
            const double x = std::log(place.at);
            apart.push_back(std::abs(std::expm1(splineA.At(x) - splineB.At(x) - place.ln)));
        }
    }
    std::sort(apart.begin(), apart.end());
    ASSERT_GT(apart.size(), 1000U);
    const auto share = [&](double part) {
        return apart[static_cast<std::size_t>(part * static_cast<double>(apart.size() - 1))];
    };
    std::cout << "median " << share(0.5) << ", 95th percentile " << share(0.95) << ", most "
              << share(1) << std::endl;
    EXPECT_LT(share(0.5), 0.002);
    EXPECT_LT(share(0.95), 0.01);
    EXPECT_LT(share(1), 0.07);
}
#else
TEST(ComparisonRandom, AgreesWithTheStraightLinesOfAnotherLibrary) {
    GTEST_SKIP() << "no GNU Scientific Library (libgsl-dev)";
}
#endif

}  // namespace
}  // namespace davo
