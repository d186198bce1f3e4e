// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/page_header.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QShortcut>
#include <QTimer>
#include <algorithm>

#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kStripMargin = 6;
constexpr int kBodyMargin = 8;
constexpr int kLeastButtonWidth = 116;
constexpr double kPageCaptionGrowth = 1.5;

}  // namespace

PageHeader::PageHeader(QWidget* page, std::initializer_list<QWidget*> buttons)
    : QWidget(page), body_(WithMargin(new QVBoxLayout, kBodyMargin)) {
    setObjectName(QStringLiteral("pageHeader"));
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    QLabel* caption = MakeParagraph(this, "lblPage", page->windowTitle(), kPageCaptionGrowth);
    MakeBold(caption);
    connect(page, &QWidget::windowTitleChanged, caption, &QLabel::setText);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(kBodyMargin, kStripMargin, kBodyMargin, kStripMargin);
    row->addWidget(caption, 1);
    for (QWidget* button : buttons)
        row->addWidget(button);
    for (QPushButton* button : findChildren<QPushButton*>()) {
        button->setMinimumWidth(std::max(button->minimumWidth(), kLeastButtonWidth));
        button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    }
    auto* whole = WithMargin(new QVBoxLayout(page), 0);
    whole->setSpacing(0);
    whole->addWidget(this);
    whole->addLayout(body_, 1);
}

void ShowPage(QMdiArea& area, QWidget& form) {
    QWidget* first = form.focusWidget() != nullptr ? form.focusWidget() : &form;
    QMdiSubWindow* frame = area.addSubWindow(&form, Qt::FramelessWindowHint);
    frame->setAttribute(Qt::WA_DeleteOnClose);
    frame->setSystemMenu(nullptr);
    QObject::connect(new QShortcut(QKeySequence::Close, frame), &QShortcut::activated, frame,
                     &QWidget::close);
    frame->showMaximized();
    // The frame gives it to the first button, whichever that is, and a menu that was opened by a
    // key takes it away again when its item is done.
    first->setFocus();
    QTimer::singleShot(0, first, [first, &form] {
        if (!form.isAncestorOf(QApplication::focusWidget())) first->setFocus();
    });
    // No button of it may be pushed out of a main window that is made small.
    area.setMinimumSize(form.minimumSizeHint());
}

void CloseForm(QWidget& form) {
    auto* frame = qobject_cast<QMdiSubWindow*>(form.parentWidget());
    (frame != nullptr ? static_cast<QWidget*>(frame) : &form)->close();
}

}  // namespace davo
