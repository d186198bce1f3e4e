// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/frmStatusBar.h"

#include <QCloseEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <chrono>
#include <utility>

#include "common/run_time_error.h"
#include "files/record_names.h"
#include "ui/form_parts.h"
#include "ui/page_header.h"

namespace davo {

namespace {

constexpr std::chrono::milliseconds kTick{1};
constexpr int kBarHeight = 36;

}  // namespace

frmStatusBar::frmStatusBar(std::vector<QString> files, QString dataPath, QString copyTarget,
                           Prompts& prompts)
    : files_(std::move(files)),
      dataPath_(std::move(dataPath)),
      copyTarget_(std::move(copyTarget)),
      prompts_(prompts),
      handlers_(prompts),
      picStatus_(Named(new QProgressBar(this), "picStatus")),
      lblSource_(MakeParagraph(this, "lblSource")),
      lblDest_(MakeParagraph(this, "lblDest")),
      cmdCancel_(new BigButton(this, "cmdCancel", "&Cancel")) {
    setObjectName(QStringLiteral("frmStatusBar"));
    endings_.files = files_.size();
    picStatus_->setRange(0, static_cast<int>(files_.size()));
    picStatus_->setValue(0);
    picStatus_->setMinimumHeight(kBarHeight);
    Enlarge(picStatus_);
    auto* column = new QVBoxLayout(this);
    column->setSpacing(kFormSpacing);
    for (QLabel* label : {lblSource_, lblDest_})
        column->addWidget(label);
    column->addWidget(picStatus_);
    column->addStretch();
    cmdCancel_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    column->addWidget(cmdCancel_);
    Timer1_.setInterval(kTick);
    connect(&Timer1_, &QTimer::timeout, this,
            [this] { handlers_.RunAlone([&] { Timer1_Timer(); }); });
    connect(cmdCancel_, &QPushButton::clicked, this, [this] { CloseForm(*this); });
}

void frmStatusBar::Form_Load() {
    Timer1_.start();
    ShowPaths();
    cmdCancel_->setFocus();
}

void frmStatusBar::ShowPaths() {
    if (next_ >= files_.size()) return;
    const QString& file = files_[next_];
    lblSource_->setText(dataPath_ + file);
    lblDest_->setText(copyTarget_ + file);
}

void frmStatusBar::Timer1_Timer() {
    if (next_ >= files_.size()) {
        End();
        return;
    }
    if (next_ >= kMostSelected) {
        Timer1_.stop();
        throw RunTimeError(ErrorNumber::SubscriptOutOfRange);
    }
    ShowPaths();
    const QString& file = files_[next_];
    const CopyOutcome outcome = CopyRecord(dataPath_, copyTarget_, file, prompts_);
    if (closed_) return;
    if (outcome.end == CopyEnd::Cancelled) {
        End();
        return;
    }
    endings_.Count(file, outcome);
    picStatus_->setValue(static_cast<int>(++next_));
}

void frmStatusBar::End() {
    Timer1_.stop();
    prompts_.Message(endings_.Text(copyTarget_));
    QTimer::singleShot(0, this, [this] { CloseForm(*this); });
}

void frmStatusBar::closeEvent(QCloseEvent* event) {
    Timer1_.stop();
    closed_ = true;
    event->accept();
    if (OnUnload) std::exchange(OnUnload, nullptr)();
}

}  // namespace davo
