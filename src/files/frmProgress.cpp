// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/frmProgress.h"

#include <QProgressBar>
#include <QVBoxLayout>
#include <algorithm>
#include <chrono>

#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr std::chrono::milliseconds kStepTime{250};
constexpr int kWhole = 100;
constexpr int kSteps = 4;

}  // namespace

frmProgress::frmProgress(QWidget* parent)
    : QWidget(parent), pbarProgress_(Named(new QProgressBar(this), "pbarProgress")) {
    setObjectName(QStringLiteral("frmProgress"));
    pbarProgress_->setRange(0, kWhole);
    Enlarge(pbarProgress_);
    auto* column = new QVBoxLayout(this);
    column->addWidget(pbarProgress_);
    Timer1_.setInterval(kStepTime);
    connect(&Timer1_, &QTimer::timeout, this, [this] { Timer1_Timer(); });
}

void frmProgress::Form_Load() {
    pbarProgress_->setValue(0);
    Timer1_.start();
}

void frmProgress::Timer1_Timer() {
    const int value = std::min(pbarProgress_->value() + kWhole / kSteps, kWhole);
    pbarProgress_->setValue(value);
    if (value >= kWhole) Timer1_.stop();
}

}  // namespace davo
