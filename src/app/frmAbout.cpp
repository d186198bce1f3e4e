// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frmAbout.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "app/program_icon.h"
#include "common/text.h"
#include "ui/big_button.h"
#include "ui/centre_form.h"

namespace davo {

namespace {

constexpr int kPicture = 96;
constexpr int kMargin = 24;
constexpr int kLeastTextWidth = 280;
constexpr double kNameGrowth = 1.6;
constexpr double kVersionGrowth = 1.3;

QLabel* MakeLabel(QWidget* parent, const char* name, const char* text, double growth) {
    auto* label = new QLabel(QLatin1String(text), parent);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * growth);
    label->setFont(font);
    return label;
}

}  // namespace

frmAbout::frmAbout(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmAbout"));
    setWindowTitle(QStringLiteral("About DAVO"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* picture = new QLabel(this);
    picture->setPixmap(ProgramIcon().pixmap(QSize(kPicture, kPicture), devicePixelRatioF()));
    QLabel* name = MakeLabel(this, "lblName", "DAVO PC-Interface", kNameGrowth);
    lblDavoVer_ = MakeLabel(this, "lblDavoVer", "DAVO-E Rx.xx", kVersionGrowth);
    auto* frame = new QGroupBox(QStringLiteral("Software Rev."), this);
    frame->setObjectName(QStringLiteral("Frame1"));
    auto* inFrame = new QVBoxLayout(frame);
    inFrame->addWidget(MakeLabel(frame, "lblDavoPcVer", "DAVO-PC V.3.15", kVersionGrowth));
    auto* button = new BigButton(this);
    button->setObjectName(QStringLiteral("Command1"));
    button->setText(QStringLiteral("&OK"));
    button->setDefault(true);
    connect(button, &QPushButton::clicked, this, &QDialog::close);

    auto* texts = new QVBoxLayout;
    for (QWidget* one : {static_cast<QWidget*>(name), static_cast<QWidget*>(lblDavoVer_),
                         static_cast<QWidget*>(frame), static_cast<QWidget*>(button)}) {
        one->setMinimumWidth(kLeastTextWidth);
        texts->addWidget(one);
    }
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    row->setSpacing(kMargin);
    row->addWidget(picture, 0, Qt::AlignTop);
    row->addLayout(texts, 1);
}

void frmAbout::Form_Load(const std::string& instrumentModel) {
    lblDavoVer_->setText(FromPage(instrumentModel));
    CentreForm(*this, parentWidget());
}

}  // namespace davo
