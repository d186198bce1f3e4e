// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/frmNotepad.h"

#include <QTextCursor>
#include <QTextDocument>
#include <QTextEdit>
#include <QVBoxLayout>

#include "common/text.h"
#include "ui/form_parts.h"
#include "ui/page_input.h"

namespace davo {

frmNotepad::frmNotepad(std::string& notes, Prompts& prompts, QWidget* parent)
    : QDialog(parent),
      notes_(notes),
      prompts_(prompts),
      handlers_(prompts),
      rt_(Named(new QTextEdit(this), "rt")) {
    setObjectName(QStringLiteral("frmNotepad"));
    setWindowTitle(QStringLiteral("Notepad"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* layout = WithMargin(new QVBoxLayout(this), 0);
    layout->addWidget(rt_);
    rt_->setAccessibleName(windowTitle());
    rt_->setAcceptRichText(false);
    rt_->setFrameShape(QFrame::NoFrame);
    rt_->setPlainText(FromPage(notes_));
    rt_->document()->setModified(false);
    resize(fontMetrics().averageCharWidth() * 80, fontMetrics().lineSpacing() * 24);
}

void frmNotepad::done(int result) {
    bool taken = false;
    handlers_.Run([this, &taken] { taken = TakeText(); });
    if (taken) QDialog::done(result);
}

bool frmNotepad::TakeText() {
    if (!rt_->document()->isModified()) return true;
    // The raw text: the plain one would have blanks for the page's fixed blanks.
    QString text = rt_->document()->toRawText();
    // Paragraphs and line breaks inside one, as the document holds them.
    for (const QChar lineBreak : {QChar(QChar::ParagraphSeparator), QChar(QChar::LineSeparator)})
        text.replace(lineBreak, QLatin1Char('\n'));
    if (!ToPage(text)) {
        qsizetype at = 0;
        while (ToPage(text.mid(at, 1)))
            ++at;
        QTextCursor cursor(rt_->document());
        cursor.setPosition(static_cast<int>(at));
        cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
        rt_->setTextCursor(cursor);
        prompts_.Message(NotInPageMessage());
        return false;
    }
    notes_ = ToPage(text.replace(QLatin1Char('\n'), QStringLiteral("\r\n"))).value_or("");
    rt_->document()->setModified(false);
    if (OnChanged) OnChanged();
    return true;
}

}  // namespace davo
