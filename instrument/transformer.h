// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>
#include <string>

#include "instrument/random.h"
#include "records/record_image.h"

namespace davo::instrument {

// A current transformer as the test set sees it. The excitation curve is
//   I(V) = kneeCurrent / 2 * ((V / kneeVoltage)^lowExponent + (V / kneeVoltage)^highExponent)
// that is, a straight line in the logarithmic picture below the knee and a steep one above it.
struct Transformer {
    const char* name;
    double turnsRatio;    // H turns per X turn
    double errorPercent;  // of the measured ratio against turnsRatio
    double kneeVoltage;   // V
    double kneeCurrent;   // A at kneeVoltage
    double lowExponent;   // below 1
    double highExponent;  // 10 to 30
    double maxCurrent;    // A, where the operator stops raising; above 6.5 the coarse range is used
    double phaseDegrees;  // 0 to 359.9
    int points;           // 3 to 32
    int nameplateH;       // A; 0: no nameplate was entered on the instrument
    int nameplateX;       // 0.1 A
    int kneeTypeCode;     // 1 IEEE 30, 2 IEEE 45, 3 ASA 10/50
};

inline constexpr double kMaxVoltage = 1000;  // what the voltage drive can give

// The transformers that the shots of a session run through.
std::span<const Transformer> TransformerPresets();

// Current in amperes that voltage drives, and its inverse, cut at kMaxVoltage.
double ExcitationCurrent(const Transformer& transformer, double voltage);
double ExcitationVoltage(const Transformer& transformer, double current);

enum class Polarity { AsWired, OutOfPhase, Undetermined };

// What the instrument knows when a shot is over.
struct Shot {
    bool ratioOnly = false;
    RecordImage image;      // slots filled from the highest current down, as the current is lowered
    std::string ratioText;  // what follows "RATIO="
    char polarity = '+';    // what follows "POLARITY=": '+', '-' or a blank
};

// Measures transformer. A ratio-only shot has no points, knee or excitation values. The phase of an
// undetermined shot is 65535, outside every verdict.
Shot MeasureShot(const Transformer& transformer, bool ratioOnly, Polarity polarity, Random& random);

// value with decimals digits behind the point, always with '.', whatever the locale.
std::string FixedText(double value, int decimals);

}  // namespace davo::instrument
