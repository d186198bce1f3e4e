// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/results_table.h"

#include <QFontMetrics>
#include <QHeaderView>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStringList>
#include <algorithm>

#include "common/text.h"
#include "reports/record_texts.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kCellRoom = 5;
constexpr double kResultGrowth = 1.1;
constexpr int kLeastRows = 3;

// With all columns in sight.
int WholeWidth(const QTableWidget& table) {
    return table.verticalHeader()->sizeHint().width() + table.horizontalHeader()->length() +
           2 * table.frameWidth();
}

}  // namespace

ResultsTable::ResultsTable(QWidget* parent) : QTableWidget(parent) {
    setObjectName(QStringLiteral("tblTests"));
    setAccessibleName(QStringLiteral("Results of the tests"));
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionBehavior(QAbstractItemView::SelectColumns);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setTabKeyNavigation(false);
    Enlarge(this, kResultGrowth);
    for (QHeaderView* header : {horizontalHeader(), verticalHeader()})
        header->setFont(font());
    QStringList rows{QStringLiteral("Ratio"), QStringLiteral("Nameplate"), QStringLiteral("Error"),
                     QStringLiteral("Polarity"), QStringLiteral("Phase")};
    // Those of the chosen test are on the chart, too.
    for (const KneeRule rule : kRuleRows)
        rows << KneeWord(rule) << QStringLiteral("smooth");
    setRowCount(static_cast<int>(rows.size()));
    setVerticalHeaderLabels(rows);
    // Who knows the one name looks for it in vain under the other.
    verticalHeaderItem(static_cast<int>(rows.indexOf(KneeWord(KneeRule::Asa1050))))
        ->setToolTip(QStringLiteral("IEC's knee point e.m.f. (10 % / 50 %): 10 % more voltage "
                                    "drives 50 % more current"));
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + kCellRoom);
    verticalHeader()->setMinimumSectionSize(1);
    // Also below the last whole row.
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    // It takes as much of its room as its rows need.
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    KeepToRows();
}

void ResultsTable::Fill(const std::vector<ShownTest>& tests, std::size_t chosen) {
    const QSignalBlocker quiet(this);
    clearContents();
    setColumnCount(static_cast<int>(tests.size()));
    const QFontMetrics metrics = fontMetrics();
    QFont bold = font();  // of the chosen test's name
    bold.setBold(true);
    const QFontMetrics boldMetrics(bold);
    int widest = 0;
    for (std::size_t i = 0; i < tests.size(); ++i) {
        const int column = static_cast<int>(i);
        const RecordTest& test = *tests.at(i).test;
        int row = 0;
        const auto put = [&](const QString& text, const QString& tip) {
            auto* item = new QTableWidgetItem(text);
            if (!tip.isEmpty()) item->setToolTip(tip);
            setItem(row++, column, item);
            widest = std::max(widest, metrics.horizontalAdvance(text));
        };
        for (const std::string& text :
             {test.measuredRatio, test.nameplateRatio, test.percentError, test.polarity})
            put(FromPage(text), {});
        put(PhaseAndAngle(test), {});
        for (const KneeRule rule : kRuleRows) {
            const KneeFact& fact = FactOf(test, rule);
            const QString doubt = DoubtOf(fact);
            put(JudgedText(fact), doubt);
            put(SmoothText(fact), doubt);
        }
        setHorizontalHeaderItem(column, new QTableWidgetItem(tests.at(i).name));
        widest = std::max(widest, boldMetrics.horizontalAdvance(tests.at(i).name));
    }
    horizontalHeader()->setDefaultSectionSize(widest + 3 * kCellRoom);
    for (int column = 0; column < columnCount(); ++column)
        setColumnWidth(column, widest + 3 * kCellRoom);
    setSelectionMode(tests.size() > 1 ? QAbstractItemView::SingleSelection
                                      : QAbstractItemView::NoSelection);
    if (!tests.empty()) Choose(std::min(chosen, tests.size() - 1));
    KeepToRows();
}

void ResultsTable::Choose(std::size_t test) {
    setCurrentCell(std::max(0, currentRow()), static_cast<int>(test));
}

void ResultsTable::KeepToColumns(bool keeps) {
    const int scroll = verticalScrollBar()->sizeHint().width();
    setMaximumWidth(keeps ? WholeWidth(*this) + scroll : QWIDGETSIZE_MAX);
}

void ResultsTable::resizeEvent(QResizeEvent* event) {
    QTableWidget::resizeEvent(event);
    KeepToRows();
}

// Only whole rows: one that is cut through its middle reads as another value.
void ResultsTable::updateGeometries() {
    if (placing_) return;
    const QScopedValueRollback placing(placing_, true);
    QTableWidget::updateGeometries();
    const int row = verticalHeader()->defaultSectionSize();
    QMargins around = viewportMargins();
    around.setBottom(viewport()->height() % row);
    setViewportMargins(around);
    verticalHeader()->resize(verticalHeader()->width(), viewport()->height());
}

void ResultsTable::KeepToRows() {
    const bool scrolls = WholeWidth(*this) > width() - verticalScrollBar()->sizeHint().width();
    const int bar = scrolls ? horizontalScrollBar()->sizeHint().height() : 0;
    const int around = horizontalHeader()->sizeHint().height() + bar + 2 * frameWidth();
    setMinimumHeight(around + kLeastRows * verticalHeader()->defaultSectionSize());
    setMaximumHeight(around + rowCount() * verticalHeader()->defaultSectionSize());
}

}  // namespace davo
