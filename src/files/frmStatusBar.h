// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>
#include <vector>

#include "files/copy_records.h"
#include "ui/event_handlers.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace davo {

// Copies record files one a tick and shows how much is done.
class frmStatusBar : public QWidget {
  public:
    // files: those of dataPath; copyTarget ends with the separator as
    // dataPath does. prompts must outlive the window.
    frmStatusBar(std::vector<QString> files, QString dataPath, QString copyTarget,
                 Prompts& prompts);

    void Form_Load();

    // The window has closed.
    std::function<void()> OnUnload;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void Timer1_Timer();
    void ShowPaths();
    // Says what was copied, and closes.
    void End();

    const std::vector<QString> files_;
    const QString dataPath_;
    const QString copyTarget_;
    Prompts& prompts_;
    EventHandlers handlers_;
    std::size_t next_ = 0;  // the window's start index into the list
    CopyEndings endings_;
    bool closed_ = false;

    QProgressBar* picStatus_;
    QLabel* lblSource_;
    QLabel* lblDest_;
    QPushButton* cmdCancel_;
    QTimer Timer1_;
};

}  // namespace davo
