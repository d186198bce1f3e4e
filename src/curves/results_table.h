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

    // Whether it takes no more width than its columns need.
    void KeepToColumns(bool keeps);

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void updateGeometries() override;

  private:
    // No more height than its rows need, and no less than that of a few.
    void KeepToRows();

    bool placing_ = false;  // the rows, while updateGeometries runs
};

}  // namespace davo
