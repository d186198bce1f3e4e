// SPDX-License-Identifier: GPL-3.0-or-later

#include <bit>
#include <cmath>
#include <random>

#include "common/numbers.h"
#include "common/run_time_error.h"
#include "tests/support/number_reference.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

constexpr int kTrials = 200000;

class Random {
  public:
    explicit Random(std::uint64_t preset) : engine_(test::RandomSeed(preset)) {}

    int Below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(engine_); }
    std::uint64_t Bits() { return engine_(); }

    // A value of one of the kinds that have their own trouble: any double there is, counts as the
    // instrument sends them, a tie of so many decimals or a neighbour of one, quotients.
    double Value(int decimals) {
        const double sign = Below(2) == 0 ? 1 : -1;
        switch (Below(5)) {
            case 0:
                return FiniteBits();
            case 1:
                return sign * Below(65536) * (Below(2) == 0 ? 0.0001 : 0.1);
            case 2:
                return sign * NearTie(decimals);
            case 3:
                return sign * std::pow(10.0, Below(41) - 20) * Below(1000000);
            default:
                return sign * Below(1000000) / (1.0 + Below(10000));
        }
    }

  private:
    double FiniteBits() {
        double value = 0;
        do {
            value = std::bit_cast<double>(Bits());
        } while (!std::isfinite(value));
        return value;
    }

    double NearTie(int decimals) {
        const double tie = (Below(1000000) + 0.5) / std::pow(10.0, decimals);
        switch (Below(5)) {
            case 0:
                return std::nextafter(tie, 0);
            case 1:
                return std::nextafter(tie, 1e300);
            case 2:
                return tie * (1 - 1e-15);
            case 3:
                return tie * (1 + 1e-14);
            default:
                return tie;
        }
    }

    std::mt19937_64 engine_;
};

TEST(PictureAgainstReference, AgreesOnRandomValuesAndPictures) {
    Random random(20240117);
    for (int i = 0; i < kTrials; ++i) {
        const int whole = random.Below(4);
        const int decimals = random.Below(7);
        const double value = random.Value(decimals);
        const std::string picture = test::PictureText(random.Below(5), whole, decimals);
        const std::string expected = test::ReferencePicture(value, whole, decimals);
        ASSERT_EQ(Picture(value, picture), expected) << std::hexfloat << value << " by " << picture;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(RoundByPicture(value, picture)),
                  std::bit_cast<std::uint64_t>(NumericValue(expected)))
            << std::hexfloat << value << " by " << picture;
    }
}

// A whole number of up to 15 digits with a point somewhere in it is written down first, rounded by
// hand on paper, as it were, and only then made a double.
TEST(PictureAgainstReference, AgreesOnTextsRoundedByHand) {
    Random random(20240118);
    for (int i = 0; i < kTrials; ++i) {
        const int decimals = random.Below(5);
        const int dropped = 1 + random.Below(4);
        const auto kept = random.Bits() % 10000000ULL;
        const auto limit = test::PowerOfTen(dropped);
        const auto rest = random.Below(3) == 0 ? limit / 2 : random.Bits() % limit;
        const bool negative = random.Below(2) == 0;

        const std::string tail = std::to_string(limit + rest).substr(1);
        std::string text = std::to_string(kept);
        while (static_cast<int>(text.size()) <= decimals)
            text = "0" + text;
        text.insert(text.size() - static_cast<std::size_t>(decimals), ".");
        const double value = std::strtod((text + tail).c_str(), nullptr);

        const auto rounded = kept + (rest * 2 >= limit ? 1 : 0);
        std::string expected = std::to_string(rounded);
        while (static_cast<int>(expected.size()) <= decimals)
            expected = "0" + expected;
        if (decimals > 0)
            expected.insert(expected.size() - static_cast<std::size_t>(decimals), ".");
        if (negative && rounded != 0) expected = "-" + expected;
        ASSERT_EQ(Picture(negative ? -value : value, test::PictureText(3, 1, decimals)), expected)
            << text << tail;
    }
}

TEST(GeneralNumberAgainstReference, AgreesOnRandomValues) {
    Random random(20240119);
    for (int i = 0; i < kTrials; ++i) {
        const double value = random.Value(random.Below(7));
        ASSERT_EQ(GeneralNumber(value), test::ReferenceGeneral(value)) << std::hexfloat << value;
    }
}

TEST(NumericValueAgainstReference, AgreesOnRandomTexts) {
    Random random(20240120);
    const std::string alphabet = "00112233445566778899..++--EeDd  ,x";
    for (int i = 0; i < kTrials; ++i) {
        std::string text;
        for (int length = random.Below(16); length > 0; --length) {
            text +=
                alphabet[static_cast<std::size_t>(random.Below(static_cast<int>(alphabet.size())))];
        }
        const double expected = test::ReferenceValue(text);
        if (std::isinf(expected)) {
            ASSERT_THROW(NumericValue(text), RunTimeError) << text;
        } else {
            ASSERT_EQ(NumericValue(text), expected) << text;
        }
    }
}

TEST(NumericValueAgainstReference, ReadsGeneralNumbersBack) {
    Random random(20240121);
    for (int i = 0; i < kTrials; ++i) {
        const double value = random.Value(3);
        const std::string text = GeneralNumber(value);
        // 15 digits may round the largest doubles to more than there is.
        if (std::fabs(value) > 1.79769313486231e308) continue;
        ASSERT_EQ(GeneralNumber(NumericValue(text)), text);
    }
}

}  // namespace
}  // namespace davo
