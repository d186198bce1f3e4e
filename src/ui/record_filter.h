// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;

namespace davo {

class RecordList;

// The box that filters a list of records, and how many are left. Ctrl+F in the window goes to it;
// Down and Enter go on to the list; Escape, there or in the list, shows all records again.
class RecordFilter : public QWidget {
  public:
    // list must outlive it.
    RecordFilter(RecordList& list, QWidget* window);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void Count();
    void EnterList();

    RecordList& list_;
    QLineEdit* txtFilter_;
    QLabel* lblFiltered_;
};

}  // namespace davo
