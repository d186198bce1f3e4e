// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/frmCopyFile.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <chrono>
#include <utility>

#include "common/files.h"
#include "common/places.h"
#include "common/run_time_error.h"
#include "files/record_names.h"
#include "ui/big_button.h"
#include "ui/close_form.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr std::chrono::milliseconds kBarTick{50};
constexpr qint64 kLeastShown = 30;  // ms
constexpr int kWholeBar = 100;
constexpr int kPathHeight = 40;  // a glove meets it

}  // namespace

frmCopyFile::frmCopyFile(std::vector<QString> files, const Settings& settings, Prompts& prompts)
    : files_(std::move(files)), settings_(settings), prompts_(prompts), handlers_(prompts) {
    setObjectName(QStringLiteral("frmCopyFile"));
    setWindowTitle(QStringLiteral("Copy File(s)"));
    auto* column = new QVBoxLayout(this);
    column->setSpacing(kFormSpacing);
    lblPath_ = MakeLabel(this, "lblPath", QStringLiteral("Copy %1 file(s) to:").arg(files_.size()));
    column->addWidget(lblPath_);
    auto* row = new QHBoxLayout;
    txtPath_ = Named(new QLineEdit(this), "txtPath");
    txtPath_->setAccessibleName(QStringLiteral("Target folder"));
    Enlarge(txtPath_);
    txtPath_->setMinimumHeight(kPathHeight);
    row->addWidget(txtPath_, 1);
    cmdPath_ = new BigButton(this, "cmdPath", "&Path");
    cmdPath_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    row->addWidget(cmdPath_);
    column->addLayout(row);
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

void frmCopyFile::Form_Load() {
    txtPath_->setFocus();
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
    txtPath_->setEnabled(false);
    txtPath_->hide();
    lblPath_->hide();
    cmdPath_->hide();
    cmdPath_->setEnabled(false);
    cmdOK_->setText(QStringLiteral("Cancel"));
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
    prompts_.Message(endings.Text(target));
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
