// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/page_input.h"

#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QToolTip>
#include <QValidator>
#include <algorithm>
#include <array>
#include <utility>

#include "common/text.h"
#include "ui/form_parts.h"

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

constexpr int kCounterRoom = 6;

class LengthCounter : public QLabel {
  public:
    LengthCounter(QLineEdit* box, std::size_t most) : QLabel(box), box_(box), most_(most) {
        Named(this, "lblLength");
        setAttribute(Qt::WA_TransparentForMouseEvents);
        connect(box, &QLineEdit::textChanged, this, [this] { Count(); });
        box->installEventFilter(this);
        Count();
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        constexpr std::array kChanges{QEvent::FocusIn, QEvent::FocusOut, QEvent::Resize,
                                      QEvent::EnabledChange};
        if (std::ranges::count(kChanges, event->type()) > 0) Count();
        return QLabel::eventFilter(watched, event);
    }

  private:
    void Count() {
        const std::size_t length = TrimBlanks(ToPage(box_->text()).value_or(std::string())).size();
        const bool over = length > most_;
        setText(QStringLiteral("%1 of %2").arg(length).arg(most_));
        QFont font = box_->font();
        font.setBold(over);
        setFont(font);
        setVisible(over || (box_->hasFocus() && box_->isEnabled()));
        const QSize size = sizeHint();
        setGeometry(box_->width() - size.width() - kCounterRoom, 0, size.width(), box_->height());
        box_->setTextMargins(0, 0, isHidden() ? 0 : size.width() + kCounterRoom, 0);
    }

    QLineEdit* box_;
    std::size_t most_;
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

void CountCharacters(QLineEdit* box, std::size_t most) {
    new LengthCounter(box, most);
}

}  // namespace davo
