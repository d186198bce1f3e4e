// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/home_panel.h"

#include <QAction>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QRegularExpression>
#include <QStackedLayout>
#include <QVBoxLayout>
#include <algorithm>

#include "app/program_icon.h"
#include "app/session_cards.h"
#include "common/places.h"
#include "ui/big_button.h"
#include "ui/form_parts.h"
#include "ui/record_list.h"

namespace davo {

namespace {

constexpr int kPanelMargin = 20;
constexpr int kPanelSpacing = 14;
constexpr int kPanelPicture = 64;
constexpr int kMostButtonHeight = 140;
constexpr double kPortGrowth = 1.8;
constexpr double kHeadingGrowth = 1.4;
constexpr double kButtonGrowth = 1.3;  // of a large button
constexpr int kButtonShare = 2;
constexpr int kRecordShare = 3;
constexpr int kLeastRows = 4;  // of a line's height, headings included

// What is wrong with the port, and what can be done about it.
QString WayOut(const LinkGlance& link) {
    const QString wrong = DeviceState(link);
    const QString advice = QStringLiteral("Choose a port with File, Configure System.");
    return wrong.isEmpty() ? advice : QStringLiteral("%1. %2").arg(wrong, advice);
}

// item and the items of the menus above it.
std::vector<QAction*> WithMenusAbove(QAction* item) {
    std::vector<QAction*> chain{item};
    for (QObject* object : item->associatedObjects()) {
        auto* menu = qobject_cast<QMenu*>(object);
        if (menu == nullptr || menu->menuAction() == item) continue;
        for (QAction* above : WithMenusAbove(menu->menuAction()))
            chain.push_back(above);
    }
    return chain;
}

// A menu's caption without its mnemonic, as a button shows it.
QString ButtonCaption(const QAction& item) {
    static const QRegularExpression kMnemonic(QStringLiteral("&(.?)"));
    return item.text()
        .replace(kMnemonic, QStringLiteral("\\1"))
        .replace(QLatin1Char('&'), QStringLiteral("&&"));
}

BigButton* MakeButton(QAction* item, QWidget* parent) {
    auto* button = new BigButton(parent, QStringLiteral("cmd") + item->objectName().mid(3));
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    button->setMaximumHeight(kMostButtonHeight);
    Enlarge(button, kButtonGrowth);
    MakeBold(button);
    const std::vector<QAction*> chain = WithMenusAbove(item);
    const auto follow = [button, item, chain] {
        button->setText(ButtonCaption(*item));
        button->setEnabled(std::all_of(chain.begin(), chain.end(),
                                       [](const QAction* one) { return one->isEnabled(); }));
    };
    for (QAction* one : chain)
        QObject::connect(one, &QAction::changed, button, follow);
    QObject::connect(button, &QPushButton::clicked, item, [item] { item->trigger(); });
    follow();
    return button;
}

// Only a folder that was read and is empty has no records yet.
QString WhyNoRecords(const HomeFacts& facts) {
    const QString folder = ShownPath(facts.dataPath);
    if (!facts.listing.unread.isEmpty()) return UnreadText(facts.listing, facts.dataPath);
    if (!facts.listing.skipped.empty())
        return QStringLiteral("No file in %1 can be listed as a test record.").arg(folder);
    return QStringLiteral("No test records yet in %1").arg(folder);
}

}  // namespace

HomePanel::HomePanel(const std::vector<QAction*>& items, QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("homePanel"));
    auto* grid = WithMargin(new QGridLayout(this), kPanelMargin);
    grid->setSpacing(kPanelSpacing);
    grid->addWidget(BuildLink(), 0, 0, 1, 2);
    auto* buttons = new QVBoxLayout;
    buttons->setSpacing(kPanelSpacing);
    QWidget* lastButton = this;
    for (QAction* item : items) {
        lastButton = MakeButton(item, this);
        buttons->addWidget(lastButton, 1);
    }
    buttons->addStretch();
    grid->addLayout(buttons, 1, 0);
    grid->addWidget(BuildRecords(lastButton), 1, 1);
    grid->setColumnStretch(0, kButtonShare);
    grid->setColumnStretch(1, kRecordShare);
    grid->setRowStretch(1, 1);
}

QWidget* HomePanel::BuildLink() {
    auto* frame = Named(new QWidget(this), "link");
    auto* row = WithMargin(new QHBoxLayout(frame), 0);
    row->setSpacing(kPanelSpacing);
    auto* picture = new QLabel(frame);
    picture->setPixmap(
        ProgramIcon().pixmap(QSize(kPanelPicture, kPanelPicture), devicePixelRatioF()));
    row->addWidget(picture, 0, Qt::AlignTop);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    lblPort_ = MakeParagraph(frame, "lblPort", {}, kPortGrowth);
    MakeBold(lblPort_);
    lblDevice_ = MakeParagraph(frame, "lblDevice");
    texts->addWidget(lblPort_);
    texts->addWidget(lblDevice_);
    texts->addStretch(1);
    row->addLayout(texts, 1);
    lblModel_ = MakeLabel(frame, "lblModel", {}, kHeadingGrowth);
    row->addWidget(lblModel_, 0, Qt::AlignTop);
    return frame;
}

QWidget* HomePanel::BuildRecords(QWidget* lastButton) {
    auto* frame = Named(new QWidget(this), "records");
    auto* column = WithMargin(new QVBoxLayout(frame), 0);
    sessions_ = new SessionCards(lastButton, frame);
    column->addWidget(sessions_);
    QLabel* heading = MakeParagraph(frame, "lblNewest", QStringLiteral("Newest test records"));
    MakeBold(heading);
    column->addWidget(heading);
    recordPages_ = new QStackedLayout;
    column->addLayout(recordPages_, 1);
    lvNewest_ = Named(new RecordList(RecordColumns::UpToStation, frame), "lvNewest");
    lvNewest_->setAccessibleName(heading->text());
    lvNewest_->setSelectionMode(QAbstractItemView::NoSelection);
    // The cards of many sessions leave room for some of them.
    lvNewest_->setMinimumHeight(kLeastRows * lvNewest_->fontMetrics().lineSpacing());
    recordPages_->addWidget(lvNewest_);
    lblNoRecords_ = MakeParagraph(frame, "lblNoRecords");
    lblNoRecords_->setAlignment(Qt::AlignTop);
    recordPages_->addWidget(lblNoRecords_);
    return frame;
}

void HomePanel::ShowFacts(const HomeFacts& facts) {
    lblPort_->setText(PortState(facts.link));
    lblDevice_->setText(NeedsHelp(facts.link) ? WayOut(facts.link) : DeviceState(facts.link));
    lblModel_->setText(ModelWords(facts.link.instrumentModel));
    const auto newest = std::min(facts.records.size(), kNewestRecords);
    lvNewest_->Fill({facts.records.begin(), facts.records.begin() + static_cast<long>(newest)});
    lblNoRecords_->setText(WhyNoRecords(facts));
    recordPages_->setCurrentWidget(facts.records.empty() ? static_cast<QWidget*>(lblNoRecords_)
                                                         : lvNewest_);
}

}  // namespace davo
