// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/transformer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace davo::instrument {

namespace {

constexpr int kCoarseRange = 10;
constexpr int kNoPhase = 65535;
constexpr int kMaxCount = 65535;

constexpr std::array<Transformer, 8> kPresets = {{
    {"1200:5 bushing", 240, 0.5, 410, 0.062, 0.72, 18, 2.0, 0.3, 32, 1200, 50, 1},
    {"600:5 relay", 120, -0.3, 225, 0.11, 0.68, 15, 3.0, 359.8, 28, 600, 50, 2},
    {"2000:5 generator", 400, 0.1, 780, 0.03, 0.75, 22, 1.0, 0.1, 32, 2000, 50, 3},
    {"50:5 metering", 10, -1.2, 21, 0.9, 0.7, 14, 9.5, 1.2, 24, 50, 50, 1},
    {"1000:3 odd", 1000.0 / 3, 0.2, 520, 0.045, 0.66, 20, 1.5, 0.6, 30, 1000, 30, 2},
    {"300:1 no nameplate", 300, 0.05, 640, 0.012, 0.74, 25, 0.4, 359.9, 20, 0, 0, 3},
    {"5:5 auxiliary", 1, 0.8, 9.5, 1.6, 0.71, 12, 12.5, 2.4, 16, 5, 50, 1},
    {"4000:5 beyond the drive", 800, -0.1, 1600, 0.02, 0.7, 18, 1.0, 0.2, 12, 4000, 50, 1},
}};

// Where d(log I) / d(log V) = slope: the definition of the IEEE kneepoints.
double VoltageOfSlope(const Transformer& t, double slope) {
    // With x = (V / kneeVoltage)^(high - low): (low + high x) / (1 + x) = slope.
    const double x = (slope - t.lowExponent) / (t.highExponent - slope);
    return t.kneeVoltage * std::pow(x, 1 / (t.highExponent - t.lowExponent));
}

// Where 10 % more voltage gives 50 % more current: the definition of the ASA kneepoint.
double VoltageOfTenFifty(const Transformer& t) {
    const double x = (1.5 - std::pow(1.1, t.lowExponent)) / (std::pow(1.1, t.highExponent) - 1.5);
    return t.kneeVoltage * std::pow(x, 1 / (t.highExponent - t.lowExponent));
}

double KneeVoltage(const Transformer& t) {
    switch (t.kneeTypeCode) {
        case 1:
            return VoltageOfSlope(t, std::sqrt(3.0));
        case 2:
            return VoltageOfSlope(t, 1.0);
        default:
            return VoltageOfTenFifty(t);
    }
}

int Count(double value, double scale) {
    return std::clamp(static_cast<int>(std::lround(value / scale)), 0, kMaxCount);
}

void MeasureCurve(const Transformer& t, RecordImage& image, Random& random) {
    if (t.maxCurrent > 6.5) image.currentRangeCode = kCoarseRange;
    const double scale = image.CurrentScale();
    const double highest = std::min(t.maxCurrent, ExcitationCurrent(t, kMaxVoltage));
    // Below that the counts are too coarse to tell neighbouring points apart.
    const double faintest = std::max(1.0, 0.02 * t.kneeVoltage);
    const double lowest = std::max({highest / 2000, 4 * scale, ExcitationCurrent(t, faintest)});
    const double ratio = std::pow(highest / lowest, 1.0 / (t.points - 1));
    double current = highest;
    for (int i = 0; i < t.points; ++i) {
        const double wobble = 1 + 0.0004 * (random.Unit() - 0.5);
        RecordImage::Slot& slot = image.slots[i];
        slot.current = Count(current, scale);
        slot.voltage = Count(std::min(ExcitationVoltage(t, current) * wobble, kMaxVoltage), 0.1);
        if (i > 0) {
            // A curve that is lowered never rises again.
            slot.current = std::min(slot.current, image.slots[i - 1].current - 1);
            slot.voltage = std::min(slot.voltage, image.slots[i - 1].voltage - 1);
        }
        current /= ratio;
    }
    // A curve that ends before the knee has none.
    const double knee = KneeVoltage(t);
    if (knee < ExcitationVoltage(t, highest)) {
        image.kneeVoltage = Count(knee, 0.1);
        image.kneeCurrent = Count(ExcitationCurrent(t, knee), scale);
    }
    image.excitationCurrent = image.slots[0].current;
    image.excitationVoltage = image.slots[0].voltage;
}

}  // namespace

std::span<const Transformer> TransformerPresets() {
    return kPresets;
}

double ExcitationCurrent(const Transformer& transformer, double voltage) {
    const double relative = voltage / transformer.kneeVoltage;
    return transformer.kneeCurrent / 2 *
           (std::pow(relative, transformer.lowExponent) +
            std::pow(relative, transformer.highExponent));
}

double ExcitationVoltage(const Transformer& transformer, double current) {
    double low = 0;
    double high = kMaxVoltage;
    if (ExcitationCurrent(transformer, high) <= current) return high;
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        (ExcitationCurrent(transformer, middle) < current ? low : high) = middle;
    }
    return high;
}

Shot MeasureShot(const Transformer& transformer, bool ratioOnly, Polarity polarity,
                 Random& random) {
    Shot shot;
    shot.ratioOnly = ratioOnly;
    if (!ratioOnly) MeasureCurve(transformer, shot.image, random);

    const double wobble = 1 + 0.0002 * (random.Unit() - 0.5);
    const double ratio = transformer.turnsRatio * (1 + transformer.errorPercent / 100) * wobble;
    shot.image.measuredRatio = std::llround(ratio * 10000);
    int decimals = 1;
    if (ratio < 100) decimals = 2;
    if (ratio < 10) decimals = 3;
    shot.ratioText = FixedText(static_cast<double>(shot.image.measuredRatio) / 10000, decimals);

    double phase = transformer.phaseDegrees;
    if (polarity == Polarity::OutOfPhase) phase = std::fmod(phase + 180, 360);
    shot.image.phaseAngle = static_cast<int>(std::lround(phase * 10));
    shot.polarity = polarity == Polarity::OutOfPhase ? '-' : '+';
    if (polarity == Polarity::Undetermined) {
        shot.image.phaseAngle = kNoPhase;
        shot.polarity = ' ';
    }
    shot.image.nameplateH = transformer.nameplateH;
    shot.image.nameplateX = transformer.nameplateX;
    shot.image.kneeTypeCode = transformer.kneeTypeCode;
    return shot;
}

std::string FixedText(double value, int decimals) {
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   std::chars_format::fixed, decimals);
    return {text.data(), end.ptr};
}

}  // namespace davo::instrument
