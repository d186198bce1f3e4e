#pragma once

#include <QSplitter>
#include <vector>

#include "common/prompts.h"

class QTreeView;

namespace davo {

class RecordPanel;

// A window's controls with the record panel at their right. The panel can be shut by its edge, and
// is away where it would cut the list: the window needs no more room than without it.
class BesideRecords : public QSplitter {
  public:
    // list is one of the controls and has listShare (0 to 1) of their width; its columns stay
    // whole. prompts must outlive it.
    BesideRecords(QWidget* controls, const QTreeView& list, double listShare, Prompts& prompts,
                  QWidget* parent);

    // RecordPanel::ShowRecords.
    void ShowRecords(const std::vector<QString>& files);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    // The width that the controls want.
    int ControlsWidth() const;

    QWidget* controls_;
    const QTreeView& list_;
    double listShare_;
    RecordPanel* panel_;
    bool placed_ = false;
};

}  // namespace davo
