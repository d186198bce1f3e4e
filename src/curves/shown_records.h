// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "reports/record_facts.h"

namespace davo {

// A record that is to be shown.
struct ShownRecord {
    QString file;                // its full path
    QString label;               // in front of its tests' names; may be empty
    std::optional<double> test;  // the number of the only test that is shown
    bool operator==(const ShownRecord&) const = default;
};

// A test that is shown.
struct ShownTest {
    std::size_t record = 0;  // of ShownRecords::Records
    const RecordTest* test = nullptr;
    QString name;
};

// In the legend and at the crosshair: a saved picture tells whose curve it is.
QString CurveName(const ShownTest& shown);

// The records that the record panel shows, and which of their tests.
class ShownRecords {
  public:
    // Reads what is new or has changed since, forgets the others, and judges the tests that are
    // shown: as many of every record as there is room for.
    void Read(std::span<const ShownRecord> wanted);

    // Of those that can be read, in the order in which they were wanted.
    const std::vector<const RecordFacts*>& Records() const { return records_; }
    const std::vector<ShownTest>& Tests() const { return tests_; }
    // Why the others are not shown.
    QStringList Troubles() const;

  private:
    // A file as it was read: its facts, or why there are none.
    struct File {
        QDateTime changed;
        qint64 size = 0;
        std::optional<RecordFacts> facts;
        QString trouble;
    };

    void ReadFile(const QString& path, std::map<QString, File>& before);
    void AddTests(const ShownRecord& record, std::size_t share, bool named);

    std::map<QString, File> files_;
    std::vector<const RecordFacts*> records_;
    std::vector<ShownTest> tests_;
};

}  // namespace davo
