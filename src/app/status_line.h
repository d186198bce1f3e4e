// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QTimer>
#include <QWidget>
#include <utility>
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

// So many of the newest records are shown.
inline constexpr std::size_t kNewestRecords = 10;

// What the status line and the start page say.
struct ShellFacts {
    LinkGlance link;
    QString dataPath;
    QString kneepointType;
    RebuildResult listing = {};         // of the data folder
    std::vector<Notice> troubles = {};  // of the program's start
    std::vector<ListRow> records = {};  // newest first, as many as there are
    std::vector<QString> files = {};    // of the first of them, in dataPath
};

// What is to be known about the data folder. Nothing to say: both are empty.
Notice NoticeOf(const std::vector<SkippedFile>& skipped, int notListed);

// The same of a listing, which may not have been read or written, and may have replaced texts.
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

    void ShowFacts(const ShellFacts& facts);
    // A wait has begun or ended, see Link::OnWaitChanged.
    void WaitChanged();

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    class ElidedLabel;

    QWidget* BuildFacts();
    QWidget* BuildWait();
    void ShowWait();
    // Smaller letters where the user's have no room.
    void FitLetters();

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
    std::pair<QStringList, int> fitted_;  // the texts, and the width that they were given
};

}  // namespace davo
