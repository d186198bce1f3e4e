// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <cstdio>
#include <string>

#include "tests/support/record_text.h"

namespace davo::bench {

// The curve of a core that saturates at some 300 V, of 20 to 32 points as the instrument takes
// them; test tells curves apart.
inline test::PointTexts SaturationCurve(int test) {
    constexpr int kFewestPoints = 20;
    constexpr int kSpread = 13;
    const int points = kFewestPoints + test * 5 % kSpread;
    const double knee = 300 + 2 * test;
    test::PointTexts texts;
    for (int i = 0; i < points; ++i) {
        const double voltage = 6 * std::pow(knee * 1.2 / 6, i / (points - 1.0));
        const double current = 0.004 * std::sqrt(voltage / 6) + 0.06 * std::pow(voltage / knee, 18);
        char amperes[32];
        char volts[32];
        std::snprintf(amperes, sizeof amperes, "%.4f", current);
        std::snprintf(volts, sizeof volts, "%.1f", voltage);
        texts.emplace_back(amperes, volts);
    }
    return texts;
}

// A record file of so many such tests.
inline std::string RealisticFileText(int tests) {
    std::string text = test::HeaderText();
    for (int number = 1; number <= tests; ++number) {
        test::RecordParts parts;
        parts.number = " " + std::to_string(number);
        parts.points = SaturationCurve(number);
        text += test::RecordText(parts);
    }
    return text;
}

}  // namespace davo::bench
