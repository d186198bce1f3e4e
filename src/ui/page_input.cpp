// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/page_input.h"

#include <QLineEdit>
#include <QToolTip>
#include <QValidator>
#include <utility>

#include "common/text.h"

namespace davo {

namespace {

class TextValidator : public QValidator {
  public:
    TextValidator(std::function<bool(const QString& text)> fits, QObject* parent)
        : QValidator(parent), fits_(std::move(fits)) {}
    State validate(QString& input, int& /*position*/) const override {
        return fits_(input) ? Acceptable : Invalid;
    }

  private:
    std::function<bool(const QString& text)> fits_;
};

}  // namespace

QString NotInPageMessage() {
    return QStringLiteral("This text holds a character that cannot be written in a test record.");
}

void KeepTo(QLineEdit* box, std::function<bool(const QString& text)> fits, const QString& message) {
    box->setValidator(new TextValidator(std::move(fits), box));
    QObject::connect(box, &QLineEdit::inputRejected, box, [box, message] {
        QToolTip::showText(box->mapToGlobal(QPoint(0, box->height())), message, box);
    });
}

void KeepToPage(QLineEdit* box) {
    KeepTo(
        box, [](const QString& text) { return ToPage(text).has_value(); }, NotInPageMessage());
}

}  // namespace davo
