// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frmAbout.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "app/port_labels.h"
#include "app/program_icon.h"
#include "common/version.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kAboutPicture = 96;
constexpr int kAboutMargin = 24;
constexpr int kLeastTextWidth = 280;
constexpr double kAboutNameGrowth = 1.6;
constexpr double kAboutVersionGrowth = 1.3;

}  // namespace

frmAbout::frmAbout(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmAbout"));
    setWindowTitle(QStringLiteral("About DAVO"));
    setAttribute(Qt::WA_DeleteOnClose);
    QLabel* name =
        MakeParagraph(this, "lblName", QStringLiteral("DAVO PC-Interface"), kAboutNameGrowth);
    lblDavoVer_ =
        MakeLabel(this, "lblDavoVer", QStringLiteral("DAVO-E Rx.xx"), kAboutVersionGrowth);
    auto* frame = Named(new QGroupBox(QStringLiteral("Software Rev."), this), "Frame1");
    auto* inFrame = new QVBoxLayout(frame);
    const QString version = QStringLiteral("DAVO-PC V.%1").arg(QLatin1String(kVersion));
    inFrame->addWidget(MakeParagraph(frame, "lblDavoPcVer", version, kAboutVersionGrowth));
    auto* button = new BigButton(this, "Command1", "&OK");
    button->setDefault(true);
    connect(button, &QPushButton::clicked, this, &QDialog::close);

    auto* texts = new QVBoxLayout;
    for (QWidget* one : std::initializer_list<QWidget*>{name, lblDavoVer_, frame, button}) {
        one->setMinimumWidth(kLeastTextWidth);
        texts->addWidget(one);
    }
    auto* row = WithMargin(new QHBoxLayout(this), kAboutMargin);
    row->setSpacing(kAboutMargin);
    row->addWidget(MakePicture(this, kAboutPicture), 0, Qt::AlignTop);
    row->addLayout(texts, 1);
}

void frmAbout::Form_Load(const std::string& instrumentModel) {
    lblDavoVer_->setText(ModelText(instrumentModel));
    CentreForm(*this, parentWidget());
}

}  // namespace davo
