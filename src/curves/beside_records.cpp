// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/beside_records.h"

#include <QHeaderView>
#include <QPushButton>
#include <QScrollBar>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>

#include "ui/record_list.h"

namespace davo {

namespace {

constexpr int kHandleWidth = 10;
constexpr int kLowWindow = 600;
constexpr int kListRoom = 24;
// Filename, date and number of tests; the panel shows the rest, too.
constexpr int kLeastColumns = 3;
constexpr double kControlsShare = 0.5;
constexpr double kMostControlsShare = 0.6;

}  // namespace

BesideRecords::BesideRecords(QWidget* controls, RecordList& list, double listShare,
                             QPushButton& cmdRecord, const QString& dataPath, Prompts& prompts,
                             QWidget* parent)
    : QWidget(parent),
      controls_(controls),
      list_(list),
      dataPath_(dataPath),
      listShare_(listShare),
      cmdRecord_(cmdRecord),
      splitter_(new QSplitter(Qt::Horizontal, this)),
      panel_(new RecordPanel(prompts)) {
    setObjectName(QStringLiteral("BesideRecords"));
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(splitter_);
    splitter_->setObjectName(QStringLiteral("splRecords"));
    splitter_->setHandleWidth(kHandleWidth);
    splitter_->addWidget(controls);
    splitter_->addWidget(panel_);
    splitter_->setCollapsible(0, false);
    splitter_->setStretchFactor(0, 0);
    splitter_->setStretchFactor(1, 1);
    panel_->hide();
    cmdRecord_.hide();
    connect(&cmdRecord_, &QPushButton::clicked, this, [this] { ShowAlone(true); });
    connect(&list_, &QTreeWidget::itemSelectionChanged, this, [this] { ShowSelected(); });
    panel_->OnBack = [this] { ShowAlone(false); };
}

void BesideRecords::ShowSelected() {
    std::vector<QString> files = list_.SelectedFiles();
    for (QString& file : files)
        file.prepend(dataPath_);
    panel_->ShowRecords(files);
}

int BesideRecords::ControlsWidth(int columns) const {
    int width = kListRoom + list_.verticalScrollBar()->sizeHint().width() + 2 * list_.frameWidth();
    for (int column = 0; column < std::min(columns, list_.model()->columnCount()); ++column)
        width += std::max(static_cast<const QAbstractItemView&>(list_).sizeHintForColumn(column),
                          list_.header()->sectionSizeHint(column));
    return std::max(static_cast<int>(width / listShare_), controls_->minimumSizeHint().width());
}

void BesideRecords::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    Place();
}

void BesideRecords::Place() {
    const int least = ControlsWidth(kLeastColumns);
    const QSize panel = panel_->minimumSizeHint();
    const int both = width() - kHandleWidth;
    const bool room = window()->width() >= kBothWidth && both >= least + panel.width() &&
                      height() >= panel.height();
    if (room) alone_ = false;
    cmdRecord_.setVisible(!room && !alone_);
    // On a low screen the panel needs the room of the buttons, too.
    cmdRecord_.parentWidget()->setVisible(!alone_ || window()->height() >= kLowWindow);
    panel_->OfferBack(!room);
    controls_->setVisible(room || !alone_);
    panel_->setVisible(room || alone_);
    if (!room || placed_) return;
    placed_ = true;
    const int most = std::max(least, static_cast<int>(both * kMostControlsShare));
    const int wanted = std::max(ControlsWidth(list_.model()->columnCount()),
                                static_cast<int>(both * kControlsShare));
    const int controls = std::min({wanted, most, both - panel.width()});
    splitter_->setSizes({controls, both - controls});
}

void BesideRecords::ShowAlone(bool panel) {
    alone_ = panel;
    Place();
    if (panel) {
        panel_->FocusBack();
    } else {
        list_.setFocus();
    }
}

}  // namespace davo
