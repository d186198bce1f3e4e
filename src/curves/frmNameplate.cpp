// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/frmNameplate.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QVBoxLayout>
#include <algorithm>

#include "analysis/taps.h"
#include "common/numbers.h"
#include "common/text.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kMargin = 16;
constexpr int kBoxHeight = 36;  // a glove meets it
constexpr int kTapLetters = 30;
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
    auto* column = WithMargin(new QVBoxLayout(this), kMargin);
    column->setSpacing(kFormSpacing);
    form_ = new QFormLayout;
    column->addLayout(form_);
    cboClass_ = new QComboBox(this);
    cboClass_->addItems(
        {QStringLiteral("PX"), QStringLiteral("5P"), QStringLiteral("10P"), QStringLiteral("C")});
    cboClass_->setCurrentText(FromPage(texts.front()));
    for (std::size_t i = 0; i < kBoxes.size(); ++i) {
        const NameplateBox& box = kBoxes.at(i);
        QWidget* field = cboClass_;
        if (i > 0) {
            field = boxes_.at(i) = new QLineEdit(FromPage(texts.at(i)), this);
            boxes_.at(i)->setPlaceholderText(QLatin1String(box.hint));
            boxes_.at(i)->setCursorPosition(0);
        }
        Named(field, box.name)->setMinimumHeight(kBoxHeight);
        auto* caption = new QLabel(QLatin1String(box.caption), this);
        caption->setMinimumHeight(kBoxHeight);
        caption->setBuddy(field);
        form_->addRow(caption, field);
    }
    boxes_.back()->setMinimumWidth(kTapLetters * fontMetrics().averageCharWidth());
    auto* buttons = new QHBoxLayout;
    auto* cmdSave = new BigButton(this, "cmdKeep", "&Save");
    cmdSave->setDefault(true);
    buttons->addWidget(cmdSave);
    auto* cmdCancel = new BigButton(this, "cmdCancel", "&Cancel");
    buttons->addWidget(cmdCancel);
    column->addLayout(buttons);
    connect(cboClass_, &QComboBox::currentIndexChanged, this, [this] { ShowFields(); });
    connect(cmdSave, &QPushButton::clicked, this,
            [this] { handlers_.RunAlone([this] { Save(); }); });
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    ShowFields();
}

// The fields of the class.
void frmNameplate::ShowFields() {
    const QString index = QString::number(cboClass_->currentIndex());
    for (std::size_t i = 1; i < kBoxes.size(); ++i)
        form_->setRowVisible(boxes_.at(i), QLatin1String(kBoxes.at(i).classes).contains(index));
    adjustSize();
}

void frmNameplate::Save() {
    NameplateTexts texts;
    for (std::size_t i = 1; i < texts.size(); ++i) {
        QLineEdit* box = boxes_.at(i);
        if (box->isHidden()) continue;
        std::string& text = texts.at(i);
        text = box->text().simplified().toStdString();
        const bool areTaps = i == kTapsField;
        if (!areTaps) std::ranges::replace(text, ',', '.');
        const double value = WholeNumericValue(text).value_or(0);
        if (text.empty() ||
            (areTaps ? ParseTaps(text).has_value() : value > 0 && value <= kGreatest))
            continue;
        prompts_.Message(areTaps
                             ? QStringLiteral("Type the taps as currents, such as 1200:5, 600:5.")
                             : QStringLiteral("%1 Type a number above zero, or nothing.")
                                   .arg(QLatin1String(kBoxes.at(i).caption)));
        box->setFocus();
        box->selectAll();
        return;
    }
    const auto isTyped = [](const std::string& text) { return !text.empty(); };
    if (std::ranges::any_of(texts, isTyped)) texts.front() = cboClass_->currentText().toStdString();
    OnSave(texts);
    accept();
}

}  // namespace davo
