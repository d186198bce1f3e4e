// SPDX-License-Identifier: GPL-3.0-or-later
// The curve beside the prompt, in the real window.

#include "testing/live_curve.h"

#include <QElapsedTimer>
#include <QImage>
#include <algorithm>

#include "curves/chart_look.h"
#include "tests/records/captures.h"
#include "tests/support/pause.h"
#include "tests/testing/test_window.h"
#include "ui/fit_label.h"

namespace davo::test {
namespace {

class LiveCurveWindow : public TestWindow {
  protected:
    // A screen on which the prompt leaves room.
    LiveCurveWindow() { main.resize(1920, 1040); }
    CurveChart* Chart() { return dynamic_cast<CurveChart*>(Find<QWidget>("chtLive")); }
};

constexpr int kOfACurve = 20;

// How many points of widget are painted in colour.
int Painted(QWidget& widget, const QColor& colour) {
    const QImage image = widget.grab().toImage();
    int painted = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            painted += image.pixelColor(x, y) == colour ? 1 : 0;
    }
    return painted;
}

TEST_F(LiveCurveWindow, ReadingsAppearAndTheShotReplacesThem) {
    Open();
    StartToRange();
    EXPECT_FALSE(Chart()->isVisible());
    Click("cmdContinue");
    Say("MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
    EXPECT_TRUE(Chart()->isVisible()) << "its axes come with the prompt, not in the midst of it";
    Say("I=0.0123 V=152.4");
    EXPECT_TRUE(Until([this] { return Chart()->Across() == LogSpan{-2, -1}; }));
    Say("I=2.5 V=800");
    EXPECT_TRUE(Until([this] { return Chart()->Across() == LogSpan{-2, 1}; }));
    EXPECT_TRUE(Button("cmdContinue")->hasFocus());
    EXPECT_EQ(Chart()->focusPolicy(), Qt::NoFocus);
    // 0.01 to 0.12 A, the highest point first.
    RecordImage image = ImageWithPoints(12);
    std::reverse(image.slots, image.slots + 12);
    EndShot(EncodeRecordImage(image));
    EXPECT_TRUE(Until([this] { return Chart()->Across() == LogSpan{-2, 0}; }));
}

TEST_F(LiveCurveWindow, TheShotsOwnCurveComesWithTheWordsThatItIsComplete) {
    OpenAndStart();
    Say("I=2.5 V=800");
    ASSERT_TRUE(Until([this] { return Chart()->Across() == LogSpan{0, 1}; }));
    EndShot(EncodeRecordImage(ImageWithPoints(12)));
    ASSERT_TRUE(Until([this] { return Label("lblTest")->text() == u"TEST COMPLETE."_s; }));
    // Whoever looks, or takes a picture, at these words sees no readings any more.
    EXPECT_EQ(Chart()->Across(), (LogSpan{-2, 0}));
}

TEST_F(LiveCurveWindow, ABurstIsPaintedTenTimesASecondAtMost) {
    OpenAndStart();
    Say("I=0.0100 V=10");
    ASSERT_TRUE(Until([this] { return Chart()->isVisible() && Chart()->Paints() > 0; }));
    test::Pause(300);
    const int before = Chart()->Paints();
    QElapsedTimer time;
    time.start();
    int said = 0;
    const auto painted = [&] { return Chart()->Paints() - before; };
    while (said < 300 || painted() < 3) {
        port.Deliver("I=0.02 V=" + std::to_string(20 + said % 50) + "\r\n");
        ++said;
        QTest::qWait(2);
    }
    EXPECT_LE(painted(), time.elapsed() / 100 + 1);
}

TEST_F(LiveCurveWindow, ACancelledShotsReadingsGo) {
    OpenAndStart();
    Say("I=0.0123 V=152.4");
    ASSERT_TRUE(Chart()->isVisible());
    Click("cmdCancel");
    EXPECT_FALSE(Chart()->isVisible());
}

TEST_F(LiveCurveWindow, ARatioOnlyTestShowsNoChart) {
    modes = {false, true, true};
    Open();
    StartToZero();
    Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    Say("I=0.0123 V=52.4");
    EXPECT_FALSE(Chart()->isVisible());
}

TEST_F(LiveCurveWindow, ASmallWindowKeepsItsPromptAndShowsTheCurveWhenItIsDone) {
    main.resize(1024, 600);
    OpenAndStart();
    Say("I=0.0123 V=152.4");
    EXPECT_FALSE(Chart()->isVisible());
    EndShot(EncodeRecordImage(ImageWithPoints(12)));
    EXPECT_TRUE(Until([this] { return Chart()->isVisible() && Chart()->width() >= 300; }));
    prompts.answers = {Answer::No};
    StartToZero();
    EXPECT_TRUE(Until([this] { return !Chart()->isVisible(); }));
}

TEST_F(LiveCurveWindow, APromptCanBeReadBesideIt) {
    // The offscreen screen has no margins for a task bar.
    constexpr int kTaskBar = 40;
    const QSize screen = main.devicePixelRatioF() > 1 ? main.screen()->size() : QSize(1366, 768);
    main.resize(screen - QSize(0, kTaskBar));
    Open();
    const auto* prompt = dynamic_cast<FitLabel*>(Label("lblMessage"));
    ASSERT_NE(prompt, nullptr);
    StartFullShot();
    for (const char* said : {"I=0.0123 V=152.4", "MESSAGE=VOLTAGE TOO HIGH!",
                             "MESSAGE=S-L-O-W-L-Y LOWER CURRENT NOW..."}) {
        Say(said);
        ASSERT_TRUE(Chart()->isVisible()) << said;
        EXPECT_GE(Chart()->width(), 300) << said;
        EXPECT_GE(Chart()->height(), 180) << said;
        EXPECT_GE(prompt->FittedPixelSize(), prompt->LeastPixelSize()) << said;
        EXPECT_LE(prompt->mapTo(window, prompt->rect().bottomRight()).x(),
                  Chart()->mapTo(window, QPoint()).x())
            << said;
    }
}

TEST_F(LiveCurveWindow, TheTabKeyPassesItBy) {
    OpenAndStart();
    EndShot(EncodeRecordImage(ImageWithPoints(12)));
    ASSERT_TRUE(Until([this] { return Chart()->isVisible(); }));
    Box("txtHVolt")->setFocus();
    std::vector<std::string> order;
    for (int i = 0; i < 8; ++i) {
        order.push_back(QApplication::focusWidget()->objectName().toStdString());
        Key(Qt::Key_Tab);
    }
    EXPECT_THAT(order, ElementsAre("txtHVolt", "txtXVolt", "cmdHeader", "cmdContinue", "cmdStart",
                                   "cmdExit", "txtErrorLimit", "txtHVolt"));
    QTest::mouseClick(Chart(), Qt::LeftButton);
    EXPECT_NE(QApplication::focusWidget(), Chart());
}

TEST_F(LiveCurveWindow, ALostPortDimsTheUnfinishedShot) {
    pluggedIn = false;
    OpenAndStart();
    Say("I=0.0123 V=152.4");
    Say("I=0.0523 V=352.4");
    ASSERT_TRUE(Until([this] { return Chart()->Across() == LogSpan{-2, -1}; }));
    const ChartColours colours = ColoursOn(main.palette());
    EXPECT_LT(Painted(*Chart(), colours.faint), kOfACurve);
    Unplug();
    EXPECT_TRUE(Until([&] { return Painted(*Chart(), colours.curves[0]) == 0; }));
    EXPECT_GT(Painted(*Chart(), colours.faint), kOfACurve);
    EXPECT_TRUE(Chart()->isVisible());
    EXPECT_EQ(Chart()->Across(), (LogSpan{-2, -1}));
    const auto* notice = dynamic_cast<FitLabel*>(Label("lblNotice"));
    ASSERT_NE(notice, nullptr);
    EXPECT_GE(notice->FittedPixelSize(), notice->LeastPixelSize()) << "beside the chart";
    pluggedIn = true;
    StartFullShot();
    Say("I=5 V=152.4");
    EXPECT_TRUE(Until([this] {
        return Chart()->Across() == LogSpan{0, 1};
    })) << "of the shot before nothing is left";
}

TEST_F(LiveCurveWindow, ALostPortLeavesTheChartOnALaptopsScreen) {
    main.resize(1366, 728);
    pluggedIn = false;
    OpenAndStart();
    Say("I=0.0123 V=152.4");
    ASSERT_TRUE(Chart()->isVisible());
    Unplug();
    EXPECT_TRUE(Chart()->isVisible()) << "at once, before anything is laid out again";
    test::Pause(20);
    EXPECT_TRUE(Chart()->isVisible());
    const auto* notice = dynamic_cast<FitLabel*>(Label("lblNotice"));
    ASSERT_NE(notice, nullptr);
    EXPECT_GE(notice->FittedPixelSize(), notice->LeastPixelSize());
}

TEST_F(LiveCurveWindow, ALostPortLeavesTheCompleteShot) {
    OpenAndStart();
    EndShot(EncodeRecordImage(ImageWithPoints(12)));
    Unplug();
    EXPECT_TRUE(Chart()->isVisible());
    EXPECT_EQ(Chart()->Across(), (LogSpan{-2, 0}));
}

TEST_F(LiveCurveWindow, OfADamagedRecordTheReadingsStay) {
    OpenAndStart();
    Say("I=0.0123 V=152.4");
    EndShot(std::string(290, '0'));
    ASSERT_FALSE(prompts.shown.empty());
    EXPECT_TRUE(prompts.shown.back().startsWith(
        u"The record of this shot is damaged: 290 of 296 digits."_s));
    EXPECT_TRUE(Chart()->isVisible());
    test::Pause(150);
    EXPECT_EQ(Chart()->Across(), (LogSpan{-2, -1}));
    const auto* damage = dynamic_cast<FitLabel*>(Label("lblDamage"));
    ASSERT_NE(damage, nullptr);
    EXPECT_GE(damage->FittedPixelSize(), damage->LeastPixelSize()) << "beside the chart";
    Click("cmdContinue");
    EXPECT_FALSE(Chart()->isVisible());
}

TEST_F(LiveCurveWindow, ANewSessionBeginsWithoutCurves) {
    OpenAndStart();
    EndShot(EncodeRecordImage(ImageWithPoints(12)));
    ASSERT_TRUE(Until([this] { return Chart()->isVisible(); }));
    Key(Qt::Key_Escape);
    ASSERT_TRUE(Closed());
    link.OpenComPort(1);
    prompts.answers = {Answer::No};
    Open();
    EXPECT_FALSE(Chart()->isVisible());
    StartFullShot();
    Say("I=5 V=152.4");
    EXPECT_TRUE(Until([this] { return Chart()->Across() == LogSpan{0, 1}; }));
}

TEST_F(LiveCurveWindow, ARefusedShotLeavesTheEarlierOnes) {
    OpenAndStart();
    EndShot(EncodeRecordImage(ImageWithPoints(12)));
    session.shotCount = kShotRefusal;
    prompts.answers = {Answer::No};
    StartFullShot();
    Say("I=5 V=152.4");
    EXPECT_TRUE(Until([this] { return Chart()->Across() == LogSpan{-2, 1}; }));
    EndShot();
    EXPECT_EQ(prompts.shown.back(), u"You have ran the maximum limit (100) of shots."_s);
    EXPECT_TRUE(Chart()->isVisible());
    EXPECT_TRUE(Until([this] { return Chart()->Across() == LogSpan{-2, 0}; }));
}

TEST_F(LiveCurveWindow, TheRatioTestAddsNoReadings) {
    OpenAndStart();
    Say("I=0.0123 V=152.4");
    Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    Say("I=5 V=52.4");
    test::Pause(150);
    EXPECT_EQ(Chart()->Across(), (LogSpan{-2, -1}));
}

TEST_F(LiveCurveWindow, TheRepeatedShotGoes) {
    OpenAndStart();
    Say("I=0.0123 V=152.4");
    EndShot();
    ASSERT_TRUE(Chart()->isVisible());
    Click("cmdContinue");
    EXPECT_FALSE(Chart()->isVisible());
}

TEST(LiveCurve, EarlierShotsAreFaintAndWithoutKneepoints) {
    QWidget parent;
    LiveCurve live(&parent);
    parent.resize(600, 400);
    live.Chart()->resize(600, 400);
    live.Chart()->show();
    parent.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&parent));
    const ChartColours colours = ColoursOn(parent.palette());
    const auto shows = [&](const QColor& colour) {
        return Painted(*live.Chart(), colour) > kOfACurve;
    };
    live.StartShot(false);
    test::Pause(150);
    EXPECT_FALSE(shows(colours.faint));
    live.CompleteShot(CaptureBlock(ImageWithPoints(12)));
    test::Pause(150);
    EXPECT_TRUE(shows(colours.curves[0]));
    EXPECT_FALSE(shows(colours.faint));
    const int withKnees = Painted(*live.Chart(), colours.text);
    live.StartShot(false);
    test::Pause(150);
    EXPECT_FALSE(shows(colours.curves[0]));
    EXPECT_TRUE(shows(colours.faint));
    EXPECT_LT(Painted(*live.Chart(), colours.text), withKnees);
    EXPECT_TRUE(live.Wanted());
    EXPECT_EQ(live.Chart()->Across(), (LogSpan{-2, 0})) << "the axes hold the earlier shots";
}

TEST(LiveCurve, TextIsReadLaterAndEachByItself) {
    QWidget parent;
    LiveCurve live(&parent);
    live.StartShot(false);
    const LogSpan before = live.Chart()->Across();
    live.AddReadings("I=0.5 V=10\r\nI=0.5 V=1");
    live.AddReadings("I=0.5 V=12\r\n");
    EXPECT_EQ(live.Chart()->Across(), before) << "not while it arrives";
    ASSERT_EQ(live.Readings().size(), 2U);
    EXPECT_EQ(live.Readings()[0].voltage, 10);
    EXPECT_EQ(live.Readings()[1].voltage, 12);
}

TEST(LiveCurve, KeepsABoundedNumberOfReadings) {
    QWidget parent;
    LiveCurve live(&parent);
    live.StartShot(false);
    for (int i = 1; i <= 100000; ++i)
        live.AddReadings("I=0.5 V=" + std::to_string(i) + "\r\n");
    EXPECT_LE(live.Readings().size(), kMostLiveReadings);
    EXPECT_EQ(live.Readings().front().voltage, 1);
    EXPECT_EQ(live.Readings().back().voltage, 100000);
}

TEST(LiveCurve, LeavesOutWhatIsNoNumber) {
    QWidget parent;
    LiveCurve live(&parent);
    live.StartShot(false);
    live.AddReadings("I=noise V=12\r\nI=0.5 V=\r\n");
    live.AddReadings("I=0 V=12\r\nI=-1 V=12\r\nI=inf V=12\r\nI=nan V=12\r\n");
    EXPECT_TRUE(live.Readings().empty());
}

}  // namespace
}  // namespace davo::test
