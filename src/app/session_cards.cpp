// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session_cards.h"

#include <QApplication>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

#include "common/text.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kCardMargin = 10;
constexpr int kCardSpacing = 8;
constexpr int kLeastHeight = 76;  // of a card with a text of two lines

QString HeaderText(const UnsavedSession& session, std::size_t slot) {
    return FromPage(TrimBlanks(session.journal.header.headerFields.at(slot)));
}

QString Shots(int count) {
    return count == 1 ? QStringLiteral("1 shot") : QStringLiteral("%1 shots").arg(count);
}

// As high as its cards where there is room for them, else it scrolls.
class CardScroll : public QScrollArea {
  public:
    explicit CardScroll(QWidget* parent) : QScrollArea(parent) {
        setFrameShape(QFrame::NoFrame);
        setWidgetResizable(true);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
        setFocusPolicy(Qt::NoFocus);
    }

    QSize sizeHint() const override {
        const QLayout* layout = widget()->layout();
        return {0, layout->hasHeightForWidth() ? layout->heightForWidth(viewport()->width())
                                               : layout->sizeHint().height()};
    }
    QSize minimumSizeHint() const override {
        return {widget()->minimumSizeHint().width(), kLeastHeight};
    }

  protected:
    void resizeEvent(QResizeEvent* event) override {
        QScrollArea::resizeEvent(event);
        updateGeometry();
    }
};

}  // namespace

QString WhenWords(const UnsavedSession& session) {
    const QString date = HeaderText(session, kHeaderDate);
    const QString shots = Shots(session.shots);
    if (!session.lastChange.isValid()) {
        return QStringLiteral("%1, %2").arg(QFileInfo(session.capturePath).fileName(), shots);
    }
    // Sessions of one second have numbers.
    const QString number =
        session.number == 1 ? QString() : QStringLiteral(" (%1)").arg(session.number);
    const QString end = session.lastChange.toString(QStringLiteral("HH:mm:ss")) + number;
    if (date.isEmpty()) {
        const QString day = session.lastChange.toString(QStringLiteral("MM/dd/yy"));
        return QStringLiteral("%1, until %2, %3").arg(day, end, shots);
    }
    return QStringLiteral("%1, %2 to %3, %4")
        .arg(date, HeaderText(session, kHeaderTime), end, shots);
}

QString WhereWords(const UnsavedSession& session) {
    constexpr int kStation = 1;
    constexpr int kSerialNumber = 5;
    const auto field = [&session](int index) {
        return FromPage(TrimBlanks(session.journal.header.Field(index)));
    };
    const QString station = field(kStation);
    const QString serialNumber = field(kSerialNumber);
    return (station.isEmpty() ? QStringLiteral("No station, ")
                              : QStringLiteral("Station %1, ").arg(station)) +
           (serialNumber.isEmpty() ? QStringLiteral("no serial number")
                                   : QStringLiteral("serial number %1").arg(serialNumber));
}

SessionCards::SessionCards(QWidget* before, QWidget* parent) : QWidget(parent), before_(before) {
    setObjectName(QStringLiteral("sessionCards"));
    auto* column = WithMargin(new QVBoxLayout(this), 0);
    auto* heading =
        MakeParagraph(this, "lblUnsaved", QStringLiteral("Sessions that were not saved"));
    MakeBold(heading);
    column->addWidget(heading);
    auto* scroll = Named(new CardScroll(this), "cards");
    scroll_ = scroll;
    auto* content = new QWidget(scroll);
    cards_ = WithMargin(new QVBoxLayout(content), 0);
    cards_->setSpacing(kCardSpacing);
    scroll->setWidget(content);
    column->addWidget(scroll);
    column->addWidget(BuildLater());
    hide();
}

QWidget* SessionCards::BuildLater() {
    laterLine_ = Named(new QWidget(this), "later");
    auto* row = WithMargin(new QHBoxLayout(laterLine_), 0);
    lblLater_ = MakeParagraph(laterLine_, "lblLater");
    row->addWidget(lblLater_, 1);
    auto* show = new BigButton(laterLine_, "cmdShowLater", "Show");
    show->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    connect(show, &QPushButton::clicked, this, [this] {
        later_.clear();
        Make();
    });
    row->addWidget(show);
    return laterLine_;
}

void SessionCards::Show(const std::vector<UnsavedSession>& sessions) {
    sessions_.assign(sessions.rbegin(), sessions.rend());
    Make();
}

void SessionCards::Make() {
    const bool focused = isAncestorOf(QApplication::focusWidget());
    while (QLayoutItem* item = cards_->takeAt(0)) {
        item->widget()->hide();
        // A button of it may be what was pressed.
        item->widget()->deleteLater();
        delete item;
    }
    qsizetype later = 0;
    for (const UnsavedSession& session : sessions_) {
        if (later_.contains(session.capturePath)) {
            ++later;
        } else {
            cards_->addWidget(MakeCard(session));
        }
    }
    lblLater_->setText(later == 1 ? QStringLiteral("1 session is left for later.")
                                  : QStringLiteral("%1 sessions are left for later.").arg(later));
    laterLine_->setVisible(later > 0);
    scroll_->setVisible(cards_->count() > 0);
    // At once: what is not visible yet takes no focus.
    for (int i = 0; i < cards_->count(); ++i)
        cards_->itemAt(i)->widget()->show();
    setVisible(!sessions_.empty());
    OrderButtons(focused);
}

void SessionCards::OrderButtons(bool focused) {
    std::vector<QPushButton*> buttons;
    for (int i = 0; i < cards_->count(); ++i) {
        for (auto* button : cards_->itemAt(i)->widget()->findChildren<QPushButton*>())
            buttons.push_back(button);
    }
    buttons.push_back(laterLine_->findChild<QPushButton*>());
    QWidget* before = before_;
    for (QPushButton* button : buttons) {
        QWidget::setTabOrder(before, button);
        before = button;
    }
    if (!focused) return;
    const auto first = std::ranges::find_if(buttons, &QPushButton::isVisible);
    (first == buttons.end() ? before_ : *first)->setFocus();
}

QWidget* SessionCards::MakeCard(const UnsavedSession& session) {
    const int number = cards_->count();
    auto* card = Named(new QFrame(this), QStringLiteral("session%1").arg(number));
    card->setFrameShape(QFrame::StyledPanel);
    card->setAutoFillBackground(true);
    card->setBackgroundRole(QPalette::Base);
    auto* row = WithMargin(new QHBoxLayout(card), kCardMargin);
    auto* texts = new QVBoxLayout;
    QLabel* when = MakeParagraph(card, QStringLiteral("lblWhen%1").arg(number), WhenWords(session));
    MakeBold(when);
    texts->addWidget(when);
    texts->addWidget(
        MakeParagraph(card, QStringLiteral("lblWhere%1").arg(number), WhereWords(session)));
    row->addLayout(texts, 1);
    const auto add = [&](const char* name, const char* caption, auto act) {
        auto* button = new BigButton(card, QLatin1String(name) + QString::number(number), caption);
        button->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
        button->setAccessibleDescription(WhenWords(session));
        connect(button, &QPushButton::clicked, this, act);
        row->addWidget(button, 0, Qt::AlignTop);
    };
    add("cmdSaveSession", "Save", [this, session] { OnSave(session); });
    add("cmdLater", "Later", [this, path = session.capturePath] {
        later_.append(path);
        Make();
    });
    return card;
}

}  // namespace davo
