// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QTreeWidget>
#include <vector>

#include "records/directory_file.h"

class QLabel;
class QLineEdit;

namespace davo {

// The columns of a record list, in their order.
enum class RecordColumns { UpToTests = 3, UpToStation = 4, All = 7 };

// Gives list the rows and letters of every list: large enough for gloves. The first key that enters
// it selects its first row.
void MakeRows(QAbstractItemView* list);

// A list of test records, one row each, in the order given.
class RecordList : public QTreeWidget {
  public:
    RecordList(RecordColumns columns, QWidget* parent);

    // A click on a heading sorts by it. Not where the window has options for the order.
    void SortByHeadings();

    // Shows rows, whose files are these, and selects none. The columns take the width of their
    // contents.
    void Fill(std::vector<ListRow> rows, std::vector<QString> files = {});
    // The same with the first count records of tables; each row of a folder has its file.
    void Fill(const DirectoryTables& tables, int count);

    // A box that filters the list, and how many rows it leaves: those that have every word of it in
    // a column, also in one that this list does not show, or in the serial number; upper and lower
    // case are the same. It holds for what is filled in later, too. A row that goes is selected no
    // longer. Ctrl+F in the window goes to the box, Enter from there to the list; Escape, in the
    // box or in the list, shows all rows again.
    QWidget* MakeFilter(QWidget* window);

    // The indices of the selected rows among those filled in, from 0 and upwards.
    std::vector<int> SelectedRows() const;
    // Nothing for a row that the filter hides.
    QTreeWidgetItem* ItemOf(int row) const;
    // The files of the selected rows; none for those that have no file.
    std::vector<QString> SelectedFiles() const;
    // Selects the rows of these files, as far as they are there, and no other.
    void SelectFiles(const std::vector<QString>& files);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void Filter(const QString& text);

    QLineEdit* txtFilter_ = nullptr;  // none unless the list is filtered
    QLabel* lblFiltered_ = nullptr;
    std::vector<ListRow> rows_;   // as they were filled in
    std::vector<QString> files_;  // theirs
    QStringList words_;           // that every shown row has
};

}  // namespace davo
