#pragma once

#include <QString>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "analysis/grid_points.h"
#include "analysis/kneepoint.h"

namespace davo {

// The kneepoint of one rule as the report has it, and what there is to say about it.
struct KneeFact {
    KneeRule rule = KneeRule::Ieee30;
    Kneepoint printed;   // the report's texts; "0" or "N/A" where there is none
    std::string reason;  // why there is none, in words; empty where there is one
    // The kneepoint of a smooth curve through the same points, in volts and amperes, where it is
    // more than 15 % in voltage away from the printed one; nothing where the two agree.
    std::optional<CurvePoint> smooth;

    // The printed kneepoint as numbers; nothing where there is none.
    std::optional<CurvePoint> At() const;
};

// One test of a record file, as the record panel and the exports show it.
struct RecordTest {
    std::string recordName;          // "T0012"
    int testNumber = 0;              // from 1
    std::vector<CurvePoint> points;  // as the record has them, from the lowest; no grid points
    std::array<KneeFact, 3> knees;   // in the order of kKneeRules
    std::string nameplateRatio;      // the report's texts
    std::string measuredRatio;
    std::string percentError;
    std::string polarity;
    std::string phase;
};

// A record file: its header's eight fields in the order of TestHeader, without padding, the time
// of its first shot, and its tests.
struct RecordFacts {
    std::string name;
    std::array<std::string, 8> header;
    std::string date;
    std::string time;
    std::vector<RecordTest> tests;
};

// Reads and computes a record file by the same steps as its report. Throws what ReadReportTables
// throws. A record of more tests than a report holds (31) is read, too: only the report's tables
// end there.
RecordFacts ReadRecordFacts(const QString& path);

}  // namespace davo
