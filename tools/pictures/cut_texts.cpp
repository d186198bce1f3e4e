// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/pictures/cut_texts.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QScreen>
#include <QStyle>
#include <QTextDocument>

#include "ui/fit_label.h"

namespace davo::test {
namespace {

QString Named(const QWidget& widget) {
    return QLatin1String(widget.metaObject()->className()) + u' ' + widget.objectName();
}

QString Sizes(QSize needed, QSize has) {
    return QStringLiteral("needs %1x%2, has %3x%4")
        .arg(needed.width())
        .arg(needed.height())
        .arg(has.width())
        .arg(has.height());
}

// The room that a label's text takes when it is as wide as the label.
QSize NeededBy(const QLabel& label) {
    const QSize room = label.contentsRect().size();
    if (label.wordWrap()) return {room.width(), label.heightForWidth(label.width())};
    if (Qt::mightBeRichText(label.text()) && label.textFormat() != Qt::PlainText) {
        QTextDocument document;
        document.setDefaultFont(label.font());
        document.setHtml(label.text());
        return document.size().toSize();
    }
    return label.fontMetrics().size(Qt::TextShowMnemonic, label.text());
}

QSize NeededBy(const QAbstractButton& button) {
    QSize text = button.fontMetrics().size(Qt::TextShowMnemonic, button.text());
    if (!button.icon().isNull()) text.rwidth() += button.iconSize().width();
    return text;
}

bool IsLarger(QSize needed, QSize has) {
    return needed.width() > has.width() || needed.height() > has.height() + 1;
}

bool Scrolls(const QWidget& widget) {
    for (const QWidget* parent = widget.parentWidget(); parent != nullptr;
         parent = parent->parentWidget()) {
        if (qobject_cast<const QAbstractScrollArea*>(parent) != nullptr) return true;
    }
    return false;
}

// What a box has for its text; nothing for a widget that has none.
QString CutIn(const QWidget& widget) {
    if (const auto* fit = dynamic_cast<const FitLabel*>(&widget)) {
        constexpr int kLeast = 12;  // pixels
        if (fit->text().isEmpty() || fit->FittedPixelSize() >= kLeast) return {};
        return QStringLiteral("letters of %1 pixels").arg(fit->FittedPixelSize());
    }
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        // What may be elided is whole in the tool tip.
        if (label->text().isEmpty() || label->toolTip().contains(label->text())) return {};
        const QSize needed = NeededBy(*label);
        const QSize has = label->wordWrap() ? label->size() : label->contentsRect().size();
        return IsLarger(needed, has) ? Sizes(needed, has) : QString();
    }
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) {
        if (button->text().isEmpty()) return {};
        const QSize needed = NeededBy(*button);
        return IsLarger(needed, button->size()) ? Sizes(needed, button->size()) : QString();
    }
    if (const auto* box = qobject_cast<const QGroupBox*>(&widget)) {
        const int needed = box->fontMetrics().size(Qt::TextShowMnemonic, box->title()).width();
        return needed > box->width() ? Sizes({needed, 0}, box->size()) : QString();
    }
    if (const auto* header = qobject_cast<const QHeaderView*>(&widget)) {
        QString cut;
        for (int section = 0; section < header->count(); ++section) {
            if (header->isSectionHidden(section)) continue;
            const QString text =
                header->model()->headerData(section, header->orientation()).toString();
            const bool isAcross = header->orientation() == Qt::Horizontal;
            const int room = isAcross ? header->sectionSize(section) : header->width();
            if (header->fontMetrics().horizontalAdvance(text) > room)
                cut += QStringLiteral("column \"%1\" ").arg(text);
        }
        return cut;
    }
    return {};
}

}  // namespace

QStringList CutTexts(const QWidget& window) {
    QStringList cut;
    const QSize screen = window.screen()->availableSize();
    const QSize least = window.minimumSizeHint().expandedTo(window.minimumSize());
    if (window.isWindow() && IsLarger(least, screen))
        cut += Named(window) + QStringLiteral(": the window ") + Sizes(least, screen);
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisibleTo(&window) || !widget->isVisible()) continue;
        const QString own = CutIn(*widget);
        if (!own.isEmpty()) cut += Named(*widget) + QStringLiteral(": ") + own;
        const bool hasText = qobject_cast<const QLabel*>(widget) != nullptr ||
                             qobject_cast<const QAbstractButton*>(widget) != nullptr;
        const QWidget* parent = widget->parentWidget();
        if (!hasText || parent == nullptr || widget->isWindow() || Scrolls(*widget)) continue;
        const QRect place(widget->mapTo(&window, QPoint()), widget->size());
        if (!window.rect().adjusted(-1, -1, 1, 1).contains(place))
            cut += Named(*widget) + QStringLiteral(": is cut off by the window");
    }
    return cut;
}

}  // namespace davo::test
