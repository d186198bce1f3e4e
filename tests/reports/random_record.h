// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

#include "common/numbers.h"
#include "tests/support/record_text.h"

namespace davo::test {

// Record files with curves like those of transformers and others, some with wrong counts of points.
class RecordSource {
  public:
    explicit RecordSource(std::uint64_t seed) : random_(seed) {}

    // A file of one to 31 tests.
    std::string File() {
        std::string text = HeaderText();
        const int tests = Below(8) == 0 ? 1 + Below(31) : 1 + Below(4);
        for (int number = 1; number <= tests; ++number)
            text += RecordText(Parts(number));
        return text + (Below(3) == 0 ? "NOTES:\r\nfree, text\r\n" : "");
    }

    RecordParts Parts(int number) {
        static const std::array<std::string, 5> kPhases = {"1.5 DEG", "180.0 DEG", "90.05 DEG",
                                                           "N/A", "x DEG"};
        RecordParts parts;
        parts.number = " " + std::to_string(number);
        parts.optionalLines = Below(4) == 0 ? "TEST NOTES: a, b\r\n" : "";
        parts.points = Curve();
        if (Below(8) == 0) parts.countText = " " + std::to_string(Below(101));
        parts.phase = kPhases.at(static_cast<std::size_t>(Below(5)));
        parts.measuredRatio = Picture(Between(1, 400), "##0.00") + " ";
        parts.percentError = Below(2) == 0 ? "N/A" : Picture(Between(-3, 3), "##0.00") + "%";
        return parts;
    }

    int Below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }
    double Between(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random_);
    }

  private:
    PointTexts Curve() {
        PointTexts points;
        const double knee = Between(20, 1500);
        const double bend = Between(0.02, 0.2);
        const double noise = Below(2) == 0 ? 0 : Between(0, 0.03);
        double current = Between(0.001, 0.05);
        for (int count = Below(33); count > 0; --count) {
            current *= Between(1.05, 1.8);
            if (current > 9) break;
            const double voltage = knee * current / (current + bend);
            points.emplace_back(Picture(current, "###0.0000"),
                                Picture(voltage * Between(1 - noise, 1 + noise), "###0.0"));
        }
        return points;
    }

    std::mt19937_64 random_;
};

}  // namespace davo::test
