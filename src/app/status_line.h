// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QTimer>
#include <QWidget>
#include <vector>

#include "app/port_labels.h"
#include "common/prompts.h"
#include "link/link.h"
#include "records/directory_file.h"

class QLabel;
class QPushButton;
class QStackedLayout;

namespace davo {

// Something to be known, in a few words and in detail.
struct Notice {
    QString caption;
    QString detail;
};

// What the status line says.
struct StatusFacts {
    LinkGlance link;
    QString dataPath;
    QString kneepointType;
    std::vector<SkippedFile> skipped;   // of the last rebuild of the record directory
    int notListed = 0;                  // of the same
    std::vector<Notice> troubles = {};  // of the program's start
};

// What is to be known about the data folder. Nothing to say: both are empty.
Notice NoticeOf(const std::vector<SkippedFile>& skipped, int notListed);

// The same of a data folder that could not be read or written, and of texts that it has replaced.
std::vector<Notice> NoticesOf(const RebuildResult& listing, const QString& dataPath);

// What an exchange waits for, as a sentence for the operator.
QString WaitWords(const WaitUnderWay& wait);

// The content of the main window's status bar: port, instrument, data folder, kneepoint marker and
// a notice. Once an exchange has waited for two seconds it says what it waits for instead, with a
// button that ends the wait.
class StatusLine : public QWidget {
  public:
    // Both must outlive it.
    StatusLine(Link& link, Prompts& prompts, QWidget* parent);

    void ShowFacts(const StatusFacts& facts);
    // A wait has begun or ended, see Link::OnWaitChanged.
    void WaitChanged();

  private:
    class ElidedLabel;

    QWidget* BuildFacts();
    QWidget* BuildWait();
    void ShowWait();

    Link& link_;
    Prompts& prompts_;
    QString noticeDetail_;
    QTimer delay_;
    QStackedLayout* pages_ = nullptr;
    QLabel* lblPort_ = nullptr;
    ElidedLabel* lblDevice_ = nullptr;
    QLabel* lblModel_ = nullptr;
    ElidedLabel* lblDataPath_ = nullptr;
    QLabel* lblKneepoint_ = nullptr;
    QPushButton* cmdNotice_ = nullptr;
    QLabel* lblWait_ = nullptr;
};

}  // namespace davo
