// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/dialog_prompts.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <algorithm>

#include "common/places.h"
#include "ui/contrast.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

// The text as it was given, for those who read the dialog by its properties.
constexpr const char* kExactText = "exactText";

// Buttons that a gloved finger meets.
constexpr const char* kButtonSize = "QPushButton { min-height: 40px; min-width: 90px; }";

// A label breaks lines at LF only and would show CR as a box.
QString Shown(QString text) {
    return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

QWidget* Parent() {
    QWidget* modal = QApplication::activeModalWidget();
    return modal != nullptr ? modal : QApplication::activeWindow();
}

void SetUp(QDialog& dialog, const char* name, const QString& text, const QString& title) {
    dialog.setObjectName(QLatin1String(name));
    dialog.setProperty(kExactText, text);
    dialog.setWindowTitle(title);
    dialog.setStyleSheet(QLatin1String(kButtonSize));
}

// Letters that are read at arm's length.
void EnlargeText(QDialog& dialog) {
    constexpr double kLeast = 13;  // points
    QFont font = dialog.font();
    font.setPointSizeF(std::max(kLeast, font.pointSizeF()));
    dialog.setFont(font);
    for (auto* child : dialog.findChildren<QAbstractButton*>())
        child->setFont(font);
}

QMessageBox::Icon IconOf(const QString& message) {
    const bool error = message.contains(QLatin1String("Run-time error '"));
    return error ? QMessageBox::Critical : QMessageBox::Warning;
}

void AddAdvice(QMessageBox& box, const QString& advice) {
    if (advice.isEmpty()) return;
    box.setInformativeText(advice);
    auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"));
    label->setTextFormat(Qt::PlainText);
    QPalette quiet = box.palette();
    quiet.setColor(QPalette::WindowText, QuietInk(quiet));
    label->setPalette(quiet);
    QPushButton* help = box.addButton(QStringLiteral("&Help"), QMessageBox::HelpRole);
    help->setObjectName(QStringLiteral("cmdHelp"));
    // The question stays open.
    QObject::disconnect(help, &QAbstractButton::clicked, nullptr, nullptr);
    QObject::connect(help, &QAbstractButton::clicked, &box, [&box] { PressF1(box); });
}

// A text that leaves the screen no room for the buttons scrolls.
void ScrollLongText(QMessageBox& box) {
    constexpr int kWidth = 600;
    auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    const int most = box.screen()->availableSize().height() / 2;
    label->setWordWrap(true);
    if (label->heightForWidth(kWidth) <= most) return;
    auto* scroll = Named(new QScrollArea(&box), "scrText");
    delete box.layout()->replaceWidget(label, scroll);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setWidget(label);
    // Qt 6.8 takes no font for a label that came to another parent below a style sheet.
    label->setStyleSheet(QStringLiteral("font-size: %1pt").arg(box.font().pointSizeF()));
    scroll->setFixedHeight(most);
    scroll->setMinimumWidth(kWidth);
}

// Shows a message box until it is answered. When its parent is destroyed meanwhile, the answer is
// that of the Escape key. Its button need not be shown.
QMessageBox::StandardButton Ask(QMessageBox::Icon icon, const QString& text, const QString& title,
                                QMessageBox::StandardButtons buttons,
                                QMessageBox::StandardButton preset,
                                QMessageBox::StandardButton escape, const QString& advice) {
    const QPointer<QMessageBox> box = new QMessageBox(Parent());
    SetUp(*box, "msgBox", text, title);
    box->setIcon(icon);
    box->setTextFormat(Qt::PlainText);
    box->setText(Shown(text));
    box->setStandardButtons(buttons | escape);
    box->setDefaultButton(preset);
    box->setEscapeButton(escape);
    box->button(escape)->setVisible(buttons.testFlag(escape));
    AddAdvice(*box, advice);
    EnlargeText(*box);
    ScrollLongText(*box);
    const int pressed = box->exec();
    if (box.isNull()) return escape;
    delete box;
    return static_cast<QMessageBox::StandardButton>(pressed);
}

QMessageBox::StandardButton ButtonOf(Answer answer) {
    if (answer == Answer::Yes) return QMessageBox::Yes;
    return answer == Answer::No ? QMessageBox::No : QMessageBox::Cancel;
}

Answer AnswerOf(QMessageBox::StandardButton button) {
    if (button == QMessageBox::Yes) return Answer::Yes;
    return button == QMessageBox::No ? Answer::No : Answer::Cancel;
}

constexpr auto kYesNo = QMessageBox::Yes | QMessageBox::No;

Answer Question(const QString& text, const QString& title, QMessageBox::StandardButtons buttons,
                Answer preset, Answer escape, const QString& advice) {
    return AnswerOf(Ask(QMessageBox::Question, text, title, buttons, ButtonOf(preset),
                        ButtonOf(escape), advice));
}

// Runs a file dialog to its end: the path chosen, empty when cancelled. Without a desktop there
// is no native dialog to be driven.
QString Chosen(const QPointer<QFileDialog>& dialog) {
    const bool bare = QGuiApplication::platformName() == QLatin1String("offscreen");
    dialog->setOption(QFileDialog::DontUseNativeDialog, bare);
    const bool accepted = dialog->exec() == QDialog::Accepted;
    if (dialog.isNull()) return {};
    const QStringList chosen = dialog->selectedFiles();
    delete dialog;
    return accepted && !chosen.isEmpty() ? ShownPath(chosen.first()) : QString();
}

// The ending of one of the filters that name has; empty when it has none.
QString EndingOf(const QString& name, const QStringList& filters) {
    for (const QString& filter : filters)
        if (name.endsWith(filter.mid(1), Qt::CaseInsensitive)) return filter.mid(1);
    return {};
}

// name with the ending of the filter chosen, such as "*.html", in place of that of another one.
QString WithEndingOf(const QString& chosen, const QString& name, const QStringList& filters) {
    return name.chopped(EndingOf(name, filters).size()) + chosen.mid(1);
}

}  // namespace

// A dialog is open for as long as it lives; then what is due is shown.
class DialogPrompts::Open {
  public:
    explicit Open(DialogPrompts& prompts) : prompts_(prompts) {
        ++prompts_.open_;
        while (QWidget* popup = QApplication::activePopupWidget())
            if (!popup->close()) break;
    }
    ~Open() {
        if (--prompts_.open_ > 0 || prompts_.due_.empty()) return;
        const QString text = prompts_.due_.front();
        prompts_.due_.pop_front();
        prompts_.Message(text);
    }
    Q_DISABLE_COPY_MOVE(Open)

  private:
    DialogPrompts& prompts_;
};

void DialogPrompts::Message(const QString& text, const QString& title) {
    const Open open(*this);
    Ask(IconOf(text), text, title, QMessageBox::Ok, QMessageBox::Ok, QMessageBox::Ok, Advice(text));
}

void DialogPrompts::Inform(const QString& text) {
    const Open open(*this);
    Ask(QMessageBox::Information, text, {}, QMessageBox::Ok, QMessageBox::Ok, QMessageBox::Ok,
        Advice(text));
}

void DialogPrompts::MessageAfter(const QString& text) {
    if (open_ > 0) {
        due_.push_back(text);
    } else {
        Message(text);
    }
}

Answer DialogPrompts::YesNo(const QString& text, Answer preset, const QString& title) {
    const Open open(*this);
    return Question(text, title, kYesNo, preset, preset, Advice(text));
}

Answer DialogPrompts::YesNoOrBack(const QString& text, Answer preset, const QString& title) {
    const Open open(*this);
    return Question(text, title, kYesNo, preset, Answer::Cancel, Advice(text));
}

Answer DialogPrompts::YesNoCancel(const QString& text, Answer preset, const QString& title) {
    const Open open(*this);
    return Question(text, title, kYesNo | QMessageBox::Cancel, preset, Answer::Cancel,
                    Advice(text));
}

std::optional<QString> DialogPrompts::Input(const QString& title, const QString& prompt,
                                            const QString& initial) {
    const Open open(*this);
    const QPointer<QInputDialog> dialog = new QInputDialog(Parent());
    SetUp(*dialog, "inputBox", prompt, title);
    dialog->setInputMode(QInputDialog::TextInput);
    // The label is the line's buddy: a single '&' would become its mnemonic.
    dialog->setLabelText(Shown(prompt).replace(QLatin1Char('&'), QStringLiteral("&&")));
    for (QLabel* label : dialog->findChildren<QLabel*>())
        label->setTextFormat(Qt::PlainText);
    dialog->setTextValue(initial);
    for (QLineEdit* line : dialog->findChildren<QLineEdit*>())
        line->setObjectName(QStringLiteral("txtInput"));
    EnlargeText(*dialog);
    const bool accepted = dialog->exec() == QDialog::Accepted;
    if (dialog.isNull()) return std::nullopt;
    const QString text = dialog->textValue();
    delete dialog;
    return accepted ? std::optional(text) : std::nullopt;
}

QString DialogPrompts::SaveFile(const QString& folder, const QString& filter, const QString& name) {
    const Open open(*this);
    const QPointer<QFileDialog> dialog = new QFileDialog(Parent());
    SetUp(*dialog, "cdFile", {}, QStringLiteral("Save As"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setOption(QFileDialog::DontConfirmOverwrite);
    dialog->setNameFilter(filter);
    dialog->setDirectory(folder);
    dialog->selectFile(name);
    QObject::connect(dialog, &QFileDialog::filterSelected, dialog, [dialog](const QString& chosen) {
        for (QLineEdit* line : dialog->findChildren<QLineEdit*>())
            line->setText(WithEndingOf(chosen, line->text(), dialog->nameFilters()));
    });
    // What is typed takes the place of the name.
    for (QLineEdit* line : dialog->findChildren<QLineEdit*>())
        line->selectAll();
    const QStringList kinds = dialog->nameFilters();
    QString kind;
    QObject::connect(dialog, &QDialog::accepted, dialog,
                     [&] { kind = dialog->selectedNameFilter(); });
    QString path = Chosen(dialog);
    if (path.isEmpty() || kinds.size() < 2) return path;
    // The dialogs of a system leave the name as it is when another kind is chosen.
    const bool isProposal = QFileInfo(path).fileName() == name;
    return isProposal || EndingOf(path, kinds).isEmpty() ? WithEndingOf(kind, path, kinds) : path;
}

QString DialogPrompts::OpenFile(const QString& folder, const QString& filter) {
    const Open open(*this);
    const QPointer<QFileDialog> dialog = new QFileDialog(Parent(), {}, folder, filter);
    SetUp(*dialog, "cdFile", {}, QStringLiteral("Open"));
    dialog->setFileMode(QFileDialog::ExistingFile);
    return Chosen(dialog);
}

QString DialogPrompts::ChooseFolder(const QString& prompt, const QString& start) {
    const Open open(*this);
    const QPointer<QFileDialog> dialog = new QFileDialog(Parent());
    SetUp(*dialog, "folderBrowser", prompt, prompt);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setDirectory(QFileInfo(start).isDir() ? start : QDir::homePath());
    return Chosen(dialog);
}

}  // namespace davo
