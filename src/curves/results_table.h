// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTableWidget>
#include <vector>

#include "curves/record_facts.h"

namespace davo {

// A test that the record panel shows.
struct ShownTest {
    std::size_t record = 0;  // among those that are shown
    const RecordTest* test = nullptr;
    QString name;
};

// The kneepoints and results of tests: a row each, a column for every test.
class ResultsTable : public QTableWidget {
  public:
    explicit ResultsTable(QWidget* parent);

    // Shows tests and chooses the first one; with several, another column can be chosen.
    void Fill(const std::vector<ShownTest>& tests);

    // Its height with so many rows in sight, where it is so wide.
    int HeightOf(int rows, int room) const;
};

}  // namespace davo
