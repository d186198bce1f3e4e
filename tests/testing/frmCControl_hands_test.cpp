// SPDX-License-Identifier: GPL-3.0-or-later
// The test window under the operator's hands and eyes: keys, focus, shortcuts, sizes.

#include <QDialog>
#include <QToolTip>
#include <chrono>
#include <set>

#include "tests/support/pause.h"
#include "tests/testing/test_window.h"
#include "ui/fit_label.h"
#include "ui/page_input.h"

namespace davo::test {
namespace {

TEST_F(TestWindow, CharactersOutsideThePageAreRefusedInWords) {
    Open();
    Box("txtHVolt")->setFocus();
    QTest::sendKeyEvent(QTest::Click, Box("txtHVolt"), Qt::Key_unknown, u"\u03A9"_s, {});
    EXPECT_EQ(Text("txtHVolt"), "");
    EXPECT_EQ(QToolTip::text(), NotInPageMessage());
    QTest::sendKeyEvent(QTest::Click, Box("txtHVolt"), Qt::Key_unknown, u"\u00B5"_s, {});
    EXPECT_EQ(Box("txtHVolt")->text(), u"\u00B5"_s);
}

TEST_F(TestWindow, TheTabKeyFollowsTheEye) {
    OpenAndRun();
    Box("txtHVolt")->setFocus();
    std::vector<std::string> order;
    for (int i = 0; i < 8; ++i) {
        order.push_back(QApplication::focusWidget()->objectName().toStdString());
        Key(Qt::Key_Tab);
    }
    EXPECT_THAT(order, ElementsAre("txtHVolt", "txtXVolt", "cmdHeader", "cmdContinue", "cmdStart",
                                   "cmdExit", "txtErrorLimit", "txtHVolt"))
        << "cmdCancel is disabled after a shot";
}

TEST_F(TestWindow, ADisabledButtonDoesNotHandTheFocusOn) {
    Open();
    StartToZero();
    EXPECT_TRUE(window->hasFocus());
    const auto sent = port.sent.size();
    Key(Qt::Key_Return);
    Key(Qt::Key_Space);
    EXPECT_EQ(port.sent.size(), sent) << "a key too many must not cancel the test";
}

TEST_F(TestWindow, AKeyTooManyDoesNotDropTheShot) {
    OpenAndStart();
    Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    EXPECT_TRUE(Button("cmdContinue")->hasFocus());
    Say(RecordOf(Digits()));
    EXPECT_EQ(Text("cmdContinue"), "&Repeat Test");
    EXPECT_TRUE(Button("cmdStart")->hasFocus());
}

// A box over the window, as a message is.
class OpenBox : public QDialog {
  public:
    explicit OpenBox(QWidget* parent) : QDialog(parent) {
        setModal(true);
        show();
        activateWindow();
        button_.setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(this));
        EXPECT_TRUE(Until([this] { return button_.hasFocus(); }));
    }

  private:
    QPushButton button_{QStringLiteral("OK"), this};
};

TEST_F(TestWindow, AKeyTooManyDoesNotDropAShotThatEndedBehindABox) {
    OpenAndStart();
    Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    EXPECT_TRUE(Button("cmdContinue")->hasFocus());
    const OpenBox box(&main);
    Say(RecordOf(Digits()));
    EXPECT_EQ(Text("cmdContinue"), "&Repeat Test");
    EXPECT_EQ(main.focusWidget(), Button("cmdStart")) << "what has the focus when the box is gone";
}

TEST_F(TestWindow, AButtonDisabledBehindABoxDoesNotHandTheFocusOn) {
    Open();
    Click("cmdStart");
    Button("cmdContinue")->setFocus();
    const OpenBox box(&main);
    Say("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
    EXPECT_FALSE(Enabled("cmdContinue"));
    EXPECT_EQ(main.focusWidget(), window) << "what has the focus when the box is gone";
}

TEST_F(TestWindow, ExitTakesTheTypedTextsOverAlsoWhenNoBoxWasTold) {
    OpenAndRun();
    Box("txtHVolt")->setText(u"1000"_s);
    Box("txtXVolt")->setText(u"3"_s);
    EXPECT_EQ(Text("txtCRatio"), "");
    window->Exit();
    EXPECT_EQ(Text("txtCRatio"), "333.333");
}

TEST_F(TestWindow, AKeyHeldDownPressesOnce) {
    Open();
    StartToRange();
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, {}, {}, true);
    QApplication::sendEvent(Button("cmdContinue"), &repeated);
    EXPECT_EQ(port.sent.back(), "T");
    Key(Qt::Key_Return);
    EXPECT_EQ(port.sent.back(), "\r");
}

TEST_F(TestWindow, AShortcutTakesTheTypedTextOverFirst) {
    Open();
    Type("txtHVolt", "1000");
    Type("txtXVolt", "3");
    QTest::keyClick(main.windowHandle(), Qt::Key_S, Qt::AltModifier);
    EXPECT_TRUE(Until([this] { return port.sent.back() == "T"; }));
    EXPECT_EQ(Text("txtCRatio"), "333.333");
}

TEST_F(TestWindow, AButtonTakesTheTypedTextsOverAlsoWhenNoBoxWasTold) {
    Open();
    Box("txtHVolt")->setText(u"1000"_s);
    Box("txtXVolt")->setText(u"3"_s);
    EXPECT_EQ(Text("txtCRatio"), "");
    Click("cmdStart");
    EXPECT_EQ(Text("txtCRatio"), "333.333");
}

TEST_F(TestWindow, AStepThatTakesTheFocusCountsAsLeavingTheBox) {
    Open();
    StartToZero();
    Type("txtHVolt", "1200");
    Type("txtXVolt", "5");
    EXPECT_EQ(Text("txtCRatio"), "");
    Say("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
    EXPECT_TRUE(Button("cmdContinue")->hasFocus());
    EXPECT_EQ(Text("txtCRatio"), "240");
}

// What shortcuts the visible, enabled controls have.
std::multiset<QChar> ShortcutsOf(const QWidget& window) {
    std::multiset<QChar> letters;
    for (const QPushButton* button : window.findChildren<QPushButton*>()) {
        if (!button->isVisible() || button->text().isEmpty()) continue;
        const QKeySequence shortcut = QKeySequence::mnemonic(button->text());
        EXPECT_FALSE(shortcut.isEmpty()) << button->text().toStdString();
        letters.insert(QChar(shortcut[0].key()));
    }
    return letters;
}

TEST_F(TestWindow, ShortcutsAreUniqueInEveryState) {
    Open();
    const auto check = [this](const char* moment) {
        const auto letters = ShortcutsOf(*window);
        EXPECT_EQ(letters.size(), 5U) << moment;
        EXPECT_EQ(std::set<QChar>(letters.begin(), letters.end()).size(), 5U) << moment;
    };
    check("open");
    StartToZero();
    check("zero");
    Say("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
    check("range");
    Click("cmdContinue");
    Say("MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
    check("saturation");
    EndShot();
    check("complete");
    Click("cmdContinue");
    EXPECT_EQ(Text("cmdContinue"), "&Continue");
    check("dropped");
}

TEST_F(TestWindow, TheConfirmTextIsNoShortcut) {
    Open();
    EXPECT_EQ(Label("lblConfirm")->buddy(), nullptr);
    StartToRange();
    // Were there two, the button would only get the focus.
    QTest::keyClick(main.windowHandle(), Qt::Key_O, Qt::AltModifier);
    EXPECT_TRUE(Until([this] { return port.sent.back() == "\r"; }));
}

TEST_F(TestWindow, AClickOnTheConfirmTextConfirms) {
    Open();
    StartToRange();
    auto* band = Label("lblConfirm");
    QTest::mousePress(band, Qt::LeftButton);
    QTest::mouseRelease(band, Qt::LeftButton, {}, QPoint(-5, -5));
    EXPECT_EQ(port.sent.back(), "T") << "released elsewhere";
    QTest::mouseClick(band, Qt::RightButton);
    EXPECT_EQ(port.sent.back(), "T");
    QTest::mouseClick(band, Qt::LeftButton);
    EXPECT_EQ(port.sent.back(), "\r");
}

// Every prompt, at the sizes of the letters that users choose.
class LetterSize : public TestWindow, public ::testing::WithParamInterface<double> {
  protected:
    LetterSize() : usual(QApplication::font()) {
        QFont larger = usual;
        larger.setPointSizeF(usual.pointSizeF() * GetParam());
        QApplication::setFont(larger);
    }
    ~LetterSize() override { QApplication::setFont(usual); }

    void CheckNothingIsCut(const char* moment) {
        for (const QPushButton* button : window->findChildren<QPushButton*>()) {
            EXPECT_GE(button->width(), button->sizeHint().width())
                << moment << ": " << button->text().toStdString();
            EXPECT_GE(button->height(), button->sizeHint().height())
                << moment << ": " << button->text().toStdString();
        }
        for (const QLabel* label : window->findChildren<QLabel*>()) {
            if (!label->isVisible() || label->text().isEmpty()) continue;
            if (dynamic_cast<const FitLabel*>(label) != nullptr) continue;
            EXPECT_GE(label->width(), label->sizeHint().width())
                << moment << ": " << label->text().toStdString();
            EXPECT_GE(label->height(), label->sizeHint().height())
                << moment << ": " << label->text().toStdString();
        }
        for (const QLineEdit* box : window->findChildren<QLineEdit*>()) {
            EXPECT_GE(box->width(), box->fontMetrics().horizontalAdvance(box->text()) + 8)
                << moment << ": " << box->objectName().toStdString();
            EXPECT_GE(box->height(), box->sizeHint().height()) << moment;
        }
        const auto* prompt = dynamic_cast<FitLabel*>(Label("lblMessage"));
        ASSERT_NE(prompt, nullptr);
        EXPECT_GE(prompt->FittedPixelSize(), prompt->LeastPixelSize()) << moment;
        EXPECT_GT(prompt->FittedPixelSize(), Button("cmdStart")->fontInfo().pixelSize()) << moment;
        for (const char* name : {"lblCard", "lblDisk"}) {
            const auto* label = dynamic_cast<FitLabel*>(Label(name));
            ASSERT_NE(label, nullptr);
            EXPECT_GE(label->FittedPixelSize(), label->LeastPixelSize()) << moment << name;
        }
        const auto* notice = dynamic_cast<FitLabel*>(Label("lblNotice"));
        ASSERT_NE(notice, nullptr);
        if (!notice->isVisible()) return;
        EXPECT_GE(notice->FittedPixelSize(), notice->LeastPixelSize()) << moment;
    }
    QFont usual;
};

TEST_P(LetterSize, NothingIsCut) {
    Open();
    EXPECT_LE(window->minimumSizeHint().width(), 1024) << "of the smallest screen";
    CheckNothingIsCut("open");
    Type("txtHVolt", "1200");
    Type("txtXVolt", "5");
    Click("cmdStart");
    clock.Advance(std::chrono::seconds(1000));
    ASSERT_TRUE(Until([this] { return Label("lblNotice")->isVisible(); }));
    test::Pause(20);
    CheckNothingIsCut("silent");
    Say("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
    CheckNothingIsCut("zero");
    Say("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
    CheckNothingIsCut("range");
    Click("cmdContinue");
    Say("MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
    Say("I=0.012345 V=1000.4");
    CheckNothingIsCut("saturation");
    clock.Advance(std::chrono::seconds(1000));
    ASSERT_TRUE(Until([this] { return Label("lblNotice")->isVisible(); }));
    test::Pause(20);
    CheckNothingIsCut("aged");
    Say("MESSAGE=VOLTAGE TOO HIGH!");
    EXPECT_EQ(Text("lblMessage"), "VOLTAGE TOO HIGH! TURN VOLTAGE DOWN!");
    CheckNothingIsCut("over-voltage");
    Say("MESSAGE=S-L-O-W-L-Y LOWER CURRENT NOW...");
    CheckNothingIsCut("slow");
    Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    Say("RATIO=241.2");
    Say("POLARITY= ");
    EXPECT_EQ(Text("txtPolarity"), "UNDETERMINED");
    CheckNothingIsCut("ratio");
    Say(RecordOf(Digits()));
    CheckNothingIsCut("complete");
    Click("cmdContinue");
    Click("cmdExit");
    ASSERT_TRUE(Label("lblNotice")->isVisible());
    test::Pause(20);
    CheckNothingIsCut("dropped");
    StartFullShot();
    port.Unplug();
    ASSERT_TRUE(Until([this] { return !state.portOpen; }));
    ASSERT_TRUE(Label("lblNotice")->isVisible());
    test::Pause(20);
    CheckNothingIsCut("lost");
}

TEST_P(LetterSize, TheButtonsKeepTheirPlacesInAShot) {
    Open();
    const auto placesNow = [this] {
        std::vector<QRect> rects;
        for (const char* name : {"cmdCancel", "cmdHeader", "cmdContinue", "cmdStart", "cmdExit"})
            rects.push_back(Button(name)->geometry());
        return rects;
    };
    const auto before = placesNow();
    for (std::size_t i = 1; i < before.size(); ++i)
        EXPECT_GT(before[i].left(), before[i - 1].right());
    StartToRange();
    EXPECT_EQ(Text("cmdContinue"), "&OK");
    test::Pause(20);
    EXPECT_EQ(placesNow(), before);
    Click("cmdContinue");
    EndShot();
    EXPECT_EQ(Text("cmdContinue"), "&Repeat Test");
    test::Pause(20);
    EXPECT_EQ(placesNow(), before);
}

INSTANTIATE_TEST_SUITE_P(Scales, LetterSize, ::testing::Values(1.0, 1.25, 1.5));

TEST_F(TestWindow, ThePromptGrowsWithTheWindowAndIsTwelveMillimetresHigh) {
    Open();
    StartToRange();
    const auto* prompt = dynamic_cast<FitLabel*>(Label("lblMessage"));
    ASSERT_NE(prompt, nullptr);
    const int before = prompt->FittedPixelSize();
    main.resize(1900, 1000);
    EXPECT_TRUE(Until([&] { return prompt->FittedPixelSize() > before; }));
    QFont font = prompt->font();
    font.setPixelSize(prompt->LeastPixelSize());
    const double inches = QFontMetricsF(font).capHeight() / main.screen()->physicalDotsPerInchY();
    EXPECT_NEAR(inches * 25.4, 12.0, 0.5);
}

}  // namespace
}  // namespace davo::test
