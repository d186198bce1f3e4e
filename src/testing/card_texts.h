// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <vector>

#include "analysis/knee_doubt.h"
#include "records/header_table.h"
#include "testing/shot_screen.h"

namespace davo {

// Of lblCard, which has the place of the prompt while there is none; rich text.

// The three steps to a shot, each with its state.
QString StepsCard(const ShotScreen& screen, const HeaderTable& header);

// What the shot gave; polarity is that of its record, knees are those of its curve, kneepointType
// is the marker in use, errorLimit what the operator typed, in percent. What is to be looked at is
// amber, with a word: a polarity other than "IN PHASE" or than the record's, an error above the
// limit, a kneepoint that is doubtful or not there.
QString ResultsCard(const ShotScreen& screen, const std::string& polarity,
                    const std::vector<KneeFact>& knees, const QString& kneepointType,
                    QString errorLimit);

// Of lblDisk, plain: where the shot is and what comes next; typing: a nameplate current is.
QString DiskLine(const ShotScreen& screen, bool typing);

}  // namespace davo
