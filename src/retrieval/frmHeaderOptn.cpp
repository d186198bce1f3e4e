// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/frmHeaderOptn.h"

#include <QVBoxLayout>
#include <utility>

#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kLeastWidth = 360;  // of the buttons
constexpr int kChoiceMargin = 24;
constexpr int kSpacing = 16;

}  // namespace

frmHeaderOptn::frmHeaderOptn(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmHeaderOptn"));
    setWindowTitle(QStringLiteral("Choose Test Header"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* column = WithMargin(new QVBoxLayout(this), kChoiceMargin);
    column->setSpacing(kSpacing);
    const auto add = [this, column](const char* name, HeaderMode mode, const char* caption) {
        auto* button = new BigButton(this, name, caption);
        button->setMinimumWidth(kLeastWidth);
        column->addWidget(button);
        connect(button, &QPushButton::clicked, this, [this, mode] {
            if (OnChosen) OnChosen(mode);
            close();
        });
    };
    add("cmdHeader1", HeaderMode::Davo, "DAVO Test Header");
    add("cmdHeader0", HeaderMode::Pc, "PC Test Header");
    CentreForm(*this, parent);
}

void frmHeaderOptn::done(int result) {
    QDialog::done(result);
    if (OnUnload) std::exchange(OnUnload, nullptr)();
}

}  // namespace davo
