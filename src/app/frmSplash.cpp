// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frmSplash.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>
#include <utility>

#include "app/program_icon.h"
#include "common/version.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kInterval = 1270;  // ms
constexpr int kSplashPicture = 128;
constexpr int kSplashMargin = 40;
constexpr int kTextSpacing = 6;
constexpr double kSplashNameGrowth = 2.6;
constexpr double kSplashVersionGrowth = 1.3;

}  // namespace

frmSplash::frmSplash(BusyPointer& pointer, std::function<void()> showMain)
    : QWidget(nullptr, Qt::SplashScreen),
      pointer_(pointer),
      showMain_(std::move(showMain)),
      Timer1_(this) {
    setObjectName(QStringLiteral("frmSplash"));
    setWindowTitle(QStringLiteral("DAVO PC-Interface"));
    auto* texts = new QVBoxLayout;
    texts->setSpacing(kTextSpacing);
    texts->addStretch(1);
    QLabel* name = MakeLabel(this, "", windowTitle(), kSplashNameGrowth);
    MakeBold(name);
    texts->addWidget(name);
    const QString version = QStringLiteral("V.%1").arg(QLatin1String(kVersion));
    texts->addWidget(MakeLabel(this, "", version, kSplashVersionGrowth));
    texts->addStretch(1);
    auto* row = WithMargin(new QHBoxLayout(this), kSplashMargin);
    row->setSpacing(kSplashMargin);
    row->addWidget(MakePicture(this, kSplashPicture));
    row->addLayout(texts);
    Timer1_.setObjectName(QStringLiteral("Timer1"));
    Timer1_.setSingleShot(true);
    Timer1_.setInterval(kInterval);
    connect(&Timer1_, &QTimer::timeout, this, [this] { Timer1_Timer(); });
}

void frmSplash::Form_Load() {
    CentreForm(*this, nullptr);
    Timer1_.start();
}

void frmSplash::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().base());
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void frmSplash::Timer1_Timer() {
    pointer_.ShowBusyPointer();
    showMain_();
    close();
    pointer_.RestoreMousePointer();
}

}  // namespace davo
