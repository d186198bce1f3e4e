// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include "common/prompts.h"
#include "curves/record_panel.h"

class QPushButton;
class QSplitter;

namespace davo {

class RecordList;

// A narrower window has no room for a chart beside a list.
inline constexpr int kBothWidth = 1100;

// A window's controls with the record panel at their right, which shows what is selected in their
// list; the operator moves the edge between them, or shuts the panel by it. Where there is no room
// for both, or in a window of less than kBothWidth pixels, a button shows the panel in their place:
// the window needs no more room than without it.
class BesideRecords : public QWidget {
  public:
    // list is one of the controls and has listShare (0 to 1) of their width; its first three
    // columns stay whole. Its files are in dataPath (ends with the separator). cmdRecord, one of
    // the window's row of buttons, is seen only where there is no room for both. dataPath and
    // prompts must outlive it.
    BesideRecords(QWidget* controls, RecordList& list, double listShare, QPushButton& cmdRecord,
                  const QString& dataPath, Prompts& prompts, QWidget* parent);

    RecordPanel& Panel() { return *panel_; }
    // Shows what is selected, read again where it has changed.
    void ShowSelected();

    QSize sizeHint() const override { return controls_->sizeHint(); }
    QSize minimumSizeHint() const override { return controls_->minimumSizeHint(); }

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    // The width that the controls need for so many columns of the list.
    int ControlsWidth(int columns) const;
    void Place();
    // Shows the panel in place of the controls, or the controls again.
    void ShowAlone(bool panel);

    QWidget* controls_;
    RecordList& list_;
    const QString& dataPath_;
    double listShare_;
    QPushButton& cmdRecord_;
    QSplitter* splitter_;
    RecordPanel* panel_;
    bool alone_ = false;
    bool placed_ = false;
};

}  // namespace davo
