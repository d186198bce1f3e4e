// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTableWidget>
#include <vector>

#include "curves/shown_records.h"

namespace davo {

// The results and kneepoints of tests: a row each, a column for every test.
class ResultsTable : public QTableWidget {
  public:
    explicit ResultsTable(QWidget* parent);

    // Shows tests and chooses one of them; with several, another column can be chosen.
    void Fill(const std::vector<ShownTest>& tests, std::size_t chosen);
    void Choose(std::size_t test);

    // Its width with all columns in sight.
    int WholeWidth() const;

    // Its height with so many rows in sight, where it is so wide.
    int HeightOf(int rows, int room) const;
};

}  // namespace davo
