// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <array>
#include <vector>

#include "common/run_time_error.h"
#include "reports/record_facts.h"

namespace davo {

// What panel, card and certificate say about a record.

// The rules in the order in which they are shown.
inline constexpr std::array kRuleRows = {KneeRule::Ieee30, KneeRule::Ieee45, KneeRule::Asa1050};

// The word of a rule: "IEEE 30", "IEEE 45", "ASA 10/50".
QString KneeWord(KneeRule rule);

// Throws std::out_of_range before the test's kneepoints are found.
const KneeFact& FactOf(const RecordTest& test, KneeRule rule);

// "29.9 V, 0.090 A"; "0" or "N/A" where there is no kneepoint.
QString PrintedText(const KneeFact& fact);

// The same with "(?)" behind it where it is doubtful.
QString JudgedText(const KneeFact& fact);

// "29.9 \u00b1 0.4 V", the kneepoint of a smooth curve, or "26.1 to 34.5 V", where the points leave
// it open; "none" where that curve has none for certain.
QString SmoothText(const KneeFact& fact);

// "IEEE 30: 0. No pair of points crossed the threshold."; empty where there is nothing to say.
QString DoubtOf(const KneeFact& fact);

// Why a record file of that name is not shown.
QString TroubleText(const QString& name, const RunTimeError& error);

// How many tests of each of count records are shown.
std::size_t ShareOfTests(std::size_t count);

// What is to be known of records of which share tests each are shown: tests that are not,
// characters that are replaced.
QStringList NotesOn(const std::vector<const RecordFacts*>& records, std::size_t share);

// That these tests have no curve; empty without one. Of many the first ones are named.
QString WithoutCurve(const QStringList& tests);

// What a table of records does not have, of so many that are selected.
QStringList NotWritten(const std::vector<const RecordFacts*>& records, std::size_t selected);

// That a file was saved as path, to be shown in several lines; empty for an empty path.
QString SavedText(const QString& path);

// The polarity by the phase angle as the report has it, and the angle where the record has one:
// "IN PHASE, 1.5\u00b0".
QString PhaseAndAngle(const RecordTest& test);

// The header's fields that are not empty, with their captions, as rich text; none has a blank.
QStringList HeaderFields(const RecordFacts& record);

}  // namespace davo
