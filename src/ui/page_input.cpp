// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/page_input.h"

#include <QLineEdit>
#include <QToolTip>
#include <QValidator>

#include "common/text.h"

namespace davo {

namespace {

class PageValidator : public QValidator {
  public:
    using QValidator::QValidator;
    State validate(QString& input, int& /*position*/) const override {
        return ToPage(input) ? Acceptable : Invalid;
    }
};

}  // namespace

QString NotInPageMessage() {
    return QStringLiteral("This text holds a character that cannot be written in a test record.");
}

void KeepToPage(QLineEdit* box) {
    box->setValidator(new PageValidator(box));
    QObject::connect(box, &QLineEdit::inputRejected, box, [box] {
        QToolTip::showText(box->mapToGlobal(QPoint(0, box->height())), NotInPageMessage(), box);
    });
}

}  // namespace davo
