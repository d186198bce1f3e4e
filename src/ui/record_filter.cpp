// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/record_filter.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>

#include "ui/form_parts.h"
#include "ui/record_list.h"

namespace davo {

RecordFilter::RecordFilter(RecordList& list, QWidget* window) : QWidget(window), list_(list) {
    setObjectName(QStringLiteral("RecordFilter"));
    auto* row = WithMargin(new QHBoxLayout(this), 0);
    txtFilter_ = Named(new QLineEdit(this), "txtFilter");
    txtFilter_->setAccessibleName(QStringLiteral("Filter"));
    txtFilter_->setPlaceholderText(QStringLiteral("Filter (Ctrl+F)"));
    txtFilter_->setToolTip(
        QStringLiteral("Shows the records that have these words in a column or as serial number"));
    txtFilter_->setClearButtonEnabled(true);
    Enlarge(txtFilter_);
    row->addWidget(txtFilter_, 1);
    lblFiltered_ = MakeLabel(this, "lblFiltered");
    row->addWidget(lblFiltered_);
    connect(txtFilter_, &QLineEdit::textChanged, this, [this](const QString& text) {
        list_.Filter(text);
        Count();
    });
    connect(txtFilter_, &QLineEdit::returnPressed, this, [this] { EnterList(); });
    list_.OnShown = [this] { Count(); };
    OnKey(window, QKeySequence::Find, [this] {
        txtFilter_->setFocus(Qt::ShortcutFocusReason);
        txtFilter_->selectAll();
    });
    txtFilter_->installEventFilter(this);
    list_.installEventFilter(this);
    setTabOrder(txtFilter_, &list);
    Count();
}

void RecordFilter::Count() {
    lblFiltered_->setVisible(!txtFilter_->text().trimmed().isEmpty());
    lblFiltered_->setText(
        QStringLiteral("%1 of %2 records").arg(list_.topLevelItemCount()).arg(list_.Filled()));
}

void RecordFilter::EnterList() {
    list_.setFocus(Qt::TabFocusReason);
}

// Escape is taken before a shortcut of the window has it: who sees half of the records wants all of
// them, and not to leave.
bool RecordFilter::eventFilter(QObject* watched, QEvent* event) {
    const bool pressed = event->type() == QEvent::KeyPress;
    if (!pressed && event->type() != QEvent::ShortcutOverride)
        return QWidget::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    const bool inBox = watched == txtFilter_;
    const bool shows = key == Qt::Key_Escape && (inBox || !txtFilter_->text().isEmpty());
    const bool enters = pressed && inBox && key == Qt::Key_Down;
    if (!shows && !enters) return QWidget::eventFilter(watched, event);
    event->accept();
    if (shows && pressed) txtFilter_->clear();
    if (pressed) EnterList();
    return true;
}

}  // namespace davo
