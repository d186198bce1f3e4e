// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/frmStatusBar.h"

#include <QCloseEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <chrono>
#include <utility>

#include "common/run_time_error.h"
#include "files/copy_records.h"
#include "files/record_names.h"
#include "ui/big_button.h"
#include "ui/form_parts.h"
#include "ui/page_header.h"

namespace davo {

namespace {

constexpr std::chrono::milliseconds kTick{1};
constexpr int kHundredPercent = 100;
constexpr int kBarHeight = 36;

}  // namespace

// A filled bar of a share of its width, and the share as a number in its middle.
class SharePicture : public QWidget {
  public:
    explicit SharePicture(QWidget* parent) : QWidget(parent) {
        setFixedHeight(kBarHeight);
        setPercent(0);
    }
    void setPercent(int percent) {
        percent_ = std::clamp(percent, 0, kHundredPercent);
        setAccessibleName(Text());
        update();
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const QRect filled(0, 0, width() * percent_ / kHundredPercent, height());
        painter.fillRect(rect(), palette().base());
        painter.fillRect(filled, palette().highlight());
        // Each part of the number in the colour that is read on what lies under it.
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(rect(), Qt::AlignCenter, Text());
        painter.setClipRect(filled);
        painter.setPen(palette().color(QPalette::HighlightedText));
        painter.drawText(rect(), Qt::AlignCenter, Text());
    }

  private:
    QString Text() const { return QString::number(percent_) + QLatin1Char('%'); }
    int percent_ = 0;
};

frmStatusBar::frmStatusBar(std::vector<QString> files, QString dataPath, QString copyTarget,
                           Prompts& prompts)
    : files_(std::move(files)),
      dataPath_(std::move(dataPath)),
      copyTarget_(std::move(copyTarget)),
      prompts_(prompts),
      handlers_(prompts),
      picStatus_(Named(new SharePicture(this), "picStatus")),
      lblSource_(MakeParagraph(this, "lblSource")),
      lblDest_(MakeParagraph(this, "lblDest")),
      cmdCancel_(new BigButton(this, "cmdCancel", "&Cancel")) {
    setObjectName(QStringLiteral("frmStatusBar"));
    endings_.files = files_.size();
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
        Timer1_.stop();
        prompts_.Message(endings_.Text(copyTarget_));
        QTimer::singleShot(0, this, [this] { CloseForm(*this); });
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
        Timer1_.stop();
        prompts_.Message(endings_.Text(copyTarget_));
        QTimer::singleShot(0, this, [this] { CloseForm(*this); });
        return;
    }
    endings_.Count(file, outcome);
    ++next_;
    picStatus_->setPercent(static_cast<int>(next_ * kHundredPercent / files_.size()));
}

void frmStatusBar::closeEvent(QCloseEvent* event) {
    Timer1_.stop();
    closed_ = true;
    event->accept();
    if (OnUnload) std::exchange(OnUnload, nullptr)();
}

}  // namespace davo
