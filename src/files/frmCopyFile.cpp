// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/frmCopyFile.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <chrono>
#include <utility>

#include "common/files.h"
#include "common/places.h"
#include "common/run_time_error.h"
#include "files/record_names.h"
#include "ui/form_parts.h"
#include "ui/page_header.h"

namespace davo {

namespace {

constexpr std::chrono::milliseconds kBarTick{50};
constexpr qint64 kLeastShown = 30;  // ms
constexpr int kWholeBar = 100;
constexpr int kPathHeight = 40;  // a glove meets it
constexpr std::chrono::milliseconds kLook{1000};
constexpr std::size_t kMostDrives = 5;  // that have a button

}  // namespace

frmCopyFile::frmCopyFile(std::vector<QString> files, const Settings& settings, Prompts& prompts,
                         DriveList drives)
    : files_(std::move(files)),
      settings_(settings),
      prompts_(prompts),
      listDrives_(std::move(drives)),
      handlers_(prompts) {
    setObjectName(QStringLiteral("frmCopyFile"));
    setWindowTitle(QStringLiteral("Copy File(s)"));
    auto* column = new QVBoxLayout(this);
    column->setSpacing(kFormSpacing);
    column->addWidget(BuildQuestion());
    lblStatus_ = MakeParagraph(this, "lblStatus");
    lblStatus_->hide();
    column->addWidget(lblStatus_);
    pbarProgress_ = Named(new QProgressBar(this), "pbarProgress");
    Enlarge(pbarProgress_);
    pbarProgress_->hide();
    column->addWidget(pbarProgress_);
    column->addStretch();
    cmdOK_ = new BigButton(this, "cmdOK", "&OK");
    column->addWidget(cmdOK_);
    look_.setInterval(kLook);
    connect(&look_, &QTimer::timeout, this, [this] {
        if (!handlers_.Running()) ShowDrives();
    });
    Timer1_.setInterval(kBarTick);
    connect(&Timer1_, &QTimer::timeout, this, [this] { Timer1_Timer(); });
    connect(cmdPath_, &QPushButton::clicked, this,
            [this] { handlers_.RunAlone([&] { cmdPath_Click(); }); });
    connect(cmdOK_, &QPushButton::clicked, this, [this] {
        if (copying_) {
            CloseForm(*this);
        } else {
            handlers_.RunAlone([&] { cmdOK_Click(); });
        }
    });
}

QWidget* frmCopyFile::BuildQuestion() {
    question_ = new QWidget(this);
    auto* column = WithMargin(new QVBoxLayout(question_), 0);
    column->setSpacing(kFormSpacing);
    column->addWidget(
        MakeLabel(question_, "lblPath", QStringLiteral("Copy %1 file(s) to:").arg(files_.size())));
    driveButtons_ = new QWidget(question_);
    driveColumn_ = WithMargin(new QVBoxLayout(driveButtons_), 0);
    column->addWidget(driveButtons_);
    lblDrives_ = MakeParagraph(question_, "lblDrives");
    column->addWidget(lblDrives_);
    auto* row = new QHBoxLayout;
    txtPath_ = Named(new QLineEdit(question_), "txtPath");
    txtPath_->setAccessibleName(QStringLiteral("Target folder"));
    Enlarge(txtPath_);
    txtPath_->setMinimumHeight(kPathHeight);
    row->addWidget(txtPath_, 1);
    cmdPath_ = new BigButton(question_, "cmdPath", "&Path");
    cmdPath_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    row->addWidget(cmdPath_);
    column->addLayout(row);
    return question_;
}

void frmCopyFile::Form_Load() {
    lblDrives_->setText(
        QStringLiteral("No stick is plugged in. Plug one in, or choose another folder."));
    ShowDrives();
    look_.start();
    auto* first = driveButtons_->findChild<QPushButton*>();
    (first != nullptr ? first : static_cast<QWidget*>(txtPath_))->setFocus();
}

void frmCopyFile::ShowDrives() {
    std::vector<RemovableDrive> drives = listDrives_();
    drives.resize(std::min(drives.size(), kMostDrives));
    QList<QPushButton*> gone = driveButtons_->findChildren<QPushButton*>();
    int number = 0;
    for (const RemovableDrive& drive : drives) {
        // A button that is made anew loses the focus, and the press that is under way.
        const auto known = std::ranges::find(gone, ShownPath(drive.path), &QPushButton::toolTip);
        QPushButton* button = known != gone.end() ? *known : MakeDriveButton(drive.path);
        gone.removeOne(button);
        button->setObjectName(QStringLiteral("cmdDrive%1").arg(number));
        driveColumn_->insertWidget(number++, button);
        QString name = drive.name;
        button->setText(
            QStringLiteral("&%1   %2   %3 free")
                .arg(number)
                .arg(name.replace(QLatin1Char('&'), QLatin1String("&&")),
                     QLocale::c().formattedDataSize(drive.free, 1, QLocale::DataSizeSIFormat)));
    }
    qDeleteAll(gone);
    lblDrives_->setVisible(drives.empty());
}

QPushButton* frmCopyFile::MakeDriveButton(const QString& path) {
    auto* button = new BigButton(driveButtons_);
    button->setToolTip(ShownPath(path));
    connect(button, &QPushButton::clicked, this,
            [this, path] { handlers_.RunAlone([&] { cmdDrive_Click(path); }); });
    return button;
}

bool frmCopyFile::IsRemovable(const QString& target) const {
    // As they are now: of one that has gone, its folder may be there still.
    const std::vector<RemovableDrive> drives = listDrives_();
    const QString folder = CopyTarget(ShownPath(QDir::cleanPath(target)));
    return std::any_of(drives.begin(), drives.end(), [&folder](const RemovableDrive& drive) {
        return folder.startsWith(CopyTarget(ShownPath(drive.path)));
    });
}

void frmCopyFile::cmdDrive_Click(const QString& path) {
    txtPath_->setText(ShownPath(path));
    cmdOK_Click();
}

void frmCopyFile::cmdPath_Click() {
    const QString chosen =
        prompts_.ChooseFolder(QStringLiteral("&Select a directory:"), QStringLiteral("C:\\"));
    if (!chosen.isEmpty()) txtPath_->setText(ShownPath(chosen));
}

void frmCopyFile::cmdOK_Click() {
    const QString target = CopyTarget(txtPath_->text());
    if (target.isEmpty() || IsSameFolder(target, settings_.dataPath) || !FolderExists(target)) {
        prompts_.Message(QStringLiteral("Invalid Path. Please select another path."));
        cmdPath_->setFocus();
        return;
    }
    ShowCopying();
    copying_ = true;
    handlers_.Run([&] { CopyAll(target); });
    copying_ = false;
    Timer1_.stop();
    cmdOK_->setText(QStringLiteral("&OK"));
    QTimer::singleShot(0, this, [this] { CloseForm(*this); });
}

void frmCopyFile::ShowCopying() {
    question_->setEnabled(false);
    question_->hide();
    cmdOK_->setText(QStringLiteral("Cancel"));
    cmdOK_->setFocus();
    pbarProgress_->setRange(0, kWholeBar);
    pbarProgress_->setValue(0);
    pbarProgress_->show();
    lblStatus_->show();
    Timer1_.start();
}

void frmCopyFile::ShowNames(const QString& target, const QString& file) {
    lblStatus_->setText(QStringLiteral("Copying '") + settings_.dataPath + file +
                        QStringLiteral("'\r\n\r\nTO '") + target + file + QLatin1Char('\''));
}

void frmCopyFile::CopyAll(const QString& target) {
    CopyEndings endings{.files = files_.size(), .failures = {}};
    QElapsedTimer sinceShown;
    for (; next_ < files_.size() && !cancelled_; ++next_) {
        if (next_ >= kMostSelected) throw RunTimeError(ErrorNumber::SubscriptOutOfRange);
        const QString& file = files_[next_];
        // Faster than a screen shows them, names would only cost time; a question needs its own.
        if (!sinceShown.isValid() || sinceShown.hasExpired(kLeastShown) ||
            next_ + 1 == files_.size() || FileExists(target + file)) {
            sinceShown.start();
            ShowNames(target, file);
        }
        const CopyOutcome outcome = CopyRecord(settings_.dataPath, target, file, prompts_);
        if (outcome.end == CopyEnd::Cancelled) break;
        endings.Count(file, outcome);
        QCoreApplication::processEvents();
    }
    Timer1_Timer();
    const QString ended = endings.Text(target, IsRemovable(target));
    if (endings.copied == files_.size()) {
        prompts_.Inform(ended);
    } else {
        prompts_.Message(ended);
    }
}

void frmCopyFile::Timer1_Timer() {
    pbarProgress_->setValue(static_cast<int>(next_ * kWholeBar / files_.size()));
}

// The window has no button that leaves it before the copy has begun.
void frmCopyFile::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        CloseForm(*this);
    } else {
        QWidget::keyPressEvent(event);
    }
}

void frmCopyFile::closeEvent(QCloseEvent* event) {
    if (handlers_.Running()) {
        // The file under way is whole or gone before the window closes.
        cancelled_ = cancelled_ || copying_;
        event->ignore();
        return;
    }
    event->accept();
    if (OnUnload) std::exchange(OnUnload, nullptr)();
}

}  // namespace davo
