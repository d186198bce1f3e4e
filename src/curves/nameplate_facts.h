// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "analysis/nameplate.h"
#include "curves/shown_records.h"
#include "records/nameplate_file.h"

namespace davo {

// What was typed of a nameplate, as numbers; what is none, and what is missing, is not judged.
Nameplate NameplateOf(const NameplateTexts& texts);

// Whether only taps were typed, or nothing.
bool HasNoClass(const NameplateTexts& texts);

// What the curve of one of the shown tests says of the taps that were typed: the kneepoint expected
// of each, what this instrument cannot saturate, and the measured taps of the same record against
// it. The turns of a test are its nameplate ratio.
std::vector<NameplateFinding> FindingsOnTaps(const NameplateTexts& texts, const ShownRecords& shown,
                                             std::size_t test, const ComparedCurve& curve);

}  // namespace davo
