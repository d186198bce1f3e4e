#pragma once

#include <QTimer>

class QLabel;
class QPushButton;
class QStatusBar;

namespace davo {

class Link;

// Says in the status bar what a longer wait for the instrument waits for, and ends it on request.
class WaitNotice {
  public:
    // Both must outlive it.
    WaitNotice(Link& link, QStatusBar& bar);

    // A wait has begun or ended.
    void WaitChanged();

  private:
    void Show(bool show);

    Link& link_;
    QStatusBar& bar_;
    QLabel* lblWait_;
    QPushButton* cmdStopWait_;
    QTimer delay_;
};

}  // namespace davo
