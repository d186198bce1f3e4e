// The curve beside the prompt, in the real window.

#include "testing/live_curve.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <algorithm>
#include <string>

#include "tests/records/captures.h"
#include "tests/testing/test_window.h"

namespace davo::test {

namespace {

class LiveCurveWindow : public TestWindow {
  protected:
    // A screen on which the prompt leaves room.
    LiveCurveWindow() { main.resize(1920, 1040); }
    CurveChart* Chart() { return dynamic_cast<CurveChart*>(Find<QWidget>("chtLive")); }
};

TEST_F(LiveCurveWindow, ReadingsAppearAndTheShotReplacesThem) {
    Open();
    EXPECT_FALSE(Chart()->isVisible());
    StartFullShot();
    Say("I=0.0123 V=152.4");
    ASSERT_TRUE(Until([this] { return Chart()->isVisible(); }));
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

TEST_F(LiveCurveWindow, ABurstIsPaintedTenTimesASecondAtMost) {
    Open();
    StartFullShot();
    Say("I=0.0100 V=10");
    ASSERT_TRUE(Until([this] { return Chart()->isVisible() && Chart()->Paints() > 0; }));
    QTest::qWait(300);
    const int before = Chart()->Paints();
    QElapsedTimer time;
    time.start();
    int said = 0;
    while (time.elapsed() < 2000) {
        port.Deliver("I=0.02 V=" + std::to_string(20 + said % 50) + "\r\n");
        ++said;
        QTest::qWait(2);
    }
    const int painted = Chart()->Paints() - before;
    EXPECT_GT(said, 100);
    EXPECT_GE(painted, 3);
    EXPECT_LE(painted, time.elapsed() / 100 + 1);
}

TEST_F(LiveCurveWindow, ACancelledShotsReadingsGo) {
    Open();
    StartFullShot();
    Say("I=0.0123 V=152.4");
    ASSERT_TRUE(Chart()->isVisible());
    Click("cmdCancel");
    EXPECT_FALSE(Chart()->isVisible());
}

TEST_F(LiveCurveWindow, ARatioOnlyTestShowsNoChart) {
    modes = {false, true, true};
    Open();
    Click("cmdStart");
    Say("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
    Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    Say("I=0.0123 V=52.4");
    EXPECT_FALSE(Chart()->isVisible());
}

TEST_F(LiveCurveWindow, ASmallWindowKeepsItsPrompt) {
    main.resize(1024, 600);
    Open();
    StartFullShot();
    Say("I=0.0123 V=152.4");
    EXPECT_FALSE(Chart()->isVisible());
}

TEST_F(LiveCurveWindow, TheRepeatedShotGoes) {
    Open();
    StartFullShot();
    Say("I=0.0123 V=152.4");
    EndShot();
    ASSERT_TRUE(Chart()->isVisible());
    Click("cmdContinue");
    EXPECT_FALSE(Chart()->isVisible());
}

TEST(LiveCurve, KeepsABoundedNumberOfReadings) {
    QWidget parent;
    LiveCurve live(&parent);
    live.StartShot(false);
    for (int i = 1; i <= 100000; ++i)
        live.AddReading("0.5", std::to_string(i));
    EXPECT_LE(live.Readings().size(), kMostLiveReadings);
    EXPECT_EQ(live.Readings().front().voltage, 1);
    EXPECT_EQ(live.Readings().back().voltage, 100000);
}

TEST(LiveCurve, LeavesOutWhatIsNoNumber) {
    QWidget parent;
    LiveCurve live(&parent);
    live.StartShot(false);
    live.AddReading("noise", "12");
    live.AddReading("0.5", "");
    live.AddReading("0", "12");
    EXPECT_TRUE(live.Readings().empty());
    EXPECT_FALSE(live.Wanted());
}

}  // namespace

}  // namespace davo::test
