// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/length_counter.h"

#include <QEvent>
#include <QLabel>
#include <QLineEdit>

#include "common/text.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kRoom = 6;

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
        switch (event->type()) {
            case QEvent::FocusIn:
            case QEvent::FocusOut:
            case QEvent::Resize:
            case QEvent::EnabledChange:
                Count();
                break;
            default:
                break;
        }
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
        setGeometry(box_->width() - size.width() - kRoom, 0, size.width(), box_->height());
        box_->setTextMargins(0, 0, isHidden() ? 0 : size.width() + kRoom, 0);
    }

    QLineEdit* box_;
    std::size_t most_;
};

}  // namespace

void CountCharacters(QLineEdit* box, std::size_t most) {
    new LengthCounter(box, most);
}

}  // namespace davo
