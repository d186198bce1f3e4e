// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/curve_point.h"
#include "common/files.h"

namespace davo::test {

// A measured curve as published; its source is in the file.
struct PublishedCurve {
    std::string name;
    double bandLow = 0;  // volts, of the 10/50 kneepoint by smooth fits of others
    double bandHigh = 0;
    std::vector<CurvePoint> points;
};

inline std::vector<PublishedCurve> PublishedCurves() {
    std::vector<PublishedCurve> curves;
    const QString folder = QString::fromUtf8(DAVO_TESTS_FOLDER);
    for (const std::string& line :
         ReadLines(folder + QStringLiteral("/analysis/data/published_ct_curves.csv"))) {
        if (line.starts_with('#')) continue;
        std::istringstream in(line);
        PublishedCurve curve;
        char comma = 0;
        std::getline(in, curve.name, ',');
        in >> curve.bandLow >> comma >> curve.bandHigh >> comma;
        CurvePoint point;
        while (in >> point.current >> comma >> point.voltage)
            curve.points.push_back(point);
        curves.push_back(curve);
    }
    return curves;
}

}  // namespace davo::test
