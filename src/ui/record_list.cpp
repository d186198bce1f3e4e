// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/record_list.h"

#include <QFocusEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QStyledItemDelegate>
#include <algorithm>
#include <utility>

#include "common/text.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kRowHeight = 32;
constexpr int kRowRoom = 8;
constexpr int kColumnRoom = 24;
constexpr int kRowRole = Qt::UserRole;  // the index of a row as it was filled in
constexpr int kDateColumn = 1;

// Rows and columns with room between them.
class RoomyDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const QSize text = QStyledItemDelegate::sizeHint(option, index);
        return {text.width() + kColumnRoom, std::max(text.height() + kRowRoom, kRowHeight)};
    }
};

// A list that is entered has a current row, but none is selected: the key that moves down would
// leave the first one out.
class FirstRow : public QObject {
  public:
    explicit FirstRow(QAbstractItemView* list) : QObject(list), list_(list) {
        list->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        const bool enters =
            Enters(*event) && list_->selectionMode() != QAbstractItemView::NoSelection &&
            !list_->selectionModel()->hasSelection() && list_->model()->rowCount() > 0;
        if (enters) list_->setCurrentIndex(list_->model()->index(0, 0));
        const bool done = enters && event->type() == QEvent::KeyPress;
        return done || QObject::eventFilter(watched, event);
    }

  private:
    static bool Enters(const QEvent& event) {
        if (event.type() == QEvent::FocusIn) {
            const auto reason = static_cast<const QFocusEvent&>(event).reason();
            return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason;
        }
        if (event.type() != QEvent::KeyPress) return false;
        const int key = static_cast<const QKeyEvent&>(event).key();
        return key == Qt::Key_Down || key == Qt::Key_Up || key == Qt::Key_Home;
    }

    QAbstractItemView* list_;
};

class RecordRow : public QTreeWidgetItem {
  public:
    using QTreeWidgetItem::QTreeWidgetItem;

    bool operator<(const QTreeWidgetItem& other) const override {
        const int column = treeWidget()->sortColumn();
        return SortKey(text(column), column) < SortKey(other.text(column), column);
    }

  private:
    static QString SortKey(const QString& text, int column) {
        if (column != kDateColumn) return text.toLower();
        // What is no date comes first.
        const auto date = ParseRecordDate(text.toStdString());
        return date ? date->toString(Qt::ISODate) : QString();
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

void MakeRows(QAbstractItemView* list) {
    list->setItemDelegate(new RoomyDelegate(list));
    list->setAlternatingRowColors(true);
    Enlarge(list);
    new FirstRow(list);
}

RecordList::RecordList(RecordColumns columns, QWidget* parent) : QTreeWidget(parent) {
    setHeaderLabels(Headings(columns));
    MakeRows(this);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    header()->setStretchLastSection(true);
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);
}

void RecordList::SortByHeadings() {
    // By none of them, until one is clicked.
    header()->setSortIndicator(-1, Qt::AscendingOrder);
    header()->setSectionsClickable(true);
    setSortingEnabled(true);
}

QWidget* RecordList::MakeFilter(QWidget* window) {
    auto* filter = Named(new QWidget(window), "RecordFilter");
    txtFilter_ = Named(new QLineEdit(filter), "txtFilter");
    txtFilter_->setAccessibleName(QStringLiteral("Filter"));
    txtFilter_->setPlaceholderText(QStringLiteral("Filter (Ctrl+F)"));
    txtFilter_->setToolTip(
        QStringLiteral("Shows the records that have these words in a column or as serial number"));
    txtFilter_->setClearButtonEnabled(true);
    Enlarge(txtFilter_);
    lblFiltered_ = MakeLabel(filter, "lblFiltered");
    auto* row = WithMargin(new QHBoxLayout(filter), 0);
    row->addWidget(txtFilter_, 1);
    row->addWidget(lblFiltered_);
    connect(txtFilter_, &QLineEdit::textChanged, this, &RecordList::Filter);
    connect(txtFilter_, &QLineEdit::returnPressed, this, [this] { setFocus(Qt::TabFocusReason); });
    OnKey(window, QKeySequence::Find, [this] {
        txtFilter_->setFocus(Qt::ShortcutFocusReason);
        txtFilter_->selectAll();
    });
    setTabOrder(txtFilter_, this);
    txtFilter_->installEventFilter(this);
    installEventFilter(this);
    return filter;
}

// Escape is taken before a shortcut of the window has it: who sees half of the records wants all of
// them, and not to leave.
bool RecordList::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::ShortcutOverride ||
        static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape ||
        (watched != txtFilter_ && txtFilter_->text().isEmpty()))
        return watched != txtFilter_ && QTreeWidget::eventFilter(watched, event);
    txtFilter_->clear();
    setFocus();
    event->accept();
    return true;
}

void RecordList::Fill(std::vector<ListRow> rows, std::vector<QString> files) {
    rows_ = std::move(rows);
    files_ = std::move(files);
    clear();
    QList<QTreeWidgetItem*> items;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        const ListRow& row = rows_[i];
        // Cells beyond the columns of this list are kept and not shown.
        const QStringList cells{Shown(row.filename), Shown(row.date),    Shown(row.tests),
                                Shown(row.station),  Shown(row.circuit), Shown(row.mfr),
                                Shown(row.model)};
        // No word goes on in the next cell.
        const QString text = cells.join(QLatin1Char('\n')) + QLatin1Char('\n') + Shown(row.serial);
        const auto has = [&](const auto& word) { return text.contains(word, Qt::CaseInsensitive); };
        if (!std::ranges::all_of(words_, has)) continue;
        items.append(new RecordRow(cells));
        items.back()->setData(0, kRowRole, static_cast<int>(i));
    }
    // A list that is sorted by no heading would put each row before the others.
    const bool sorts = isSortingEnabled();
    setSortingEnabled(false);
    addTopLevelItems(items);
    setSortingEnabled(sorts);
    if (txtFilter_ == nullptr) return;
    lblFiltered_->setVisible(!txtFilter_->text().isEmpty());
    lblFiltered_->setText(QStringLiteral("%1 of %2 records").arg(items.size()).arg(rows_.size()));
}

void RecordList::Filter(const QString& text) {
    words_ = text.simplified().split(QLatin1Char(' '));
    const std::vector<int> selected = SelectedRows();
    QSignalBlocker quiet(this);
    Fill(rows_, files_);
    for (const int row : selected) {
        if (QTreeWidgetItem* item = ItemOf(row)) item->setSelected(true);
    }
    quiet.unblock();
    // Also where the same rows are selected: they are so many of others.
    itemSelectionChanged();
}

void RecordList::Fill(const DirectoryTables& tables, int count) {
    std::vector<QString> files;
    for (int i = 0; i < count && !tables.recordsFromInstrument; ++i)
        files.push_back(RecordFileOf(tables, static_cast<std::size_t>(i)));
    Fill(RowsForList(tables, count), std::move(files));
}

std::vector<int> RecordList::SelectedRows() const {
    std::vector<int> rows;
    for (const QModelIndex& index : selectionModel()->selectedRows())
        rows.push_back(index.data(kRowRole).toInt());
    std::sort(rows.begin(), rows.end());
    return rows;
}

std::vector<QString> RecordList::SelectedFiles() const {
    std::vector<QString> files;
    for (const int row : SelectedRows()) {
        if (std::cmp_less(row, files_.size()))
            files.push_back(files_[static_cast<std::size_t>(row)]);
    }
    return files;
}

void RecordList::SelectFiles(const std::vector<QString>& files) {
    clearSelection();
    for (std::size_t i = 0; i < files_.size(); ++i) {
        QTreeWidgetItem* item = ItemOf(static_cast<int>(i));
        if (item != nullptr && std::ranges::find(files, files_[i]) != files.end())
            setCurrentItem(item, 0, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
}

QTreeWidgetItem* RecordList::ItemOf(int row) const {
    for (int i = 0; i < topLevelItemCount(); ++i) {
        if (topLevelItem(i)->data(0, kRowRole).toInt() == row) return topLevelItem(i);
    }
    return nullptr;
}

}  // namespace davo
