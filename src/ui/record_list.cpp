// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/record_list.h"

#include <QHeaderView>
#include <QStyledItemDelegate>
#include <algorithm>

#include "common/text.h"

namespace davo {

namespace {

constexpr int kRowRoom = 8;
constexpr int kColumnRoom = 24;

// Rows and columns with room between them.
class RoomyDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        return QStyledItemDelegate::sizeHint(option, index) + QSize(kColumnRoom, kRowRoom);
    }
};

QStringList Headings(RecordColumns columns) {
    const QStringList all{QStringLiteral("Filename"), QStringLiteral("Date"),
                          QStringLiteral("Tests"),    QStringLiteral("Station"),
                          QStringLiteral("Circuit"),  QStringLiteral("MFR"),
                          QStringLiteral("Model")};
    return all.first(static_cast<int>(columns));
}

QString Shown(std::string_view field) {
    return FromPage(TrimBlanks(field));
}

}  // namespace

RecordList::RecordList(RecordColumns columns, QWidget* parent) : QTreeWidget(parent) {
    setHeaderLabels(Headings(columns));
    setItemDelegate(new RoomyDelegate(this));
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setAllColumnsShowFocus(true);
    header()->setStretchLastSection(true);
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);
}

void RecordList::Fill(const std::vector<ListRow>& rows) {
    clear();
    QList<QTreeWidgetItem*> items;
    for (const ListRow& row : rows) {
        // Cells beyond the columns of this list are kept and not shown.
        items.append(new QTreeWidgetItem({Shown(row.filename), Shown(row.date), Shown(row.tests),
                                          Shown(row.station), Shown(row.circuit), Shown(row.mfr),
                                          Shown(row.model)}));
    }
    addTopLevelItems(items);
}

std::vector<int> RecordList::SelectedRows() const {
    std::vector<int> rows;
    for (const QModelIndex& index : selectionModel()->selectedRows())
        rows.push_back(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

}  // namespace davo
