// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTreeWidget>
#include <vector>

#include "records/directory_entry.h"

namespace davo {

// The columns of a record list, in their order.
enum class RecordColumns { UpToTests = 3, UpToStation = 4, All = 7 };

// A list of test records, one row each, in the order given and large enough for gloves.
class RecordList : public QTreeWidget {
  public:
    RecordList(RecordColumns columns, QWidget* parent);

    // Shows rows and selects none. The columns take the width of their contents.
    void Fill(const std::vector<ListRow>& rows);

    // The indices of the selected rows, from 0 and upwards.
    std::vector<int> SelectedRows() const;
};

}  // namespace davo
