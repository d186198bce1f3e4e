// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>
#include <vector>

#include "common/settings.h"
#include "files/copy_records.h"
#include "files/removable_drives.h"
#include "ui/event_handlers.h"

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

namespace davo {

// "Copy File(s)": copies record files from the data folder into another one. Each stick that is
// plugged in has a button that copies onto it.
class frmCopyFile : public QWidget {
  public:
    // files: those of the data folder. settings and prompts must outlive the window.
    frmCopyFile(std::vector<QString> files, const Settings& settings, Prompts& prompts,
                DriveList drives = RemovableDrives);

    void Form_Load();

    // The window has closed.
    std::function<void()> OnUnload;

  protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QWidget* BuildQuestion();
    void ShowDrives();
    QPushButton* MakeDriveButton(const QString& path);
    bool IsRemovable(const QString& target) const;
    void cmdDrive_Click(const QString& path);
    void cmdPath_Click();
    void cmdOK_Click();
    void ShowCopying();
    void ShowNames(const QString& target, const QString& file);
    void CopyAll(const QString& target);
    void Timer1_Timer();

    const std::vector<QString> files_;
    const Settings& settings_;
    Prompts& prompts_;
    const DriveList listDrives_;
    EventHandlers handlers_;
    std::size_t next_ = 0;  // the window's start index into the list
    bool copying_ = false;
    bool cancelled_ = false;

    QWidget* question_ = nullptr;  // where to
    QWidget* driveButtons_ = nullptr;
    QVBoxLayout* driveColumn_ = nullptr;
    QLabel* lblDrives_ = nullptr;
    QLineEdit* txtPath_ = nullptr;
    QPushButton* cmdPath_ = nullptr;
    QPushButton* cmdOK_ = nullptr;
    QLabel* lblStatus_ = nullptr;
    QProgressBar* pbarProgress_ = nullptr;
    QTimer Timer1_;
    QTimer look_;
};

}  // namespace davo
