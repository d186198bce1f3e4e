// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/frmNameplate.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLineEdit>
#include <algorithm>

#include "analysis/taps.h"
#include "common/numbers.h"
#include "common/text.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kMargin = 16;
constexpr int kBoxHeight = 36;  // a glove meets it
constexpr double kGreatest = 1e9;
constexpr std::size_t kTapsField = kNameplateFields.size() - 1;

struct NameplateBox {
    const char* name;
    const char* caption;
    const char* classes;  // the indices of the classes that have it
    const char* hint = "";
};

// In the order of kNameplateFields.
constexpr std::array<NameplateBox, kNameplateFields.size()> kBoxes = {{
    {"cboClass", "Class:", "0123"},
    {"txtSecondary", "Rated secondary current (A):", "0123", "5"},
    {"txtRct", "Winding resistance Rct (ohm):", "0123"},
    {"txtEk", "Knee point e.m.f. Ek (V):", "0"},
    {"txtIe", "Exciting current at Ek (A):", "0"},
    {"txtTurnsRatio", "Turns ratio:", "0"},
    {"txtRatioWithin", "Turns ratio within (%):", "0", "0.25"},
    {"txtAlf", "Accuracy limit factor:", "12"},
    {"txtBurden", "Rated burden (VA):", "12"},
    {"txtConnected", "Connected burden (ohm):", "12"},
    {"txtCVoltage", "C voltage (V):", "3"},
    {"txtTaps", "Taps:", "0123", "1200:5, 600:5"},
}};

}  // namespace

frmNameplate::frmNameplate(const QString& serial, const NameplateTexts& texts, Prompts& prompts,
                           QWidget* parent)
    : QDialog(parent), prompts_(prompts), handlers_(prompts) {
    setObjectName(QStringLiteral("frmNameplate"));
    setWindowTitle(QStringLiteral("Nameplate of Serial # %1").arg(serial));
    setAttribute(Qt::WA_DeleteOnClose);
    grid_ = WithMargin(new QGridLayout(this), kMargin);
    cboClass_ = Named(new QComboBox(this), kBoxes.front().name);
    cboClass_->addItems(
        {QStringLiteral("PX"), QStringLiteral("5P"), QStringLiteral("10P"), QStringLiteral("C")});
    cboClass_->setCurrentText(FromPage(texts.front()));
    for (std::size_t i = 0; i < kBoxes.size(); ++i) {
        const NameplateBox& box = kBoxes.at(i);
        captions_.at(i) = new QLabel(QLatin1String(box.caption), this);
        QWidget* field = cboClass_;
        if (i > 0) {
            boxes_.at(i) = Named(new QLineEdit(FromPage(texts.at(i)), this), box.name);
            boxes_.at(i)->setPlaceholderText(QLatin1String(box.hint));
            field = boxes_.at(i);
        }
        field->setMinimumHeight(kBoxHeight);
        captions_.at(i)->setBuddy(field);
        field->setAccessibleName(captions_.at(i)->text().chopped(1));
    }
    const int below = static_cast<int>(kBoxes.size());
    auto* cmdSave = new BigButton(this, "cmdKeep", "&Save");
    cmdSave->setDefault(true);
    grid_->addWidget(cmdSave, below, 0, 1, 2);
    auto* cmdCancel = new BigButton(this, "cmdCancel", "&Cancel");
    grid_->addWidget(cmdCancel, below, 2, 1, 2);
    connect(cboClass_, &QComboBox::currentIndexChanged, this, [this] { ShowFields(); });
    connect(cmdSave, &QPushButton::clicked, this,
            [this] { handlers_.RunAlone([this] { Save(); }); });
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    ShowFields();
}

// The fields of the class, two in a row.
void frmNameplate::ShowFields() {
    int place = 0;
    for (std::size_t i = 0; i < kBoxes.size(); ++i) {
        QWidget* field = i == 0 ? static_cast<QWidget*>(cboClass_) : boxes_.at(i);
        const QString index = QString::number(cboClass_->currentIndex());
        const bool has = QLatin1String(kBoxes.at(i).classes).contains(index);
        captions_.at(i)->setVisible(has);
        field->setVisible(has);
        if (!has) continue;
        // The taps have a row of their own.
        if (i == kTapsField) place += place % 2;
        grid_->addWidget(captions_.at(i), place / 2, 2 * (place % 2));
        grid_->addWidget(field, place / 2, 2 * (place % 2) + 1, 1, i == kTapsField ? 3 : 1);
        ++place;
    }
    adjustSize();
}

bool frmNameplate::Take(std::size_t field, NameplateTexts& texts) {
    QLineEdit* box = boxes_.at(field);
    const QString typed = box->text().simplified();
    if (box->isHidden() || typed.isEmpty()) return true;
    texts.at(field) = typed.toStdString();
    QString wrong;
    if (field == kTapsField) {
        if (!ParseTaps(texts.at(field)))
            wrong = QStringLiteral("Type the taps as currents, such as 1200:5, 600:5.");
    } else {
        std::ranges::replace(texts.at(field), ',', '.');
        const double value = WholeNumericValue(texts.at(field)).value_or(0);
        if (!(value > 0 && value <= kGreatest))
            wrong = QStringLiteral("%1 Type a number above zero, or nothing.")
                        .arg(captions_.at(field)->text());
    }
    if (wrong.isEmpty()) return true;
    prompts_.Message(wrong);
    box->setFocus();
    box->selectAll();
    return false;
}

void frmNameplate::Save() {
    NameplateTexts texts;
    bool any = false;
    for (std::size_t i = 1; i < texts.size(); ++i) {
        if (!Take(i, texts)) return;
        any = any || !texts.at(i).empty();
    }
    if (any) texts.front() = cboClass_->currentText().toStdString();
    OnSave(texts);
    accept();
}

}  // namespace davo
