// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/dialog_prompts.h"

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

#include "common/files.h"
#include "common/run_time_error.h"
#include "tests/support/controls.h"
#include "tests/support/pause.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "ui/contrast.h"

namespace davo {
namespace {

constexpr int kGloveHeight = 40;

// Acts once on the next dialog, as soon as it has the keyboard. One that is still open long after
// fails the test and is closed, so that none hangs it.
class WhenShown {
  public:
    template <class Dialog>
    static std::unique_ptr<WhenShown> Do(const char* name, std::function<void(Dialog&)> act) {
        return std::unique_ptr<WhenShown>(new WhenShown([name, act](QDialog& shown) {
            auto* dialog = qobject_cast<Dialog*>(&shown);
            ASSERT_NE(dialog, nullptr);
            EXPECT_EQ(dialog->objectName(), QLatin1String(name));
            act(*dialog);
        }));
    }

    ~WhenShown() { EXPECT_TRUE(acted_) << "no dialog was shown"; }
    WhenShown(const WhenShown&) = delete;
    WhenShown& operator=(const WhenShown&) = delete;

  private:
    static constexpr int kLimit = 20000;  // milliseconds

    explicit WhenShown(std::function<void(QDialog&)> act) : act_(std::move(act)) {
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { Look(); });
        timer_.start(1);
        since_.start();
    }

    void Look() {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr) return;
        if (since_.elapsed() > kLimit) {
            ADD_FAILURE() << "the dialog stays open";
            dialog->done(QDialog::Rejected);
        } else if (!acted_ && dialog->isActiveWindow()) {
            acted_ = true;
            act_(*dialog);
        }
    }

    std::function<void(QDialog&)> act_;
    QTimer timer_;
    QElapsedTimer since_;
    bool acted_ = false;
};

QString ExactText(const QDialog& dialog) {
    return dialog.property("exactText").toString();
}

void ExpectButtonsForGloves(const QDialog& dialog) {
    const auto* box = dialog.findChild<QDialogButtonBox*>();
    ASSERT_NE(box, nullptr);
    ASSERT_FALSE(box->buttons().isEmpty());
    for (const QAbstractButton* button : box->buttons()) {
        EXPECT_GE(button->height(), kGloveHeight) << button->text().toStdString();
    }
}

TEST(MessagePrompt, ShowsTheTextAsItWasGiven) {
    const QString text = u"  <b>R&D</b> && one\r\n two  "_s;
    const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
        EXPECT_EQ(ExactText(box), text);
        EXPECT_EQ(box.text(), u"  <b>R&D</b> && one\n two  "_s);
        const auto* label = box.findChild<QLabel*>(u"qt_msgbox_label"_s);
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
        EXPECT_EQ(label->buddy(), nullptr);  // so that no '&' is a mnemonic
        EXPECT_EQ(box.windowTitle(), QString());
        EXPECT_EQ(box.standardButtons(), QMessageBox::Ok);
        ExpectButtonsForGloves(box);
        QTest::keyClick(&box, Qt::Key_Return);
    });
    DialogPrompts().Message(text);
}

TEST(MessagePrompt, HasTheTitleGivenAndEndsByEscape) {
    const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
        EXPECT_EQ(box.windowTitle(), u"Title"_s);
        QTest::keyClick(&box, Qt::Key_Escape);
    });
    DialogPrompts().Message(u"text"_s, u"Title"_s);
}

QMessageBox::Icon IconShown(const std::function<void(DialogPrompts&)>& ask) {
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
        icon = box.icon();
        EXPECT_FALSE(box.iconPixmap().isNull());
        QTest::keyClick(&box, Qt::Key_Escape);
    });
    DialogPrompts prompts;
    ask(prompts);
    return icon;
}

TEST(MessagePrompt, HasTheIconOfItsKind) {
    EXPECT_EQ(IconShown([](auto& to) { to.Message(u"The DAVO cannot be reached."_s); }),
              QMessageBox::Warning);
    EXPECT_EQ(IconShown([](auto& to) {
                  to.Message(u"Not saved.\r\n"_s +
                             QString::fromUtf8(RunTimeError(ErrorNumber::DiskFull).what()));
              }),
              QMessageBox::Critical);
    EXPECT_EQ(IconShown([](auto& to) { to.Inform(u"There are no test records."_s); }),
              QMessageBox::Information);
    EXPECT_EQ(IconShown([](auto& to) { to.YesNo(u"Exit?"_s, Answer::No); }), QMessageBox::Question);
    EXPECT_EQ(IconShown([](auto& to) { to.YesNoOrBack(u"Exit?"_s, Answer::No); }),
              QMessageBox::Question);
    EXPECT_EQ(IconShown([](auto& to) { to.YesNoCancel(u"Exit?"_s, Answer::No); }),
              QMessageBox::Question);
}

// At arm's length; the user's own size where that is larger.
TEST(MessagePrompt, HasLettersOfThirteenPointsOrMore) {
    const QFont usual = QApplication::font();
    for (const double points : {9.0, 14.0}) {
        QFont font = usual;
        font.setPointSizeF(points);
        QApplication::setFont(font);
        const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
            for (const QWidget* one : box.findChildren<QWidget*>()) {
                if (!one->isVisible() || !one->property("text").isValid()) continue;
                EXPECT_EQ(one->font().pointSizeF(), std::max(13.0, points))
                    << one->objectName().toStdString();
            }
            box.accept();
        });
        DialogPrompts().Message(u"text"_s);
    }
    QApplication::setFont(usual);
}

DialogPrompts Advising() {
    DialogPrompts prompts;
    prompts.AdviceOn = [](const QString& text) {
        return text == u"known"_s ? u"Plug the <adapter> in & try again."_s : QString();
    };
    return prompts;
}

TEST(MessagePrompt, SaysUnderTheTextWhatToDo) {
    const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
        EXPECT_EQ(box.text(), u"known"_s);
        const auto* text = box.findChild<QLabel*>(u"qt_msgbox_label"_s);
        const auto* advice = box.findChild<QLabel*>(u"qt_msgbox_informativelabel"_s);
        ASSERT_NE(advice, nullptr);
        EXPECT_EQ(advice->text(), u"Plug the <adapter> in & try again."_s);
        EXPECT_EQ(advice->textFormat(), Qt::PlainText);
        EXPECT_GT(advice->y(), text->y());
        EXPECT_EQ(box.defaultButton(), box.button(QMessageBox::Ok));
        box.accept();
    });
    Advising().Message(u"known"_s);
}

TEST(MessagePrompt, WithoutAnAdviceHasNoHelp) {
    const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
        EXPECT_EQ(box.findChild<QLabel*>(u"qt_msgbox_informativelabel"_s), nullptr);
        EXPECT_EQ(box.findChild<QPushButton*>(u"cmdHelp"_s), nullptr);
        box.accept();
    });
    Advising().Message(u"unknown"_s);
}

// The grey is measured where it is seen.
TEST(MessagePrompt, TheAdviceIsGreyAndStillReadInEveryPalette) {
    const QPalette usual = QApplication::palette();
    for (const auto& [ground, ink] :
         std::vector<std::pair<QColor, QColor>>{{QColor(239, 239, 239), Qt::black},
                                                {QColor(239, 240, 241), QColor(35, 38, 41)},
                                                {QColor(45, 45, 48), Qt::white},
                                                {Qt::black, Qt::yellow}}) {
        QPalette palette(ground, ground);
        palette.setColor(QPalette::WindowText, ink);
        QApplication::setPalette(palette);
        const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
            auto* label = box.findChild<QLabel*>(u"qt_msgbox_informativelabel"_s);
            ASSERT_NE(label, nullptr);
            const QImage image = label->grab().toImage();
            double most = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    most = std::max(most, Contrast(image.pixelColor(x, y), ground));
            EXPECT_GE(most, 4.5) << ground.name().toStdString();
            EXPECT_LT(most, Contrast(ink, ground) * 0.75) << ground.name().toStdString();
            box.accept();
        });
        Advising().Message(u"known"_s);
    }
    QApplication::setPalette(usual);
}

// Counts the F1 keys that arrive in a dialog.
class F1Counter : public QObject {
  public:
    F1Counter() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::KeyPress && watched->objectName() == u"msgBox"_s &&
            static_cast<QKeyEvent*>(event)->key() == Qt::Key_F1)
            ++count;
        return false;
    }
    int count = 0;
};

TEST(MessagePrompt, HelpDoesWhatF1DoesAndTheQuestionStaysOpen) {
    F1Counter f1;
    const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
        auto* help = box.findChild<QPushButton*>(u"cmdHelp"_s);
        ASSERT_NE(help, nullptr);
        EXPECT_GE(help->height(), kGloveHeight);
        QTest::mouseClick(help, Qt::LeftButton);
        EXPECT_EQ(f1.count, 1);
        QTest::keyClick(&box, Qt::Key_H, Qt::AltModifier);
        EXPECT_TRUE(QTest::qWaitFor([&] { return f1.count == 2; }));
        EXPECT_TRUE(box.isVisible());
        QTest::keyClick(&box, Qt::Key_Y, Qt::AltModifier);
    });
    EXPECT_EQ(Advising().YesNo(u"known"_s, Answer::No), Answer::Yes);
}

TEST(MessagePrompt, ALongTextScrollsAndTheButtonsStayOnTheScreen) {
    QStringList lines{u"These texts would be read back as others:"_s};
    for (int i = 0; i < 100; ++i)
        lines << u"The text \"SN: %1\" of COMMENTS"_s.arg(i);
    const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
        const QRect screen = box.screen()->availableGeometry();
        EXPECT_LE(box.frameGeometry().height(), screen.height());
        EXPECT_LE(box.frameGeometry().width(), screen.width());
        EXPECT_EQ(box.text(), lines.join(u'\n'));
        auto* scroll = box.findChild<QScrollArea*>();
        ASSERT_NE(scroll, nullptr);
        EXPECT_GT(scroll->height(), box.fontMetrics().height() * 6);
        const auto* text = qobject_cast<QLabel*>(scroll->widget());
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(text->text(), lines.join(u'\n'));
        EXPECT_GE(text->font().pointSizeF(), 13);
        EXPECT_GE(text->height(), 101 * text->fontMetrics().height());
        // By keys, too.
        for (int i = 0; i < 3 && !scroll->hasFocus(); ++i)
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_TRUE(scroll->hasFocus());
        QTest::keyClick(scroll, Qt::Key_PageDown);
        EXPECT_GT(scroll->verticalScrollBar()->value(), 0);
        QTest::mouseClick(box.button(QMessageBox::Yes), Qt::LeftButton);
    });
    EXPECT_EQ(DialogPrompts().YesNo(lines.join(u"\r\n"_s), Answer::No), Answer::Yes);
}

TEST(MessagePrompt, AShortTextDoesNotScroll) {
    const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
        EXPECT_EQ(box.findChild<QScrollArea*>(), nullptr);
        EXPECT_TRUE(box.findChild<QLabel*>(u"qt_msgbox_label"_s)->isVisible());
        box.accept();
    });
    DialogPrompts().Message(u"one\r\ntwo\r\nthree"_s);
}

// What asks a question that "Yes" answers.
using Question = Answer (*)(Prompts&);

class MessageByItself : public testing::TestWithParam<Question> {};

TEST_P(MessageByItself, IsShownAfterTheQuestionThatIsOpen) {
    DialogPrompts prompts;
    std::vector<QString> shown;
    std::vector<std::size_t> boxes;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr || !box->isVisible()) return;
        shown.push_back(box->property("exactText").toString());
        if (shown.size() == 1) {
            prompts.MessageAfter(u"first"_s);
            prompts.MessageAfter(u"second"_s);
        }
        const auto open = QApplication::topLevelWidgets();
        boxes.push_back(static_cast<std::size_t>(
            std::count_if(open.begin(), open.end(), [](const QWidget* one) {
                return one->isVisible() && one->objectName() == u"msgBox"_s;
            })));
        box->button(shown.size() == 1 ? QMessageBox::Yes : QMessageBox::Ok)->click();
    });
    timer.start(1);
    EXPECT_EQ(GetParam()(prompts), Answer::Yes);
    EXPECT_THAT(shown, ElementsAre(u"question"_s, u"first"_s, u"second"_s));
    EXPECT_THAT(boxes, ElementsAre(1U, 1U, 1U));
    prompts.MessageAfter(u"at once"_s);
    EXPECT_EQ(shown.size(), 4U);
}

INSTANTIATE_TEST_SUITE_P(
    Questions, MessageByItself,
    testing::Values([](Prompts& prompts) { return prompts.YesNo(u"question"_s, Answer::No); },
                    [](Prompts& prompts) { return prompts.YesNoOrBack(u"question"_s, Answer::No); },
                    [](Prompts& prompts) {
                        return prompts.YesNoCancel(u"question"_s, Answer::No);
                    }));

TEST(MessagePrompt, ClosesAMenuThatIsOpen) {
    QMenu menu;
    menu.addAction(u"item"_s);
    menu.popup(QPoint(10, 10));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&menu));
    bool open = true;
    const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
        open = menu.isVisible();
        box.accept();
    });
    DialogPrompts().Message(u"text"_s);
    EXPECT_FALSE(open);
}

// What hands do with a dialog.
auto Press(Qt::Key key, Qt::KeyboardModifiers with = {}) {
    return [key, with](QDialog& box) { QTest::keyClick(&box, key, with); };
}
auto ClickOn(QMessageBox::StandardButton button) {
    return [button](QMessageBox& box) { QTest::mouseClick(box.button(button), Qt::LeftButton); };
}
void Close(QDialog& box) {
    box.close();
}

Answer YesNoBy(Answer preset, const std::function<void(QMessageBox&)>& act) {
    const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
        EXPECT_EQ(box.standardButtons(), QMessageBox::Yes | QMessageBox::No);
        EXPECT_EQ(ExactText(box), u"Do You Want to Exit?"_s);
        ExpectButtonsForGloves(box);
        act(box);
    });
    return DialogPrompts().YesNo(u"Do You Want to Exit?"_s, preset);
}

TEST(YesNoPrompt, AnswersByItsButtons) {
    EXPECT_EQ(YesNoBy(Answer::No, ClickOn(QMessageBox::Yes)), Answer::Yes);
    EXPECT_EQ(YesNoBy(Answer::No, ClickOn(QMessageBox::No)), Answer::No);
}

TEST(YesNoPrompt, AnswersThePresetByReturnAndEscape) {
    for (const Answer preset : {Answer::Yes, Answer::No}) {
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape})
            EXPECT_EQ(YesNoBy(preset, Press(key)), preset);
        EXPECT_EQ(YesNoBy(preset, Close), preset);
    }
}

TEST(YesNoPrompt, AnswersTheLetters) {
    EXPECT_EQ(YesNoBy(Answer::No, Press(Qt::Key_Y, Qt::AltModifier)), Answer::Yes);
}

TEST(YesNoPrompt, AnswersThePresetWhenItsWindowGoes) {
    auto window = std::make_unique<QWidget>();
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    EXPECT_EQ(YesNoBy(Answer::No,
                      [&](QMessageBox& box) {
                          EXPECT_EQ(box.parentWidget(), window.get());
                          window.reset();
                      }),
              Answer::No);
}

Answer YesNoCancelBy(Answer preset, const std::function<void(QMessageBox&)>& act) {
    const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
        EXPECT_EQ(box.standardButtons(), QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        EXPECT_EQ(box.windowTitle(), u"Title"_s);
        act(box);
    });
    return DialogPrompts().YesNoCancel(u"Save?"_s, preset, u"Title"_s);
}

TEST(YesNoCancelPrompt, AnswersByItsButtonsAndKeys) {
    EXPECT_EQ(YesNoCancelBy(Answer::Cancel, ClickOn(QMessageBox::Yes)), Answer::Yes);
    EXPECT_EQ(YesNoCancelBy(Answer::Cancel, ClickOn(QMessageBox::No)), Answer::No);
    EXPECT_EQ(YesNoCancelBy(Answer::Cancel, ClickOn(QMessageBox::Cancel)), Answer::Cancel);
    EXPECT_EQ(YesNoCancelBy(Answer::Yes, Press(Qt::Key_Return)), Answer::Yes);
    EXPECT_EQ(YesNoCancelBy(Answer::Cancel, Press(Qt::Key_Return)), Answer::Cancel);
    EXPECT_EQ(YesNoCancelBy(Answer::Yes, Press(Qt::Key_Escape)), Answer::Cancel);
    EXPECT_EQ(YesNoCancelBy(Answer::Yes, Close), Answer::Cancel);
}

std::optional<QString> InputBy(const std::function<void(QInputDialog&)>& act) {
    const QString prompt = u"R&D <i>name</i>:\r\nsecond"_s;
    const auto shown = WhenShown::Do<QInputDialog>("inputBox", [&](QInputDialog& box) {
        EXPECT_EQ(ExactText(box), prompt);
        EXPECT_EQ(box.windowTitle(), u"Title"_s);
        const auto* label = box.findChild<QLabel*>();
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
        // A doubled '&' is shown as one.
        EXPECT_EQ(label->text(), u"R&&D <i>name</i>:\nsecond"_s);
        EXPECT_EQ(box.findChild<QLineEdit*>()->selectedText(), u"T1"_s);
        ExpectButtonsForGloves(box);
        act(box);
    });
    return DialogPrompts().Input(u"Title"_s, prompt, u"T1"_s);
}

TEST(InputPrompt, GivesWhatWasTyped) {
    EXPECT_EQ(InputBy([](QInputDialog& box) {
                  QTest::keyClicks(box.findChild<QLineEdit*>(), u" T2 "_s);
                  QTest::keyClick(&box, Qt::Key_Return);
              }),
              u" T2 "_s);
    EXPECT_EQ(InputBy(Press(Qt::Key_Return)), u"T1"_s);
}

TEST(InputPrompt, TellsAnEmptyTextFromACancel) {
    EXPECT_EQ(InputBy([](QInputDialog& box) {
                  box.findChild<QLineEdit*>()->clear();
                  QTest::keyClick(&box, Qt::Key_Return);
              }),
              QString());
    EXPECT_EQ(InputBy(Press(Qt::Key_Escape)), std::nullopt);
}

void Type(QFileDialog& dialog, const QString& name) {
    auto* line = dialog.findChild<QLineEdit*>(u"fileNameEdit"_s);
    line->setText(name);
    QMetaObject::invokeMethod(&dialog, "accept");
}

TEST(SaveFilePrompt, GivesThePathAndAsksNothingAboutAFileThatIsThere) {
    const test::TemporaryFolder folder;
    ReplaceFile(folder.Path("T1.txt"), "old");
    const auto shown = WhenShown::Do<QFileDialog>("cdFile", [&](QFileDialog& dialog) {
        EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptSave);
        EXPECT_EQ(dialog.windowTitle(), u"Save As"_s);
        EXPECT_EQ(dialog.nameFilters(), QStringList(u"*.txt"_s));
        EXPECT_EQ(dialog.directory(), QDir(folder.Path()));
        Type(dialog, u"T1.txt"_s);
    });
    EXPECT_EQ(DialogPrompts().SaveFile(folder.Path(), u"*.txt"_s, {}),
              ShownPath(folder.Path("T1.txt")));
    EXPECT_EQ(ReadWholeFile(folder.Path("T1.txt")), "old");
}

TEST(SaveFilePrompt, ProposesAName) {
    const test::TemporaryFolder folder;
    const auto shown = WhenShown::Do<QFileDialog>("cdFile", [](QFileDialog& dialog) {
        EXPECT_EQ(dialog.findChild<QLineEdit*>(u"fileNameEdit"_s)->text(), u"NORTH 11-21-26"_s);
        QTest::keyClick(dialog.findChild<QLineEdit*>(u"fileNameEdit"_s), Qt::Key_Return);
    });
    EXPECT_EQ(DialogPrompts().SaveFile(folder.Path(), u"*.txt"_s, u"NORTH 11-21-26"_s),
              ShownPath(folder.Path("NORTH 11-21-26")));
}

TEST(SaveFilePrompt, TypingReplacesTheProposal) {
    const test::TemporaryFolder folder;
    ReplaceFile(folder.Path("T1.txt"), "old");
    QWidget above;  // as the program has it
    ASSERT_TRUE(test::ShowActive(above));
    const auto shown = WhenShown::Do<QFileDialog>("cdFile", [](QFileDialog& dialog) {
        test::Pause(300);
        EXPECT_EQ(dialog.findChild<QLineEdit*>(u"fileNameEdit"_s)->selectedText(), u"NORTH"_s);
        QTest::keyClicks(dialog.focusWidget(), u"T3"_s);
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
    });
    EXPECT_EQ(DialogPrompts().SaveFile(folder.Path(), u"*.txt"_s, u"NORTH"_s),
              ShownPath(folder.Path("T3")));
}

// Goes on to another kind of file in the box.
void ChooseKind(QFileDialog& dialog, Qt::Key key) {
    QTest::keyClick(dialog.findChild<QComboBox*>(u"fileTypeCombo"_s), key);
}

TEST(SaveFilePrompt, AnotherKindOfFileHasItsEndingAtOnce) {
    const test::TemporaryFolder folder;
    const QString kinds = u"*.pdf;;*.html"_s;
    const auto shown = WhenShown::Do<QFileDialog>("cdFile", [](QFileDialog& dialog) {
        const auto* line = dialog.findChild<QLineEdit*>(u"fileNameEdit"_s);
        ChooseKind(dialog, Qt::Key_Down);
        EXPECT_EQ(line->text(), u"NORTH 11.21.html"_s);
        ChooseKind(dialog, Qt::Key_Up);
        EXPECT_EQ(line->text(), u"NORTH 11.21.pdf"_s);
        ChooseKind(dialog, Qt::Key_Down);
        QMetaObject::invokeMethod(&dialog, "accept");
    });
    EXPECT_EQ(DialogPrompts().SaveFile(folder.Path(), kinds, u"NORTH 11.21.pdf"_s),
              ShownPath(folder.Path("NORTH 11.21.html")));
}

TEST(SaveFilePrompt, AnotherKindOfFileLeavesTheFolderThatWasTyped) {
    const test::TemporaryFolder folder;
    QDir().mkpath(folder.Path("bay"));
    const auto shown = WhenShown::Do<QFileDialog>("cdFile", [](QFileDialog& dialog) {
        auto* line = dialog.findChild<QLineEdit*>(u"fileNameEdit"_s);
        line->setText(u"bay/CT 4"_s);
        ChooseKind(dialog, Qt::Key_Down);
        EXPECT_EQ(line->text(), u"bay/CT 4.html"_s);
        QMetaObject::invokeMethod(&dialog, "accept");
    });
    EXPECT_EQ(DialogPrompts().SaveFile(folder.Path(), u"*.pdf;;*.html"_s, u"T3.pdf"_s),
              ShownPath(folder.Path("bay/CT 4.html")));
}

TEST(SaveFilePrompt, ANameIsOfTheKindThatWasChosen) {
    const test::TemporaryFolder folder;
    const auto saved = [&](const QString& typed, bool choose) {
        const auto shown = WhenShown::Do<QFileDialog>("cdFile", [&](QFileDialog& dialog) {
            if (choose) ChooseKind(dialog, Qt::Key_Down);
            Type(dialog, typed);
        });
        const QString path =
            DialogPrompts().SaveFile(folder.Path(), u"*.pdf;;*.html"_s, u"T3.pdf"_s);
        return QFileInfo(path).fileName();
    };
    EXPECT_EQ(saved(u"T4"_s, true), u"T4.html"_s);
    EXPECT_EQ(saved(u"T4 11.21"_s, true), u"T4 11.21.html"_s);
    EXPECT_EQ(saved(u"T4"_s, false), u"T4.pdf"_s);
    // What is typed has the last word.
    EXPECT_EQ(saved(u"T4.pdf"_s, true), u"T4.pdf"_s);
    EXPECT_EQ(saved(u"T4.HTML"_s, false), u"T4.HTML"_s);
    // As the dialog of a system gives it, which leaves the proposal alone.
    EXPECT_EQ(saved(u"T3.pdf"_s, true), u"T3.html"_s);
}

TEST(SaveFilePrompt, AddsNothingToANewName) {
    const test::TemporaryFolder folder;
    const auto shown =
        WhenShown::Do<QFileDialog>("cdFile", [](QFileDialog& dialog) { Type(dialog, u"T2"_s); });
    EXPECT_EQ(DialogPrompts().SaveFile(folder.Path(), u"*.txt"_s, {}),
              ShownPath(folder.Path("T2")));
}

TEST(OpenFilePrompt, GivesThePathOfAFileThatIsThere) {
    const test::TemporaryFolder folder;
    ReplaceFile(folder.Path("core.csv"), "A;V");
    const auto shown = WhenShown::Do<QFileDialog>("cdFile", [&](QFileDialog& dialog) {
        EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptOpen);
        EXPECT_EQ(dialog.windowTitle(), u"Open"_s);
        EXPECT_EQ(dialog.fileMode(), QFileDialog::ExistingFile);
        EXPECT_EQ(dialog.nameFilters(), QStringList(u"*.csv"_s));
        EXPECT_EQ(dialog.directory(), QDir(folder.Path()));
        Type(dialog, u"core.csv"_s);
    });
    EXPECT_EQ(DialogPrompts().OpenFile(folder.Path(), u"*.csv"_s),
              ShownPath(folder.Path("core.csv")));
}

TEST(OpenFilePrompt, IsEmptyWhenCancelled) {
    const test::TemporaryFolder folder;
    const auto shown = WhenShown::Do<QFileDialog>("cdFile", Press(Qt::Key_Escape));
    EXPECT_EQ(DialogPrompts().OpenFile(folder.Path(), u"*.csv"_s), QString());
}

TEST(SaveFilePrompt, IsEmptyWhenCancelled) {
    const test::TemporaryFolder folder;
    const auto shown = WhenShown::Do<QFileDialog>("cdFile", Press(Qt::Key_Escape));
    EXPECT_EQ(DialogPrompts().SaveFile(folder.Path(), u"*.txt"_s, {}), QString());
}

TEST(ChooseFolderPrompt, GivesTheFolderChosen) {
    const test::TemporaryFolder folder;
    CreateFolder(folder.Path("inside"));
    const auto shown = WhenShown::Do<QFileDialog>("folderBrowser", [&](QFileDialog& dialog) {
        EXPECT_EQ(ExactText(dialog), u"Select a folder"_s);
        EXPECT_EQ(dialog.windowTitle(), u"Select a folder"_s);
        EXPECT_EQ(dialog.directory(), QDir(folder.Path()));
        Type(dialog, u"inside"_s);
    });
    EXPECT_EQ(DialogPrompts().ChooseFolder(u"Select a folder"_s, folder.Path()),
              ShownPath(folder.Path("inside")));
}

TEST(ChooseFolderPrompt, BeginsAtTheUsersFolderWhenItsStartIsNotThere) {
    const test::TemporaryFolder folder;
    const auto before = QDir::current();
    QDir::setCurrent(folder.Path());
    const auto shown = WhenShown::Do<QFileDialog>("folderBrowser", [&](QFileDialog& dialog) {
        EXPECT_EQ(dialog.directory(), QDir::home());
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    DialogPrompts().ChooseFolder(u"Select"_s, folder.Path("nowhere"));
    QDir::setCurrent(before.path());
}

TEST(ChooseFolderPrompt, IsEmptyWhenCancelled) {
    const test::TemporaryFolder folder;
    const auto shown = WhenShown::Do<QFileDialog>("folderBrowser", Press(Qt::Key_Escape));
    EXPECT_EQ(DialogPrompts().ChooseFolder(u"Select"_s, folder.Path()), QString());
}

// The buttons that are shown, by their texts.
std::vector<std::string> ShownButtons(const QDialog& dialog) {
    std::vector<std::string> texts;
    for (const QAbstractButton* button : dialog.findChild<QDialogButtonBox*>()->buttons())
        if (button->isVisible()) texts.push_back(button->text().remove(u'&').toStdString());
    return texts;
}

TEST(YesNoOrBackPrompt, EscapeAndTheFrameGoBack) {
    DialogPrompts prompts;
    for (const bool byKey : {true, false}) {
        const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
            EXPECT_THAT(ShownButtons(box), UnorderedElementsAre("Yes", "No"));
            EXPECT_EQ(box.defaultButton(), box.button(QMessageBox::No));
            if (byKey) {
                QTest::keyClick(&box, Qt::Key_Escape);
            } else {
                box.close();
            }
        });
        EXPECT_EQ(prompts.YesNoOrBack(u"Go on?"_s, Answer::No), Answer::Cancel) << byKey;
    }
}

TEST(YesNoOrBackPrompt, ItsButtonsAnswer) {
    DialogPrompts prompts;
    for (const Answer answer : {Answer::Yes, Answer::No}) {
        const auto shown = WhenShown::Do<QMessageBox>("msgBox", [&](QMessageBox& box) {
            box.button(answer == Answer::Yes ? QMessageBox::Yes : QMessageBox::No)->click();
        });
        EXPECT_EQ(prompts.YesNoOrBack(u"Go on?"_s, Answer::No), answer);
    }
}

}  // namespace
}  // namespace davo
