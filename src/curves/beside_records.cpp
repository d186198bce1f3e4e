#include "curves/beside_records.h"

#include <QHeaderView>
#include <QResizeEvent>
#include <QScrollBar>
#include <QTreeView>
#include <algorithm>

#include "curves/record_panel.h"

namespace davo {

namespace {

constexpr int kHandleWidth = 10;
constexpr int kLeastPanelHeight = 600;
constexpr int kListRoom = 24;
constexpr double kControlsShare = 0.5;

}  // namespace

BesideRecords::BesideRecords(QWidget* controls, const QTreeView& list, double listShare,
                             Prompts& prompts, QWidget* parent)
    : QSplitter(Qt::Horizontal, parent),
      controls_(controls),
      list_(list),
      listShare_(listShare),
      panel_(new RecordPanel(prompts)) {
    setObjectName(QStringLiteral("splRecords"));
    setHandleWidth(kHandleWidth);
    addWidget(controls);
    addWidget(panel_);
    setCollapsible(0, false);
    setStretchFactor(0, 0);
    setStretchFactor(1, 1);
    panel_->hide();
}

void BesideRecords::ShowRecords(const std::vector<QString>& files) {
    panel_->ShowRecords(files);
}

QSize BesideRecords::sizeHint() const {
    return controls_->sizeHint();
}

QSize BesideRecords::minimumSizeHint() const {
    return controls_->minimumSizeHint();
}

int BesideRecords::ControlsWidth() const {
    int columns =
        kListRoom + list_.verticalScrollBar()->sizeHint().width() + 2 * list_.frameWidth();
    for (int column = 0; column < list_.model()->columnCount(); ++column)
        columns += std::max(static_cast<const QAbstractItemView&>(list_).sizeHintForColumn(column),
                            list_.header()->sectionSizeHint(column));
    return std::max(static_cast<int>(columns / listShare_), controls_->minimumSizeHint().width());
}

void BesideRecords::resizeEvent(QResizeEvent* event) {
    const int controls = ControlsWidth();
    const int panel = panel_->minimumSizeHint().width();
    const bool room = event->size().width() >= controls + kHandleWidth + panel &&
                      event->size().height() >= kLeastPanelHeight;
    panel_->setVisible(room);
    QSplitter::resizeEvent(event);
    if (!room || placed_) return;
    placed_ = true;
    const int width = event->size().width() - kHandleWidth;
    const int wanted =
        std::clamp(static_cast<int>(width * kControlsShare), controls, width - panel);
    setSizes({wanted, width - wanted});
}

}  // namespace davo
