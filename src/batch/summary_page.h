// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QString>
#include <QStringList>
#include <string>
#include <vector>

#include "reports/chart_curve.h"
#include "reports/record_facts.h"

namespace davo {

// One page of HTML about many records, all in one file: their curves in a chart, and a table with a
// row for each test, which a click on a heading sorts. It can be read without its script.
class SummaryPage {
  public:
    // Links lead from folder; the chart marks the kneepoints of rule.
    SummaryPage(KneeRule rule, const QString& folder) : rule_(rule), folder_(folder) {}

    // record is judged; path is where it is, files are what was made of it.
    void Add(const RecordFacts& record, const QString& path, const QStringList& files);
    // A sentence about a record that is not in the table.
    void AddUnread(const QString& sentence);

    std::string Html() const;

  private:
    const KneeRule rule_;
    const QDir folder_;
    std::string rows_;
    std::string unread_;
    std::vector<ChartCurve> curves_;  // of the first tests that have one
    std::size_t records_ = 0;
    std::size_t tests_ = 0;
    std::size_t withCurve_ = 0;
};

}  // namespace davo
